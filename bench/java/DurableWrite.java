package com.varden.tavo.iscsi.bench;

import com.varden.tavo.iscsi.jni.ApiWrapper;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.IPAddr;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.channels.FileChannel;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;
import java.util.function.LongSupplier;

/**
 * What a durable write of one device database entry costs, through the bridge and the software adapter: {@code
 * DurableWrite PAIRS FOLDER}, with the folder of the adapter's settings. The VM stands in the adapter's folder.
 */
final class DurableWrite {
    private static final String SECTION = "8 What does the store cost? A durable write of one entry";
    private static final int SMALL_ADAPTER = 0;
    private static final int LARGE_ADAPTER = 2;
    private static final int RECORD = 484;

    private final ApiWrapper api = new ApiWrapper();
    private int written;

    private DurableWrite() {}

    public static void main(String[] arguments) throws IOException {
        DurableWrite writes = new DurableWrite();
        Measured.require(writes.open(SMALL_ADAPTER) <= 16, "the small table is not small");
        Measured.require(writes.open(LARGE_ADAPTER) >= 500, "the full table is not full");
        int pairs = Integer.parseInt(arguments[0]);
        LongSupplier small = () -> Pairs.time(System::nanoTime, () -> writes.write(SMALL_ADAPTER));
        LongSupplier large = () -> Pairs.time(System::nanoTime, () -> writes.write(LARGE_ADAPTER));
        try (FileChannel file = FileChannel.open(Path.of(arguments[1], "beside"), StandardOpenOption.CREATE,
            StandardOpenOption.WRITE)) {
            LongSupplier bare = () -> Pairs.time(System::nanoTime, () -> sync(file));
            Measured.print(SECTION, "bridge and adapter / 484 bytes and fdatasync", "0..2",
                Pairs.ratios(pairs, small, bare));
        }
        Measured.print(SECTION, "into a full table / into a small one", "0..1.1", Pairs.ratios(pairs, large, small));
    }

    // The number of entries.
    private int open(int dev) {
        Measured.require(api.openDevice(dev), "adapter " + dev + " cannot be opened");
        return api.getiSCSIEntryNum(dev);
    }

    // Every write changes the entry, so that none can be left out.
    private int write(int dev) {
        DevDBEntry entry = new DevDBEntry();
        entry.setTargetID(10);
        entry.setState(1);
        entry.getNodeInfo().setiSCSIName("iqn.2004-08.com.varden:bench");
        entry.getNodeInfo().setAlias("write " + written++);
        entry.getNodeInfo().setIPAddress(IPAddr.parse("10.99.0.10"));
        entry.getDeviceEntry().setPortNumber(3260);
        return api.setDDBData(dev, entry, 0);
    }

    private static int sync(FileChannel file) {
        try {
            int left = RECORD - file.write(ByteBuffer.allocate(RECORD), 0);
            file.force(false);
            return left;
        } catch (IOException e) {
            throw new IllegalStateException(e);
        }
    }
}
