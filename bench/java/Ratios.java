package com.varden.tavo.iscsi.bench;

import com.google.gson.Gson;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import java.util.Arrays;
import java.util.function.IntSupplier;
import java.util.function.LongSupplier;

/** The bridge's time divided by that of a peer: {@code Ratios PAIRS PEER SECTION MARK}. */
final class Ratios {
    private final HBA hba = new HBA();
    private DevDBEntry[] entries;

    private Ratios() {}

    public static void main(String[] arguments) {
        int pairs = Integer.parseInt(arguments[0]);
        String name = arguments[1];
        Ratios ratios = new Ratios();
        Peer bridge = Peer.open("bridge");
        Peer peer = Peer.open(name);
        requireTheSame(ratios.read(peer), ratios.read(bridge));
        Figures.print(arguments[2], "snapshot of 512 entries / " + name, arguments[3],
            Pairs.ratios(pairs, ratios.snapshot(bridge), ratios.snapshot(peer)));
        if (peer.write() != null) {
            requireTheSame(ratios.written(peer), ratios.written(bridge));
            Figures.print(arguments[2], "write of 511 entries / " + name, arguments[3],
                Pairs.ratios(pairs, ratios.write(bridge), ratios.write(peer)));
        }
    }

    private LongSupplier snapshot(Peer peer) {
        return () -> {
            hba.clearDeviceDataBaseEntries();
            return time(() -> peer.snapshot().applyAsInt(hba));
        };
    }

    private LongSupplier write(Peer peer) {
        return () -> time(() -> peer.write().applyAsInt(entries));
    }

    private static long time(IntSupplier operation) {
        return Pairs.time(Fixture::processorTime, operation);
    }

    // Status and contents, and the entries that will be written.
    private String read(Peer peer) {
        HBA filled = new HBA();
        int status = peer.snapshot().applyAsInt(filled);
        entries = filled.getDeviceDataBaseEntries().subList(0, Fixture.MOST_WRITTEN).toArray(new DevDBEntry[0]);
        return status + new Gson().toJson(filled.getDeviceDataBaseEntries());
    }

    private String written(Peer peer) {
        Fixture.takeWritten();
        return peer.write().applyAsInt(entries) + Arrays.toString(Fixture.takeWritten());
    }

    private static void requireTheSame(String found, String expected) {
        if (!found.equals(expected)) {
            throw new IllegalStateException("the peer gives other values than the bridge");
        }
    }
}
