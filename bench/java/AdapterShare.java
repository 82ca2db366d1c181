package com.varden.tavo.iscsi.bench;

import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.IPAddr;
import com.varden.tavo.iscsi.jni.ApiWrapper;
import java.io.File;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.channels.FileChannel;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;

/**
 * What the software adapter costs beside the bridge: {@code AdapterShare PAIRS OPERATIONS FOLDER}, with the library of
 * native methods and the folder of the flash files. The VM stands in the software adapter's folder.
 */
final class AdapterShare {
    /** The adapter that has no entries when it comes from the factory. */
    private static final int EMPTY_ADAPTER = 3;

    private static final int SMALL_ADAPTER = 0;
    private static final int FULL_ADAPTER = 2;

    private static final int[] SIZES = {64, 128, 256, 511};

    private AdapterShare() {}

    /** The operations of a snapshot alone; nothing reaches Java. */
    static native int snapshot(int adapterIndex);

    public static void main(String[] arguments) throws IOException {
        int pairs = Integer.parseInt(arguments[0]);
        System.load(new File(arguments[1]).getAbsolutePath());
        ApiWrapper api = new ApiWrapper();
        if (!api.openDevice(EMPTY_ADAPTER) || api.getiSCSIEntryNum(EMPTY_ADAPTER) != 0) {
            throw new IllegalStateException("no empty adapter");
        }
        double[] beside = new double[Records.MOST_WRITTEN];
        double[] perEntry = new double[SIZES.length];
        HBA hba = new HBA();
        Pairs timing = new Pairs(pairs, hba::clearDeviceDataBaseEntries);
        int size = 0;
        try (FileChannel file = FileChannel.open(Path.of(arguments[2], "beside"), StandardOpenOption.CREATE,
            StandardOpenOption.WRITE)) {
            for (int i = 0; i < Records.MOST_WRITTEN; i++) {
                DevDBEntry entry = entry(i);
                double synced = sync(file);
                long start = System.nanoTime();
                int status = api.setDDBData(EMPTY_ADAPTER, entry, 0);
                double written = System.nanoTime() - start;
                if (status != 0) {
                    throw new IllegalStateException("entry " + i + " was not written: " + Integer.toHexString(status));
                }
                beside[i] = written / synced;
                if (i + 1 == SIZES[size]) {
                    perEntry[size] = share(api, timing, hba, pairs, SIZES[size]) / SIZES[size];
                    size++;
                }
            }
        }
        Figure.of(beside).print("adapter", "durable write of one entry", "record and fdatasync, same folder", "<=4");
        if (!api.openDevice(SMALL_ADAPTER) || !api.openDevice(FULL_ADAPTER)) {
            throw new IllegalStateException("no small or no full adapter");
        }
        DevDBEntry entry = entry(10);
        timing.ratio(() -> api.setDDBData(FULL_ADAPTER, entry, 0), () -> api.setDDBData(SMALL_ADAPTER, entry, 0), 1)
            .print("adapter", "durable write, 512 entries held", "9 entries held", "<=1.5");
        Figure.of(new double[] {perEntry[SIZES.length - 1] / perEntry[0]})
            .print("adapter", "operations of a snapshot, per entry at 511", "at 64", "<=1.1");
    }

    // Prints the operations' share of a snapshot; returns the nanoseconds that they take.
    private static double share(ApiWrapper api, Pairs timing, HBA hba, int pairs, int size) {
        timing.ratio(() -> snapshot(EMPTY_ADAPTER), () -> api.getiSCSIHBAData(EMPTY_ADAPTER, hba), 1)
            .print("adapter", "operations of a snapshot of " + size + " entries", "the whole snapshot", "");
        double[] times = new double[pairs];
        for (int i = 0; i < pairs; i++) {
            times[i] = timing.time(() -> snapshot(EMPTY_ADAPTER), 1);
        }
        return Figure.of(times).median();
    }

    private static double sync(FileChannel file) throws IOException {
        ByteBuffer record = ByteBuffer.allocate(Records.ENTRY);
        long start = System.nanoTime();
        file.write(record, 0);
        file.force(false);
        return System.nanoTime() - start;
    }

    private static DevDBEntry entry(int i) {
        DevDBEntry entry = new DevDBEntry();
        entry.setTargetID(i);
        entry.setState(1);
        entry.getNodeInfo().setiSCSIName("iqn.2004-08.com.varden:bench.disk" + i);
        entry.getNodeInfo().setIPAddress(IPAddr.parse("10.99.0." + i % 250));
        entry.getDeviceEntry().setPortNumber(3260);
        return entry;
    }
}
