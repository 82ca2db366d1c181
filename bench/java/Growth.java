package com.varden.tavo.iscsi.bench;

import com.varden.tavo.iscsi.model.HBA;
import java.util.List;
import java.util.concurrent.Callable;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.stream.LongStream;

/** How the bridge's snapshot grows with the entries, and what a second thread gains: {@code Growth ROUNDS}. */
final class Growth {
    private static final int SNAPSHOTS = 10;
    private static final int SPINS = 20_000_000;

    private final Peer bridge = Peer.open("bridge");

    private Growth() {}

    public static void main(String[] arguments) throws InterruptedException {
        int rounds = Integer.parseInt(arguments[0]);
        Growth growth = new Growth();
        growth.furtherEntries(rounds / 5);
        Measured.print("5 Does it grow straight? Time for each further entry", "from 64 to 512 / from 1 to 64",
            "0.95..1.05", growth.furtherEntries(rounds));
        growth.threads(rounds / 5);
    }

    // The sizes lie far apart, since the difference of two times that are nearly the same is mostly chance.
    private double[] furtherEntries(int rounds) {
        double[] ratios = new double[rounds];
        for (int i = 0; i < rounds; i++) {
            double one = snapshot(1);
            double few = snapshot(64);
            double many = snapshot(512);
            ratios[i] = (many - few) / (512 - 64) / ((few - one) / (64 - 1));
        }
        return ratios;
    }

    // Nanoseconds for one snapshot of so many entries, repeated until 512 entries are converted.
    private double snapshot(int entries) {
        Fixture.setEntryCount(entries);
        int calls = Fixture.ENTRIES / entries;
        HBA hba = new HBA();
        return (double) Pairs.time(Fixture::processorTime, () -> snapshots(hba, calls)) / calls;
    }

    private int snapshots(HBA hba, int calls) {
        int status = 0;
        for (int i = 0; i < calls; i++) {
            hba.clearDeviceDataBaseEntries();
            status |= bridge.snapshot().applyAsInt(hba);
        }
        return status;
    }

    // The same work on one thread and on two at once; the spin tells what this machine grants a second thread.
    private void threads(int rounds) throws InterruptedException {
        double[] snapshots = new double[rounds];
        double[] spins = new double[rounds];
        double[] beside = new double[rounds];
        ExecutorService pool = Executors.newFixedThreadPool(2);
        for (int i = 0; i < rounds; i++) {
            snapshots[i] = slowdown(pool, () -> snapshots(new HBA(), SNAPSHOTS));
            spins[i] = slowdown(pool, Growth::spin);
            beside[i] = snapshots[i] / spins[i];
        }
        pool.shutdown();
        String section = "6 Do threads help? Time of two threads at once / of one";
        Measured.print(section, "a loop that touches no memory", "", spins);
        Measured.print(section, "snapshots", "", snapshots);
        Measured.print(section, "snapshots / the loop", "0..1.5", beside);
    }

    private static double slowdown(ExecutorService pool, Callable<Object> work) throws InterruptedException {
        long start = System.nanoTime();
        pool.invokeAll(List.of(work));
        long one = System.nanoTime();
        pool.invokeAll(List.of(work, work));
        return (double) (System.nanoTime() - one) / (one - start);
    }

    private static long spin() {
        return LongStream.range(0, SPINS).reduce(1, (state, i) -> state * 6364136223846793005L + i);
    }
}
