package com.varden.tavo.iscsi.hba;

import java.util.concurrent.CountDownLatch;
import java.util.concurrent.TimeUnit;

/**
 * A signal in the middle of work that takes long. The VM ends with the signal's own status (130, 143) in any case;
 * while work is watched it first lets the tool finish the step under way and say how far it came.
 */
final class Interruption {
    private static final long PATIENCE_SECONDS = 30;
    private static final CountDownLatch OVER = new CountDownLatch(1);

    private static volatile boolean requested;

    private Interruption() {}

    /** From now on a signal waits for the tool to notice it. */
    static void watch() {
        Runtime.getRuntime().addShutdownHook(new Thread(Interruption::await));
    }

    private static void await() {
        requested = true;
        try {
            OVER.await(PATIENCE_SECONDS, TimeUnit.SECONDS);
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
        }
    }

    static boolean isRequested() {
        return requested;
    }

    /** All has been said. */
    static void over() {
        OVER.countDown();
    }
}
