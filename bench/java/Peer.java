package com.varden.tavo.iscsi.bench;

import com.varden.tavo.iscsi.jni.ApiWrapper;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import java.nio.file.Path;
import java.util.function.ToIntFunction;

/**
 * A way between the management library's records and the model objects; both operations return a status.
 *
 * @param snapshot adds all 512 target entries to the object; the bridge's also carries portal and firmware block, which
 *     are three of its thousand JNI calls
 * @param write writes up to 511 entries one by one; null where only reading is compared
 */
record Peer(ToIntFunction<HBA> snapshot, ToIntFunction<DevDBEntry[]> write) {
    static final int DEV = 0;

    /** Loads what the named peer needs and opens the adapter. */
    static Peer open(String name) {
        return switch (name) {
            case "bridge" -> {
                ApiWrapper bridge = new ApiWrapper();
                bridge.openDevice(DEV);
                yield new Peer(hba -> bridge.getiSCSIHBAData(DEV, hba), entries -> bridge.setDDBsData(DEV, entries));
            }
            case "twin" -> {
                System.load(Path.of("libbench_twin.so").toAbsolutePath().toString());
                Twin twin = new Twin();
                twin.openDevice(DEV);
                yield new Peer(hba -> twin.getiSCSIHBAData(DEV, hba), entries -> twin.setDDBsData(DEV, entries));
            }
            case "straight" -> {
                System.load(Path.of("libbench_straight.so").toAbsolutePath().toString());
                Straight straight = new Straight();
                straight.openDevice(DEV);
                yield new Peer(hba -> straight.getiSCSIHBAData(DEV, hba),
                    entries -> straight.setDDBsData(DEV, entries));
            }
            case "jna-structure" -> new Peer(new JnaStructure(), null);
            case "foreign" -> new Peer(foreign(), null);
            default -> throw new IllegalArgumentException("no peer is named '" + name + "'");
        };
    }

    // Compiled for a later Java than the rest.
    @SuppressWarnings("unchecked")
    private static ToIntFunction<HBA> foreign() {
        try {
            return (ToIntFunction<HBA>) Class.forName("com.varden.tavo.iscsi.bench.Foreign").getDeclaredConstructor()
                .newInstance();
        } catch (ReflectiveOperationException e) {
            throw new IllegalStateException(e);
        }
    }
}
