package com.varden.tavo.iscsi.bench;

import com.varden.tavo.iscsi.model.HBA;
import java.io.File;
import java.util.concurrent.CyclicBarrier;
import java.util.function.IntSupplier;

/** How the bridge's snapshot grows with the entries, and what a second thread gains: {@code Growth ROUNDS}. */
final class Growth {
    private static final int[] SIZES = {0, 1, 2, 64, 128, 256, 384, 512};
    private static final int WARM_UP_ROUNDS = 30;
    private static final int SNAPSHOTS = 10;
    private static final int SPINS = 20_000_000;

    private static volatile long sink;

    private Growth() {}

    public static void main(String[] arguments) throws InterruptedException {
        int rounds = Integer.parseInt(arguments[0]);
        System.load(new File("libbench_fixture.so").getAbsolutePath());
        Contract bridge = Peers.open("bridge");
        entries(bridge, WARM_UP_ROUNDS, false);
        entries(bridge, rounds, true);
        Fixture.setEntryCount(Records.SLOTS);
        threads(bridge, rounds / 5);
    }

    // Every round takes all sizes in turn, each as often as it needs to convert about 512 entries.
    private static void entries(Contract bridge, int rounds, boolean print) {
        HBA hba = new HBA();
        Pairs timing = new Pairs(rounds, hba::clearDeviceDataBaseEntries);
        IntSupplier snapshot = () -> bridge.getiSCSIHBAData(Contract.DEV, hba);
        double[][] times = new double[SIZES.length][rounds];
        for (int round = 0; round < rounds; round++) {
            for (int k = 0; k < SIZES.length; k++) {
                Fixture.setEntryCount(SIZES[k]);
                int calls = Math.max(1, Records.SLOTS / Math.max(1, SIZES[k]));
                times[k][round] = (double) timing.time(snapshot, calls) / calls;
            }
        }
        if (!print) {
            return;
        }
        // A snapshot with entries looks their class up once, which one without does not: what is fixed shows in the
        // difference between one entry and two.
        double[] perEntry = new double[rounds];
        double[] beyondNone = new double[rounds];
        int last = SIZES.length - 1;
        for (int round = 0; round < rounds; round++) {
            double one = times[2][round] - times[1][round];
            double fixed = times[1][round] - one;
            perEntry[round] = (times[last][round] - fixed) / SIZES[last] / one;
            double none = times[0][round];
            beyondNone[round] = (times[last][round] - none) / SIZES[last] / (times[1][round] - none);
        }
        Figure.of(perEntry).print("growth", "time per entry at 512 entries", "at 1 entry", "0.95..1.05");
        Figure.of(beyondNone).print("growth", "the same beyond a snapshot of 0", "the same at 1 entry", "");
        for (int k = 0; k < SIZES.length; k++) {
            Figure.of(times[k]).print("curve", "snapshot, nanoseconds", Integer.toString(SIZES[k]), "");
        }
    }

    // The same work on one thread and on two at once; the spin tells what this machine grants a second thread.
    private static void threads(Contract bridge, int rounds) throws InterruptedException {
        double[] snapshots = new double[rounds];
        double[] spins = new double[rounds];
        double[] beside = new double[rounds];
        for (int round = -1; round < rounds; round++) {
            double bridged = slowdown(() -> snapshots(bridge));
            double spun = slowdown(Growth::spin);
            if (round >= 0) {
                snapshots[round] = bridged;
                spins[round] = spun;
                beside[round] = bridged / spun;
            }
        }
        Figure.of(snapshots).print("threads", "snapshots on two threads at once", "on one thread", "");
        Figure.of(spins).print("threads", "spin on two threads at once", "on one thread", "");
        Figure.of(beside).print("threads", "slowdown of the snapshots", "of the spin", "");
    }

    private static double slowdown(Runnable work) throws InterruptedException {
        long one = onThreads(1, work);
        return (double) onThreads(2, work) / one;
    }

    private static long onThreads(int count, Runnable work) throws InterruptedException {
        CyclicBarrier ready = new CyclicBarrier(count + 1);
        Thread[] threads = new Thread[count];
        for (int i = 0; i < count; i++) {
            threads[i] = new Thread(() -> {
                await(ready);
                work.run();
            });
            threads[i].start();
        }
        await(ready);
        long start = System.nanoTime();
        for (Thread thread : threads) {
            thread.join();
        }
        return System.nanoTime() - start;
    }

    private static void await(CyclicBarrier barrier) {
        try {
            barrier.await();
        } catch (Exception e) {
            throw new IllegalStateException(e);
        }
    }

    private static void snapshots(Contract bridge) {
        HBA hba = new HBA();
        for (int i = 0; i < SNAPSHOTS; i++) {
            hba.clearDeviceDataBaseEntries();
            bridge.getiSCSIHBAData(Contract.DEV, hba);
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
