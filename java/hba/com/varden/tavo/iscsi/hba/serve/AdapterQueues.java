package com.varden.tavo.iscsi.hba.serve;

import com.varden.tavo.iscsi.hba.Adapter;
import java.util.concurrent.LinkedBlockingQueue;
import java.util.concurrent.ThreadPoolExecutor;
import java.util.concurrent.TimeUnit;

/**
 * Where adapters are asked on request: each has a few threads and a short queue of its own, so that requests for one
 * that does not answer take nothing from the others.
 */
final class AdapterQueues {
    /** The queue of what concerns no single adapter. */
    static final int NO_ADAPTER = Adapter.LAST_INDEX + 1;

    private static final int THREADS = 2;
    private static final int LONGEST_QUEUE = 16;
    private static final int IDLE_SECONDS = 30;

    private final ThreadPoolExecutor[] queues = new ThreadPoolExecutor[NO_ADAPTER + 1];

    /**
     * Runs work for an adapter.
     *
     * @throws java.util.concurrent.RejectedExecutionException when too much is waiting for this adapter
     */
    void submit(int dev, Runnable work) {
        queue(dev).execute(work);
    }

    private synchronized ThreadPoolExecutor queue(int dev) {
        if (queues[dev] == null) {
            queues[dev] = new ThreadPoolExecutor(THREADS, THREADS, IDLE_SECONDS, TimeUnit.SECONDS,
                new LinkedBlockingQueue<>(LONGEST_QUEUE), work -> {
                    Thread thread = new Thread(work, "requests for adapter " + dev);
                    thread.setDaemon(true);
                    return thread;
                });
            queues[dev].allowCoreThreadTimeOut(true);
        }
        return queues[dev];
    }
}
