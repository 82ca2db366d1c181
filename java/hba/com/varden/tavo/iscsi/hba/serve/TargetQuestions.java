package com.varden.tavo.iscsi.hba.serve;

import com.varden.tavo.iscsi.codes.TargetState;
import com.varden.tavo.iscsi.hba.Adapter;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.Target;
import java.util.HashSet;
import java.util.Set;
import java.util.concurrent.LinkedBlockingQueue;
import java.util.concurrent.ThreadPoolExecutor;
import java.util.concurrent.TimeUnit;

/**
 * Asks the targets of one adapter for their logical units, so that a session that was lost is noticed although nobody
 * uses it. What comes of it stands in the next reading: the state of the target and the log of the adapter. A target
 * that does not answer holds one of some threads until its deadline, and is not asked again before.
 */
final class TargetQuestions {
    private static final int THREADS = 8;
    private static final int IDLE_SECONDS = 30;

    private final Set<Integer> underWay = new HashSet<>();
    private final ThreadPoolExecutor threads;

    TargetQuestions(int dev) {
        threads = new ThreadPoolExecutor(THREADS, THREADS, IDLE_SECONDS, TimeUnit.SECONDS, new LinkedBlockingQueue<>(),
            work -> {
                Thread thread = new Thread(work, "targets of adapter " + dev);
                thread.setDaemon(true);
                return thread;
            });
        threads.allowCoreThreadTimeOut(true);
    }

    /** Asks all targets of a reading that nobody logged out and that have answered the question before. */
    void ask(int dev, Reading reading) {
        for (DevDBEntry entry : reading.targets()) {
            int target = entry.getTargetID();
            if (entry.getState() != TargetState.LOGGED_OUT && begin(target)) {
                threads.execute(() -> {
                    try (Adapter adapter = Adapter.tryOpen(dev)) {
                        if (adapter != null) {
                            ask(adapter, target);
                        }
                    } finally {
                        end(target);
                    }
                });
            }
        }
    }

    private static void ask(Adapter adapter, int targetID) {
        Target target = new Target();
        target.getTargetInfo().setTargetID(targetID);
        adapter.api.getScsiReportLUNsData(adapter.dev, new HBA(), target);
    }

    private synchronized boolean begin(int target) {
        return underWay.add(target);
    }

    private synchronized void end(int target) {
        underWay.remove(target);
    }
}
