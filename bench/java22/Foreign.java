package com.varden.tavo.iscsi.bench;

import static java.lang.foreign.ValueLayout.ADDRESS;
import static java.lang.foreign.ValueLayout.JAVA_INT;

import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.PortStatistics;
import java.lang.foreign.Arena;
import java.lang.foreign.FunctionDescriptor;
import java.lang.foreign.Linker;
import java.lang.foreign.MemoryLayout;
import java.lang.foreign.MemorySegment;
import java.lang.foreign.SymbolLookup;
import java.lang.invoke.MethodHandle;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.file.Path;

/** The foreign-function interface of Java 22 and later: off-heap records, decoded in place. */
final class Foreign extends Contract {
    private static final SymbolLookup LIBRARY =
        SymbolLookup.libraryLookup(Path.of("libvdsdm.so").toAbsolutePath(), Arena.global());
    private static final MethodHandle OPEN = operation("SDOpenDeviceiSCSI", JAVA_INT, ADDRESS);
    private static final MethodHandle PORTAL =
        operation("SDGetHbaDevicePortalPropertyiSCSI", JAVA_INT, JAVA_INT, ADDRESS);
    private static final MethodHandle COUNT = operation("SDGetDDBEntryNum", JAVA_INT, ADDRESS);
    private static final MethodHandle GET_ENTRY = operation("SDGetDDBEntry", JAVA_INT, ADDRESS, JAVA_INT);
    private static final MethodHandle SET_ENTRY = operation("SDSetDDBEntry", JAVA_INT, ADDRESS, JAVA_INT);
    private static final MethodHandle FIRMWARE = operation("SDGetInitFW", JAVA_INT, ADDRESS);
    private static final MethodHandle STATISTICS = operation("SDGetStatisticsiSCSI", JAVA_INT, ADDRESS);
    private static final MethodHandle LOGS = operation("SDGetLogs", JAVA_INT, JAVA_INT, ADDRESS, ADDRESS);

    private int handle;

    private static MethodHandle operation(String name, MemoryLayout... arguments) {
        return Linker.nativeLinker().downcallHandle(LIBRARY.find(name).orElseThrow(),
            FunctionDescriptor.of(JAVA_INT, arguments));
    }

    private interface Work {
        int run(Arena arena) throws Throwable;
    }

    private static int inArena(Work work) {
        try (Arena arena = Arena.ofConfined()) {
            return work.run(arena);
        } catch (Throwable e) {
            throw new IllegalStateException(e);
        }
    }

    private static ByteBuffer bytes(MemorySegment segment) {
        return segment.asByteBuffer().order(ByteOrder.LITTLE_ENDIAN);
    }

    @Override
    boolean openDevice(int dev) {
        return inArena(arena -> {
            MemorySegment opened = arena.allocate(JAVA_INT);
            int status = (int) OPEN.invokeExact(dev, opened);
            handle = opened.get(JAVA_INT, 0);
            return status;
        }) == 0;
    }

    @Override
    int getiSCSIHBAState(int dev, HBA hba) {
        return inArena(arena -> {
            MemorySegment portal = arena.allocate(Records.PORTAL, 8);
            int status = (int) PORTAL.invokeExact(handle, 0, portal);
            if (status == 0) {
                Records.state(bytes(portal), hba);
            }
            return status;
        });
    }

    @Override
    int getiSCSIHBAData(int dev, HBA hba) {
        return inArena(arena -> {
            MemorySegment segment = arena.allocate(Records.FIRMWARE, 8);
            ByteBuffer record = bytes(segment);
            int status = (int) PORTAL.invokeExact(handle, 0, segment);
            if (status != 0) {
                return status;
            }
            Records.portal(record, hba);
            MemorySegment count = arena.allocate(JAVA_INT);
            status = (int) COUNT.invokeExact(handle, count);
            int found = 0;
            int index = 0;
            while (index < Records.SLOTS && found < count.get(JAVA_INT, 0)) {
                segment.asSlice(0, Records.ENTRY).fill((byte) 0);
                status = (int) GET_ENTRY.invokeExact(handle, segment, index);
                if (Records.isUsed(record)) {
                    hba.addDeviceDataBaseEntry(Records.entry(record, found));
                    found++;
                }
                index = Records.following(record, index);
            }
            if ((int) FIRMWARE.invokeExact(handle, segment) == 0) {
                Records.firmware(record, hba);
            }
            return status;
        });
    }

    @Override
    int getiSCSIStatistics(int dev, PortStatistics statistics) {
        return inArena(arena -> {
            MemorySegment words = arena.allocate(Records.STATISTICS, 8);
            int status = (int) STATISTICS.invokeExact(handle, words);
            if (status == 0) {
                Records.counters(bytes(words), statistics);
            }
            return status;
        });
    }

    @Override
    int getConnectErrorLog(int dev, HBA hba) {
        return inArena(arena -> {
            MemorySegment entries = arena.allocate(Records.LOG_ENTRY * Records.LOG_CAPACITY, 8);
            MemorySegment count = arena.allocate(JAVA_INT);
            int status = (int) LOGS.invokeExact(handle, 1, count, entries);
            if (status == 0) {
                Records.log(bytes(entries), count.get(JAVA_INT, 0), hba);
            }
            return status;
        });
    }

    @Override
    int setDDBsData(int dev, DevDBEntry[] entries) {
        if (entries.length > Records.MOST_WRITTEN) {
            return 0;
        }
        return inArena(arena -> {
            MemorySegment segment = arena.allocate(Records.ENTRY, 8);
            ByteBuffer record = bytes(segment);
            for (DevDBEntry entry : entries) {
                segment.fill((byte) 0);
                Records.put(entry, record);
                int status = (int) SET_ENTRY.invokeExact(handle, segment, entry.getTargetID());
            }
            return 0;
        });
    }
}
