package com.varden.tavo.iscsi.bench;

import com.google.gson.Gson;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import java.util.Arrays;
import java.util.List;

/** The bridge's time divided by that of its peers: {@code Ratios PAIRS PEER...}. */
final class Ratios {
    private final HBA hba = new HBA();
    private final Peer bridge = Peer.open("bridge");
    private final DevDBEntry[] entries;

    private Ratios() {
        HBA source = new HBA();
        bridge.snapshot().applyAsInt(source);
        List<DevDBEntry> all = source.getDeviceDataBaseEntries();
        entries = all.subList(0, Fixture.MOST_WRITTEN).toArray(new DevDBEntry[0]);
    }

    public static void main(String[] arguments) {
        Ratios ratios = new Ratios();
        Pairs timing = new Pairs(Integer.parseInt(arguments[0]), Fixture::processorTime,
            ratios.hba::clearDeviceDataBaseEntries);
        for (String name : Arrays.asList(arguments).subList(1, arguments.length)) {
            ratios.compare(timing, name);
        }
    }

    private void compare(Pairs timing, String name) {
        Peer peer = Peer.open(name);
        requireTheSame(name, snapshot(bridge), snapshot(peer));
        timing.ratio(() -> bridge.snapshot().applyAsInt(hba), () -> peer.snapshot().applyAsInt(hba))
            .print(section(name), "snapshot of 512 entries / " + name, mark(name));
        if (peer.write() != null) {
            requireTheSame(name, write(bridge), write(peer));
            timing.ratio(() -> bridge.write().applyAsInt(entries), () -> peer.write().applyAsInt(entries))
                .print(section(name), "write of 511 entries / " + name, mark(name));
        }
    }

    private static String section(String peer) {
        return switch (peer) {
            case "twin" -> Report.CONTROLS;
            case "straight" -> "Are the helpers free? The bridge / straight lines by hand";
            default -> "Is it faster than the alternatives? The bridge / the alternative, once compiled";
        };
    }

    private static String mark(String peer) {
        return switch (peer) {
            case "twin" -> "0.98..1.02";
            case "straight" -> "0..1.05";
            case "jna-structure" -> "0..1";
            default -> "";
        };
    }

    private static String snapshot(Peer peer) {
        HBA filled = new HBA();
        return peer.snapshot().applyAsInt(filled) + new Gson().toJson(filled.getDeviceDataBaseEntries());
    }

    private String write(Peer peer) {
        Fixture.takeWritten();
        return peer.write().applyAsInt(entries) + Arrays.toString(Fixture.takeWritten());
    }

    private static void requireTheSame(String name, String expected, String found) {
        if (!found.equals(expected)) {
            throw new IllegalStateException(name + " gives other values than the bridge");
        }
    }
}
