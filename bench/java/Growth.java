package com.varden.tavo.iscsi.bench;

import com.varden.tavo.iscsi.model.HBA;
import java.util.List;
import java.util.concurrent.Callable;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.function.IntSupplier;

/** How the bridge's snapshot grows with the entries, and what a second thread gains: {@code Growth ROUNDS}. */
final class Growth {
    private static final int[] SIZES = {1, 64, 512};
    private static final int WARM_UP_ROUNDS = 60;
    private static final int SNAPSHOTS = 10;
    private static final int SPINS = 20_000_000;

    private static volatile long sink;

    private final Peer bridge = Peer.open("bridge");

    private Growth() {}

    public static void main(String[] arguments) throws InterruptedException {
        int rounds = Integer.parseInt(arguments[0]);
        Growth growth = new Growth();
        growth.furtherEntries(WARM_UP_ROUNDS);
        Figure.of(growth.furtherEntries(rounds)).print("Does it grow straight? Time for each further entry",
            "from 64 to 512 / from 1 to 64", "0.95..1.05");
        growth.threads(rounds / 5);
    }

    // Every round takes all sizes in turn, each as often as it needs to convert 512 entries. The sizes lie far apart,
    // since the difference of two times that are nearly the same is mostly chance.
    private double[] furtherEntries(int rounds) {
        HBA hba = new HBA();
        Pairs timing = new Pairs(rounds, Fixture::processorTime, hba::clearDeviceDataBaseEntries);
        IntSupplier snapshot = () -> bridge.snapshot().applyAsInt(hba);
        double[] ratios = new double[rounds];
        for (int i = 0; i < rounds; i++) {
            double[] times = new double[SIZES.length];
            for (int k = 0; k < SIZES.length; k++) {
                Fixture.setEntryCount(SIZES[k]);
                int calls = Fixture.ENTRIES / SIZES[k];
                times[k] = (double) timing.time(snapshot, calls) / calls;
            }
            double few = (times[1] - times[0]) / (SIZES[1] - SIZES[0]);
            double many = (times[2] - times[1]) / (SIZES[2] - SIZES[1]);
            ratios[i] = many / few;
        }
        return ratios;
    }

    // The same work on one thread and on two at once; the spin tells what this machine grants a second thread.
    private void threads(int rounds) throws InterruptedException {
        double[] snapshots = new double[rounds];
        double[] spins = new double[rounds];
        double[] beside = new double[rounds];
        ExecutorService pool = Executors.newFixedThreadPool(2);
        for (int i = 0; i < rounds; i++) {
            snapshots[i] = slowdown(pool, Executors.callable(this::snapshots));
            spins[i] = slowdown(pool, Executors.callable(Growth::spin));
            beside[i] = snapshots[i] / spins[i];
        }
        pool.shutdown();
        String section = "Do threads help? Time of two threads at once / of one";
        Figure.of(snapshots).print(section, "snapshots", "");
        Figure.of(spins).print(section, "a loop that touches no memory", "");
        Figure.of(beside).print(section, "the first / the second", "0..1.5");
    }

    private static double slowdown(ExecutorService pool, Callable<Object> work) throws InterruptedException {
        long start = System.nanoTime();
        pool.invokeAll(List.of(work));
        long one = System.nanoTime();
        pool.invokeAll(List.of(work, work));
        return (double) (System.nanoTime() - one) / (one - start);
    }

    private void snapshots() {
        HBA hba = new HBA();
        for (int i = 0; i < SNAPSHOTS; i++) {
            hba.clearDeviceDataBaseEntries();
            bridge.snapshot().applyAsInt(hba);
        }
    }

    private static void spin() {
        long state = 1;
        for (int i = 0; i < SPINS; i++) {
            state = state * 6364136223846793005L + 1442695040888963407L;
        }
        sink = state;
    }
}
