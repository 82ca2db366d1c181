package com.varden.tavo.iscsi.bench;

import java.io.File;
import java.util.LinkedHashMap;
import java.util.Map;

/** Makes the peers that this VM can have; the VM stands in the folder of the management library. */
final class Peers {
    private static final String FOREIGN = "com.varden.tavo.iscsi.bench.Foreign";

    private Peers() {}

    /** Makes one peer by its name and opens its adapter. */
    static Contract open(String name) {
        Contract peer;
        switch (name) {
            case "bridge":
                peer = new Bridge();
                break;
            case "twin":
                System.load(new File("libbench_twin.so").getAbsolutePath());
                peer = new Twin();
                break;
            case "straight":
                System.load(new File("libbench_straight.so").getAbsolutePath());
                peer = new Straight();
                break;
            case "cached":
                System.load(new File("libbench_cached.so").getAbsolutePath());
                peer = new Cached();
                break;
            case "jna-structure":
                peer = new JnaStructure(false);
                break;
            case "jna-structure-kept":
                peer = new JnaStructure(true);
                break;
            case "jna-bulk":
                peer = new JnaBulk();
                break;
            case "foreign":
                peer = foreign();
                break;
            default:
                throw new IllegalArgumentException("no peer is named '" + name + "'");
        }
        if (!peer.openDevice(Contract.DEV)) {
            throw new IllegalStateException(name + ": the adapter cannot be opened");
        }
        return peer;
    }

    /** Makes the named peers, in order. */
    static Map<String, Contract> open(String[] names) {
        Map<String, Contract> peers = new LinkedHashMap<>();
        for (String name : names) {
            peers.put(name, open(name));
        }
        return peers;
    }

    // Compiled for a later Java than the rest.
    private static Contract foreign() {
        try {
            return (Contract) Class.forName(FOREIGN).getDeclaredConstructor().newInstance();
        } catch (ReflectiveOperationException e) {
            throw new IllegalStateException(e);
        }
    }
}
