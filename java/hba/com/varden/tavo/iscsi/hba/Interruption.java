package com.varden.tavo.iscsi.hba;

import java.util.concurrent.CountDownLatch;
import java.util.concurrent.TimeUnit;

/**
 * A signal in the middle of work that takes long. The VM ends with the signal's own status (130, 143) in any case;
 * while work is watched it first lets the tool finish the step under way and say how far it came.
 */
final class Interruption {
    private static final long PATIENCE_SECONDS = 30;
    private static final CountDownLatch REQUESTED = new CountDownLatch(1);
    private static final CountDownLatch OVER = new CountDownLatch(1);

    private Interruption() {}

    /** From now on a signal waits for the tool to notice it. */
    static void watch() {
        Runtime.getRuntime().addShutdownHook(new Thread(Interruption::await));
    }

    private static void await() {
        REQUESTED.countDown();
        try {
            OVER.await(PATIENCE_SECONDS, TimeUnit.SECONDS);
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
        }
    }

    static boolean isRequested() {
        return REQUESTED.getCount() == 0;
    }

    /** Waits; false when it is time to end. */
    static boolean pause(long milliseconds) {
        try {
            return !REQUESTED.await(milliseconds, TimeUnit.MILLISECONDS);
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
            return false;
        }
    }

    /** All has been said. */
    static void over() {
        OVER.countDown();
    }
}
