package com.varden.tavo.iscsi.bench;

import com.google.gson.Gson;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import java.util.List;
import java.util.function.LongSupplier;

/** The bridge's time divided by that of a peer: {@code Ratios PAIRS PEER SECTION MARK}. */
final class Ratios {
    private static final int MOST_WRITTEN = 511;

    private final HBA hba = new HBA();
    private DevDBEntry[] entries;

    private Ratios() {}

    public static void main(String[] arguments) {
        int pairs = Integer.parseInt(arguments[0]);
        String name = arguments[1];
        Ratios ratios = new Ratios();
        Peer bridge = Peer.open("bridge");
        Peer peer = Peer.open(name);
        Measured.require(ratios.read(peer).equals(ratios.read(bridge)), name + " reads other values than the bridge");
        Measured.print(arguments[2], "snapshot of 512 entries / " + name, arguments[3],
            Pairs.ratios(pairs, ratios.snapshot(bridge), ratios.snapshot(peer)));
        if (peer.write() != null) {
            String written = ratios.change(peer);
            Measured.require(ratios.read(bridge).equals(written), name + " writes other values than it was given");
            Measured.print(arguments[2], "write of 511 entries / " + name, arguments[3],
                Pairs.ratios(pairs, ratios.write(bridge), ratios.write(peer)));
        }
    }

    private LongSupplier snapshot(Peer peer) {
        return () -> {
            hba.clearDeviceDataBaseEntries();
            return Pairs.time(Fixture::processorTime, () -> peer.snapshot().applyAsInt(hba));
        };
    }

    private LongSupplier write(Peer peer) {
        return () -> Pairs.time(Fixture::processorTime, () -> peer.write().applyAsInt(entries));
    }

    // The entries that can be written, as the peer reads them.
    private String read(Peer peer) {
        HBA filled = new HBA();
        Measured.require(peer.snapshot().applyAsInt(filled) == 0, "a snapshot failed");
        List<DevDBEntry> read = filled.getDeviceDataBaseEntries().subList(0, MOST_WRITTEN);
        entries = read.toArray(new DevDBEntry[0]);
        return new Gson().toJson(entries);
    }

    // Has the peer write them with other names.
    private String change(Peer peer) {
        for (DevDBEntry entry : entries) {
            entry.getNodeInfo().setAlias("changed " + entry.getTargetID());
        }
        Measured.require(peer.write().applyAsInt(entries) == 0, "a write failed");
        return new Gson().toJson(entries);
    }
}
