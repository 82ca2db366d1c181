package com.varden.tavo.iscsi.hba.serve;

import com.varden.tavo.iscsi.hba.Adapter;
import com.varden.tavo.iscsi.hba.Failure;
import java.time.Duration;

/**
 * Reads one adapter again and again, in a thread of its own: an adapter that takes long or never answers keeps nobody
 * else waiting, and shows by the age of its last reading.
 */
final class AdapterReader {
    private static final int STALE_AFTER = 3;

    final int dev;
    final ConnectionErrors errors = new ConnectionErrors();
    final History history;
    private final Duration interval;
    private final TargetQuestions questions;
    private volatile Adapter adapter;
    private volatile boolean closed;
    private volatile Reading latest;
    private volatile String failure;
    private volatile long failures;
    private final long created = System.nanoTime();

    /** @param askTargets whether each target is asked after each reading */
    AdapterReader(Adapter adapter, Duration interval, boolean askTargets) {
        this.adapter = adapter;
        dev = adapter.dev;
        questions = askTargets ? new TargetQuestions(dev) : null;
        this.interval = interval;
        history = new History(interval);
    }

    /** Begins to read; the thread ends with the process. */
    void start() {
        Thread thread = new Thread(this::readForEver, "adapter " + dev);
        thread.setDaemon(true);
        thread.start();
    }

    private void readForEver() {
        try {
            while (!closed) {
                long started = System.nanoTime();
                read();
                long rest = interval.toNanos() - (System.nanoTime() - started);
                Thread.sleep(Math.max(1, Duration.ofNanos(rest).toMillis()));
            }
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
        }
    }

    /** Reads once. An adapter that failed is opened anew the next time. */
    void read() {
        try {
            if (adapter == null && !closed) {
                adapter = Adapter.open(dev, null);
            }
            Reading before = latest;
            Reading now = Reading.of(adapter);
            long added = errors.add(now.errors());
            if (before != null) {
                history.add(before, now, added);
            }
            latest = now;
            failure = null;
            if (questions != null) {
                questions.ask(dev, now);
            }
        } catch (RuntimeException e) {
            failures++;
            failure = Failure.of(e).message();
            history.addGap(System.currentTimeMillis());
            if (adapter != null) {
                adapter.close();
                adapter = null;
            }
        }
    }

    /** Ends the sessions that were made for it. It may be in the middle of a reading, of which nothing comes. */
    void close() {
        closed = true;
        Adapter open = adapter;
        if (open != null) {
            open.close();
        }
    }

    /** What was read last, or null. */
    Reading latest() {
        return latest;
    }

    /** Why the last reading failed, null when it did not. A reading that hangs has not failed yet. */
    String failure() {
        return failure;
    }

    long failures() {
        return failures;
    }

    /** How long ago the last reading was complete; without one, since when there has been none. */
    Duration age() {
        Reading reading = latest;
        return reading != null ? reading.age() : Duration.ofNanos(System.nanoTime() - created);
    }

    /** Whether what was read last is too old to be shown as the present. */
    boolean isStale() {
        return latest == null || age().compareTo(interval.multipliedBy(STALE_AFTER)) > 0;
    }
}
