package com.varden.tavo.iscsi.bench;

import java.util.Arrays;
import java.util.function.IntSupplier;

/** Times two operations in turn, in one VM and on the same objects: A B, B A, A B, ... */
final class Pairs {
    private static final long WARM_UP = 400_000_000;
    private static final int FEWEST = 20;
    private static final long SAMPLE = 100_000;
    private static final long LONGEST = 1_600_000_000L;

    private final Runnable between;
    private final int pairs;

    /**
     * Prepares the timing.
     *
     * @param pairs most pairs; fewer, but not less than a tenth, when they would take longer than 1.6 seconds
     * @param between run before every sample, outside its time
     */
    Pairs(int pairs, Runnable between) {
        this.pairs = pairs;
        this.between = between;
    }

    /** The ratio of A's time to B's, pair by pair. */
    Figure ratio(IntSupplier a, IntSupplier b, int mostCalls) {
        int calls = Math.min(mostCalls, warmUp(a, b));
        double[] ratios = new double[pairs];
        long start = System.nanoTime();
        int done = 0;
        for (int i = 0; i < pairs && (i < pairs / 10 || System.nanoTime() - start < LONGEST); i++) {
            long first = time(i % 2 == 0 ? a : b, calls);
            long second = time(i % 2 == 0 ? b : a, calls);
            ratios[i] = i % 2 == 0 ? (double) first / second : (double) second / first;
            done++;
        }
        return Figure.of(Arrays.copyOf(ratios, done));
    }

    // Runs both until they are compiled; returns the number of calls that make a sample long enough to be timed.
    private int warmUp(IntSupplier a, IntSupplier b) {
        long calls = 0;
        long spent = 0;
        long start = System.nanoTime();
        while (System.nanoTime() - start < WARM_UP || calls < FEWEST) {
            spent += time(a, 1);
            time(b, 1);
            calls++;
        }
        return (int) Math.max(1, SAMPLE * calls / spent);
    }

    long time(IntSupplier operation, int calls) {
        between.run();
        int failed = 0;
        long start = System.nanoTime();
        for (int i = 0; i < calls; i++) {
            failed |= operation.getAsInt();
        }
        long time = System.nanoTime() - start;
        if (failed != 0) {
            throw new IllegalStateException("an operation failed while it was timed");
        }
        return time;
    }
}
