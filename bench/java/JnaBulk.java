package com.varden.tavo.iscsi.bench;

import com.sun.jna.Memory;
import com.sun.jna.Native;
import com.sun.jna.Pointer;
import com.sun.jna.ptr.IntByReference;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.PortStatistics;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;

/** JNA with direct mapping and bulk copies: one getByteArray per record, decoded in Java. */
final class JnaBulk extends Contract {
    /** The management library's operations. */
    private static final class Library {
        static {
            Native.register(Library.class, JnaStructure.LIBRARY);
        }

        static native int SDOpenDeviceiSCSI(int adapterIndex, IntByReference handle);

        static native int SDGetHbaDevicePortalPropertyiSCSI(int handle, int port, Pointer portal);

        static native int SDGetDDBEntryNum(int handle, IntByReference count);

        static native int SDGetDDBEntry(int handle, Pointer entry, int index);

        static native int SDSetDDBEntry(int handle, Pointer entry, int index);

        static native int SDGetInitFW(int handle, Pointer block);

        static native int SDGetStatisticsiSCSI(int handle, Pointer statistics);

        static native int SDGetLogs(int handle, int logType, IntByReference count, Pointer entries);
    }

    private int handle;

    @Override
    boolean openDevice(int dev) {
        IntByReference opened = new IntByReference();
        int status = Library.SDOpenDeviceiSCSI(dev, opened);
        handle = opened.getValue();
        return status == 0;
    }

    private static ByteBuffer bytes(Memory memory, int size) {
        return ByteBuffer.wrap(memory.getByteArray(0, size)).order(ByteOrder.LITTLE_ENDIAN);
    }

    @Override
    int getiSCSIHBAState(int dev, HBA hba) {
        try (Memory portal = new Memory(Records.PORTAL)) {
            int status = Library.SDGetHbaDevicePortalPropertyiSCSI(handle, 0, portal);
            if (status == 0) {
                Records.state(bytes(portal, Records.PORTAL), hba);
            }
            return status;
        }
    }

    @Override
    int getiSCSIHBAData(int dev, HBA hba) {
        try (Memory memory = new Memory(Records.FIRMWARE)) {
            int status = Library.SDGetHbaDevicePortalPropertyiSCSI(handle, 0, memory);
            if (status != 0) {
                return status;
            }
            Records.portal(bytes(memory, Records.PORTAL), hba);
            IntByReference count = new IntByReference();
            status = Library.SDGetDDBEntryNum(handle, count);
            int found = 0;
            int index = 0;
            while (index < Records.SLOTS && found < count.getValue()) {
                memory.clear(Records.ENTRY);
                status = Library.SDGetDDBEntry(handle, memory, index);
                ByteBuffer record = bytes(memory, Records.ENTRY);
                if (Records.isUsed(record)) {
                    hba.addDeviceDataBaseEntry(Records.entry(record, found));
                    found++;
                }
                index = Records.following(record, index);
            }
            if (Library.SDGetInitFW(handle, memory) == 0) {
                Records.firmware(bytes(memory, Records.FIRMWARE), hba);
            }
            return status;
        }
    }

    @Override
    int getiSCSIStatistics(int dev, PortStatistics statistics) {
        try (Memory memory = new Memory(Records.STATISTICS)) {
            int status = Library.SDGetStatisticsiSCSI(handle, memory);
            if (status == 0) {
                Records.counters(bytes(memory, Records.STATISTICS), statistics);
            }
            return status;
        }
    }

    @Override
    int getConnectErrorLog(int dev, HBA hba) {
        try (Memory memory = new Memory(Records.LOG_ENTRY * Records.LOG_CAPACITY)) {
            IntByReference count = new IntByReference();
            int status = Library.SDGetLogs(handle, 1, count, memory);
            if (status == 0) {
                Records.log(bytes(memory, Records.LOG_ENTRY * Records.LOG_CAPACITY), count.getValue(), hba);
            }
            return status;
        }
    }

    @Override
    int setDDBsData(int dev, DevDBEntry[] entries) {
        if (entries.length > Records.MOST_WRITTEN) {
            return 0;
        }
        try (Memory memory = new Memory(Records.ENTRY)) {
            for (DevDBEntry entry : entries) {
                ByteBuffer record = ByteBuffer.allocate(Records.ENTRY).order(ByteOrder.LITTLE_ENDIAN);
                Records.put(entry, record);
                memory.write(0, record.array(), 0, Records.ENTRY);
                Library.SDSetDDBEntry(handle, memory, entry.getTargetID());
            }
            return 0;
        }
    }
}
