package com.varden.tavo.iscsi.bench;

import static java.lang.foreign.ValueLayout.ADDRESS;
import static java.lang.foreign.ValueLayout.JAVA_BYTE;
import static java.lang.foreign.ValueLayout.JAVA_INT;
import static java.lang.foreign.ValueLayout.JAVA_SHORT;

import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.DevEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.IPAddr;
import com.varden.tavo.iscsi.model.NodeInfo;
import java.lang.foreign.Arena;
import java.lang.foreign.FunctionDescriptor;
import java.lang.foreign.Linker;
import java.lang.foreign.MemoryLayout;
import java.lang.foreign.MemorySegment;
import java.lang.foreign.SymbolLookup;
import java.lang.invoke.MethodHandle;
import java.nio.file.Path;
import java.util.function.ToIntFunction;

/** The device database by way of the foreign-function interface of Java 22: records are decoded where they lie. */
final class Foreign implements ToIntFunction<HBA> {
    private static final SymbolLookup LIBRARY =
        SymbolLookup.libraryLookup(Path.of("libvdsdm.so").toAbsolutePath(), Arena.global());
    private static final MethodHandle OPEN = operation("SDOpenDeviceiSCSI", JAVA_INT, ADDRESS);
    private static final MethodHandle COUNT = operation("SDGetDDBEntryNum", JAVA_INT, ADDRESS);
    private static final MethodHandle ENTRY = operation("SDGetDDBEntry", JAVA_INT, ADDRESS, JAVA_INT);

    private static final int ENTRY_SIZE = 484;

    private final int handle;

    Foreign() throws Throwable {
        try (Arena arena = Arena.ofConfined()) {
            MemorySegment opened = arena.allocate(JAVA_INT);
            int status = (int) OPEN.invokeExact(Peer.DEV, opened);
            handle = status == 0 ? opened.get(JAVA_INT, 0) : 0;
        }
    }

    private static MethodHandle operation(String name, MemoryLayout... arguments) {
        return Linker.nativeLinker().downcallHandle(LIBRARY.find(name).orElseThrow(),
            FunctionDescriptor.of(JAVA_INT, arguments));
    }

    @Override
    public int applyAsInt(HBA hba) {
        try (Arena arena = Arena.ofConfined()) {
            return snapshot(arena, hba);
        } catch (Throwable e) {
            throw new IllegalStateException(e);
        }
    }

    private int snapshot(Arena arena, HBA hba) throws Throwable {
        MemorySegment count = arena.allocate(JAVA_INT);
        int status = (int) COUNT.invokeExact(handle, count);
        MemorySegment record = arena.allocate(ENTRY_SIZE, 8);
        for (int index = 0; index < count.get(JAVA_INT, 0); index++) {
            record.fill((byte) 0);
            status |= (int) ENTRY.invokeExact(handle, record, index);
            hba.addDeviceDataBaseEntry(entry(record, index));
        }
        return status;
    }

    private static DevDBEntry entry(MemorySegment record, int index) {
        DevDBEntry entry = new DevDBEntry();
        entry.setInitiatorSessionID(shorts(record, 6, 6));
        entry.setTargetID(record.get(JAVA_INT, 460));
        entry.setState(record.get(JAVA_INT, 464));
        entry.setIndex(index);
        entry.setMaxTxDataSegmentLen(unsignedShort(record, 480));
        entry.setDDBLink(unsignedShort(record, 476));
        entry.setChapIndex(unsignedShort(record, 478));
        entry.setOptions(record.get(JAVA_BYTE, 0));
        entry.setControl(record.get(JAVA_BYTE, 1));
        entry.setExeCount(unsignedShort(record, 2));
        entry.setReservedFlags(record.get(JAVA_INT, 468));
        entry.setTargetSessionID(unsignedShort(record, 4));
        entry.setTargetPortalGroupID(unsignedShort(record, 482));
        NodeInfo nodeInfo = entry.getNodeInfo();
        nodeInfo.setiSCSIName(record.getString(160));
        nodeInfo.setAlias(record.getString(416));
        IPAddr address = new IPAddr();
        address.setAddress(shorts(record, 140, IPAddr.LENGTH));
        nodeInfo.setIPAddress(address);
        nodeInfo.setPortalCount(unsignedShort(record, 448));
        setDevice(record, 76, entry.getDeviceEntry());
        return entry;
    }

    private static void setDevice(MemorySegment record, int at, DevEntry device) {
        device.setiSCSIOptions(record.get(JAVA_SHORT, at + 8));
        device.setTaskManagementTimeout(record.get(JAVA_SHORT, at + 30));
        device.setRetryCount((short) Byte.toUnsignedInt(record.get(JAVA_BYTE, at + 6)));
        device.setRetryDelay((short) Byte.toUnsignedInt(record.get(JAVA_BYTE, at + 7)));
        device.setDeviceType(unsignedShort(record, at));
        device.setExecutionThrottle(unsignedShort(record, at + 2));
        device.setFirstBurstSize(unsignedShort(record, at + 16));
        device.setMaxBurstSize(record.get(JAVA_SHORT, at + 28));
        device.setIPOptions(unsignedShort(record, at + 12));
        device.setMaxRxDataSegmentLen(unsignedShort(record, at + 14));
        device.setDefaultTime2Wait(unsignedShort(record, at + 18));
        device.setDefaultTime2Retain(unsignedShort(record, at + 20));
        device.setKeepAliveTO(unsignedShort(record, at + 24));
        device.setMaxOutstandingR2T(unsignedShort(record, at + 22));
        device.setTCPOptions(unsignedShort(record, at + 10));
        device.setTargetAddress(record.getString(at + 32));
        device.setPortNumber(unsignedShort(record, at + 26));
    }

    private static int unsignedShort(MemorySegment record, int at) {
        return Short.toUnsignedInt(record.get(JAVA_SHORT, at));
    }

    private static short[] shorts(MemorySegment record, int at, int count) {
        short[] shorts = new short[count];
        for (int i = 0; i < count; i++) {
            shorts[i] = (short) Byte.toUnsignedInt(record.get(JAVA_BYTE, at + i));
        }
        return shorts;
    }
}
