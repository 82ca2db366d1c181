package com.varden.tavo.iscsi.bench;

import static java.lang.foreign.ValueLayout.ADDRESS;
import static java.lang.foreign.ValueLayout.JAVA_INT;

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
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.charset.StandardCharsets;
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
        MemorySegment entry = arena.allocate(ENTRY_SIZE, 8);
        ByteBuffer record = entry.asByteBuffer().order(ByteOrder.nativeOrder());
        for (int index = 0; index < count.get(JAVA_INT, 0); index++) {
            entry.fill((byte) 0);
            status |= (int) ENTRY.invokeExact(handle, entry, index);
            hba.addDeviceDataBaseEntry(entry(record, index));
        }
        return status;
    }

    private static DevDBEntry entry(ByteBuffer record, int index) {
        DevDBEntry entry = new DevDBEntry();
        entry.setInitiatorSessionID(shorts(record, 6, 6));
        entry.setTargetID(record.getInt(460));
        entry.setState(record.getInt(464));
        entry.setIndex(index);
        entry.setMaxTxDataSegmentLen(unsignedShort(record, 480));
        entry.setDDBLink(unsignedShort(record, 476));
        entry.setChapIndex(unsignedShort(record, 478));
        entry.setOptions(record.get(0));
        entry.setControl(record.get(1));
        entry.setExeCount(unsignedShort(record, 2));
        entry.setReservedFlags(record.getInt(468));
        entry.setTargetSessionID(unsignedShort(record, 4));
        entry.setTargetPortalGroupID(unsignedShort(record, 482));
        NodeInfo nodeInfo = entry.getNodeInfo();
        nodeInfo.setiSCSIName(text(record, 160, 256));
        nodeInfo.setAlias(text(record, 416, 32));
        nodeInfo.setIPAddress(address(record, 140));
        nodeInfo.setPortalCount(unsignedShort(record, 448));
        setDevice(record, 76, entry.getDeviceEntry());
        return entry;
    }

    private static void setDevice(ByteBuffer record, int at, DevEntry device) {
        device.setiSCSIOptions(record.getShort(at + 8));
        device.setTaskManagementTimeout(record.getShort(at + 30));
        device.setRetryCount((short) Byte.toUnsignedInt(record.get(at + 6)));
        device.setRetryDelay((short) Byte.toUnsignedInt(record.get(at + 7)));
        device.setDeviceType(unsignedShort(record, at));
        device.setExecutionThrottle(unsignedShort(record, at + 2));
        device.setFirstBurstSize(unsignedShort(record, at + 16));
        device.setMaxBurstSize(record.getShort(at + 28));
        device.setIPOptions(unsignedShort(record, at + 12));
        device.setMaxRxDataSegmentLen(unsignedShort(record, at + 14));
        device.setDefaultTime2Wait(unsignedShort(record, at + 18));
        device.setDefaultTime2Retain(unsignedShort(record, at + 20));
        device.setKeepAliveTO(unsignedShort(record, at + 24));
        device.setMaxOutstandingR2T(unsignedShort(record, at + 22));
        device.setTCPOptions(unsignedShort(record, at + 10));
        device.setTargetAddress(text(record, at + 32, 32));
        device.setPortNumber(unsignedShort(record, at + 26));
    }

    private static IPAddr address(ByteBuffer record, int at) {
        IPAddr address = new IPAddr();
        address.setAddress(shorts(record, at, IPAddr.LENGTH));
        return address;
    }

    private static int unsignedShort(ByteBuffer record, int at) {
        return Short.toUnsignedInt(record.getShort(at));
    }

    private static short[] shorts(ByteBuffer record, int at, int count) {
        short[] shorts = new short[count];
        for (int i = 0; i < count; i++) {
            shorts[i] = (short) Byte.toUnsignedInt(record.get(at + i));
        }
        return shorts;
    }

    private static String text(ByteBuffer record, int at, int size) {
        int length = 0;
        while (length < size && record.get(at + length) != 0) {
            length++;
        }
        byte[] bytes = new byte[length];
        record.get(at, bytes);
        return new String(bytes, StandardCharsets.UTF_8);
    }
}
