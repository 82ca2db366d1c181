package com.varden.tavo.iscsi.hba.serve;

import com.varden.tavo.iscsi.hba.Adapter;
import java.time.Duration;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.atomic.AtomicReferenceArray;

/** All adapters that can be opened, each with its reader. */
final class AdapterReaders {
    /** How often adapters are looked for that were not there. */
    private static final long LOOK_AGAIN_MILLISECONDS = 60_000;
    /** How long one look at all adapters may take before {@link #readOnce} goes on without the rest. */
    private static final long PATIENCE_SECONDS = 10;
    private static final long CLOSING_NANOSECONDS = 500_000_000L;

    private final AtomicReferenceArray<AdapterReader> readers = new AtomicReferenceArray<>(Adapter.LAST_INDEX + 1);
    private final Duration interval;
    private final boolean askTargets;

    AdapterReaders(Duration interval, boolean askTargets) {
        this.interval = interval;
        this.askTargets = askTargets;
    }

    /** The adapters found so far, in the order of their indices. */
    List<AdapterReader> all() {
        List<AdapterReader> found = new ArrayList<>();
        for (int dev = 0; dev < readers.length(); dev++) {
            if (readers.get(dev) != null) {
                found.add(readers.get(dev));
            }
        }
        return found;
    }

    /** The reader of an adapter, or null. */
    AdapterReader find(int dev) {
        return dev >= 0 && dev < readers.length() ? readers.get(dev) : null;
    }

    /** Looks for adapters and reads them for as long as the process lives. */
    void start() {
        Thread finder = new Thread(() -> {
            try {
                while (true) {
                    for (int dev = 0; dev < readers.length(); dev++) {
                        AdapterReader reader = open(dev);
                        if (reader != null) {
                            reader.start();
                        }
                    }
                    Thread.sleep(LOOK_AGAIN_MILLISECONDS);
                }
            } catch (InterruptedException e) {
                Thread.currentThread().interrupt();
            }
        }, "finder");
        finder.setDaemon(true);
        finder.start();
    }

    // The reader of an adapter that had none before and could be opened.
    private AdapterReader open(int dev) {
        Adapter adapter = readers.get(dev) == null ? Adapter.tryOpen(dev) : null;
        if (adapter == null) {
            return null;
        }
        AdapterReader reader = new AdapterReader(adapter, interval, askTargets);
        readers.set(dev, reader);
        return reader;
    }

    /** Closes all adapters, all at the same time; one that does not answer is left as it is. */
    void close() {
        List<Thread> closers = all().stream().map(reader -> new Thread(reader::close)).toList();
        closers.forEach(closer -> closer.setDaemon(true));
        closers.forEach(Thread::start);
        long end = System.nanoTime() + CLOSING_NANOSECONDS;
        try {
            for (Thread closer : closers) {
                closer.join(Math.max(1, (end - System.nanoTime()) / 1_000_000));
            }
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
        }
    }

    /**
     * Reads every adapter once, all at the same time.
     *
     * @return whether all of them were done in time; one that was not is among {@link #all} if it could be opened
     */
    boolean readOnce() throws InterruptedException {
        CountDownLatch outstanding = new CountDownLatch(readers.length());
        for (int dev = 0; dev < readers.length(); dev++) {
            int index = dev;
            Thread thread = new Thread(() -> {
                AdapterReader reader = open(index);
                if (reader != null) {
                    reader.read();
                }
                outstanding.countDown();
            }, "adapter " + dev);
            thread.setDaemon(true);
            thread.start();
        }
        return outstanding.await(PATIENCE_SECONDS, TimeUnit.SECONDS);
    }
}
