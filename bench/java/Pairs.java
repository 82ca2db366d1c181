package com.varden.tavo.iscsi.bench;

import java.util.Arrays;
import java.util.function.IntSupplier;
import java.util.function.LongSupplier;

/** Times two operations in turn, in one VM and on the same objects: A B, B A, A B, ... */
final class Pairs {
    private static final long WARM_UP = 400_000_000;
    private static final int FEWEST_CALLS = 20;
    private static final long LONGEST = 1_600_000_000;

    private final int pairs;
    private final LongSupplier clock;
    private final Runnable between;

    /**
     * Prepares the timing.
     *
     * @param pairs most pairs; fewer, but not less than a tenth, when they would take longer than 1.6 seconds
     * @param clock nanoseconds: processor time, which what else the machine does cannot touch, or the time of day where
     *     an operation waits
     * @param between run before every sample, outside its time
     */
    Pairs(int pairs, LongSupplier clock, Runnable between) {
        this.pairs = pairs;
        this.clock = clock;
        this.between = between;
    }

    /** The ratio of A's time to B's, pair by pair, once both have run until they are compiled. */
    Figure ratio(IntSupplier a, IntSupplier b) {
        long start = clock.getAsLong();
        for (int i = 0; i < FEWEST_CALLS || clock.getAsLong() - start < WARM_UP; i++) {
            time(a, 1);
            time(b, 1);
        }
        double[] ratios = new double[pairs];
        int done = 0;
        start = System.nanoTime();
        while (done < pairs && (done < pairs / 10 || System.nanoTime() - start < LONGEST)) {
            boolean straight = done % 2 == 0;
            double first = time(straight ? a : b, 1);
            double second = time(straight ? b : a, 1);
            ratios[done] = straight ? first / second : second / first;
            done++;
        }
        return Figure.of(Arrays.copyOf(ratios, done));
    }

    /** Nanoseconds of so many calls. */
    long time(IntSupplier operation, int calls) {
        between.run();
        int failed = 0;
        long start = clock.getAsLong();
        for (int i = 0; i < calls; i++) {
            failed |= operation.getAsInt();
        }
        long time = clock.getAsLong() - start;
        if (failed != 0) {
            throw new IllegalStateException("an operation failed while it was timed");
        }
        return time;
    }
}
