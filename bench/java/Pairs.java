package com.varden.tavo.iscsi.bench;

import java.util.function.IntSupplier;
import java.util.function.LongSupplier;

/** Times two operations in turn, A B, B A, A B, ...: what disturbs the machine for longer than a pair disturbs both. */
final class Pairs {
    private static final long WARM_UP = 400_000_000;

    private Pairs() {}

    /**
     * The ratios of A's time to B's, pair by pair. A quarter as many pairs, and 0.4 seconds of them, run before,
     * uncounted: in one VM until both operations are compiled, with fresh processes until their files are in memory.
     *
     * @param pairs number of pairs that count
     * @param a runs the first operation and gives its nanoseconds
     * @param b runs the second
     */
    static double[] ratios(int pairs, LongSupplier a, LongSupplier b) {
        long start = System.nanoTime();
        for (int i = 0; i < pairs / 4 || System.nanoTime() - start < WARM_UP; i++) {
            a.getAsLong();
            b.getAsLong();
        }
        double[] ratios = new double[pairs];
        for (int i = 0; i < pairs; i++) {
            boolean straight = i % 2 == 0;
            double first = (straight ? a : b).getAsLong();
            double second = (straight ? b : a).getAsLong();
            ratios[i] = straight ? first / second : second / first;
        }
        return ratios;
    }

    /** Nanoseconds, by the given clock, of an operation that returns a status. */
    static long time(LongSupplier clock, IntSupplier operation) {
        long start = clock.getAsLong();
        int status = operation.getAsInt();
        long time = clock.getAsLong() - start;
        Measured.require(status == 0, "an operation failed while it was timed");
        return time;
    }
}
