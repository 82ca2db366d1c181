package com.varden.tavo.iscsi.hba;

import java.util.function.Supplier;

/**
 * How far long work has come: on a terminal a bar on the standard error, with the count and the time that is left, or
 * the time that has passed where nobody can tell how long it takes. It is gone when the work is done; elsewhere there
 * is nothing.
 */
final class Progress {
    private static final int WIDTH = 30;
    private static final long TICK_MILLIS = 200;
    private static final double NANOSECONDS = 1e9;
    /** Before this much is known of the work, the time that is left is a guess. */
    private static final double LEAST_KNOWN = 0.02;
    private static final String EMPTY_LINE = "\r\033[K";

    private static String shown;
    private static long begin;

    private Progress() {}

    private static boolean isWanted() {
        return Boolean.getBoolean("hba.progress");
    }

    /** Shows that so many steps of the work are done. */
    static synchronized void show(String what, int done, int all) {
        if (!isWanted()) {
            return;
        }
        double part = all == 0 ? 1 : (double) done / all;
        int filled = (int) (part * WIDTH);
        double seconds = start(what);
        String left = part < LEAST_KNOWN ? "" : ", " + Math.round(seconds / part - seconds) + " s left";
        draw(what, "#".repeat(filled) + "-".repeat(WIDTH - filled), done + " of " + all + left);
    }

    /** Makes one long call, of which only its end can be seen. */
    static <T> T during(String what, Supplier<T> call) {
        if (!isWanted()) {
            return call.get();
        }
        Thread clock = new Thread(() -> {
            try {
                for (int tick = 0;; tick++) {
                    sweep(what, tick);
                    Thread.sleep(TICK_MILLIS);
                }
            } catch (InterruptedException e) {
                // The call has ended.
            }
        });
        clock.setDaemon(true);
        clock.start();
        try {
            return call.get();
        } finally {
            clock.interrupt();
            join(clock);
            end();
        }
    }

    private static void join(Thread clock) {
        try {
            clock.join();
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
        }
    }

    private static synchronized void sweep(String what, int tick) {
        int place = tick % WIDTH;
        draw(what, "-".repeat(place) + "#" + "-".repeat(WIDTH - place - 1), Math.round(start(what)) + " s");
    }

    /** Seconds since this work began. */
    private static double start(String what) {
        if (!what.equals(shown)) {
            shown = what;
            begin = System.nanoTime();
        }
        return (System.nanoTime() - begin) / NANOSECONDS;
    }

    private static void draw(String what, String bar, String count) {
        System.err.print(EMPTY_LINE + what + " [" + bar + "] " + count);
        System.err.flush();
    }

    /** Takes the bar away, before anything else is said and when the work is done. */
    static synchronized void end() {
        if (shown != null) {
            System.err.print(EMPTY_LINE);
            System.err.flush();
            shown = null;
        }
    }
}
