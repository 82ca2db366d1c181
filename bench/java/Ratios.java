package com.varden.tavo.iscsi.bench;

import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.PortStatistics;
import java.lang.reflect.Array;
import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.util.Arrays;
import java.util.Comparator;
import java.util.List;
import java.util.Map;
import java.util.function.Function;
import java.util.function.IntSupplier;

/** Compares the bridge with its peers, operation by operation: {@code Ratios PAIRS PEER...}, the bridge first. */
final class Ratios {
    private static final int FEW_CALLS = 1;
    private static final int ANY_CALLS = 1000;
    private static final String[] LAST_WORDS = {"getClass", "hashCode", "toString"};

    private final HBA hba = new HBA();
    private final PortStatistics statistics = new PortStatistics();
    private DevDBEntry[] entries;

    /** An operation of a peer, ready to be called; the log and the entries written keep their objects. */
    private record Subject(String name, int mostCalls, Function<Contract, IntSupplier> operation,
                           Function<Contract, String> outcome) {}

    private final List<Subject> subjects = List.of(
        new Subject("snapshot of 512 entries", FEW_CALLS,
            peer -> () -> peer.getiSCSIHBAData(Contract.DEV, hba),
            peer -> {
                HBA filled = new HBA();
                return peer.getiSCSIHBAData(Contract.DEV, filled) + describe(filled);
            }),
        new Subject("state query, 3 fields", ANY_CALLS,
            peer -> () -> peer.getiSCSIHBAState(Contract.DEV, hba),
            peer -> {
                HBA filled = new HBA();
                return peer.getiSCSIHBAState(Contract.DEV, filled) + describe(filled);
            }),
        new Subject("32 counters", ANY_CALLS,
            peer -> () -> peer.getiSCSIStatistics(Contract.DEV, statistics),
            peer -> {
                PortStatistics filled = new PortStatistics();
                return peer.getiSCSIStatistics(Contract.DEV, filled) + describe(filled);
            }),
        new Subject("log of 128 entries", ANY_CALLS,
            peer -> () -> peer.getConnectErrorLog(Contract.DEV, hba),
            peer -> {
                HBA filled = new HBA();
                return peer.getConnectErrorLog(Contract.DEV, filled) + describe(filled);
            }),
        new Subject("write of 511 entries", FEW_CALLS,
            peer -> () -> peer.setDDBsData(Contract.DEV, entries),
            peer -> {
                Fixture.takeWritten();
                return peer.setDDBsData(Contract.DEV, entries) + Arrays.toString(Fixture.takeWritten());
            }));

    private Ratios() {}

    public static void main(String[] arguments) {
        int pairs = Integer.parseInt(arguments[0]);
        String[] names = Arrays.copyOfRange(arguments, 1, arguments.length);
        System.load(new java.io.File("libbench_fixture.so").getAbsolutePath());
        new Ratios().run(pairs, Peers.open(names));
    }

    private void run(int pairs, Map<String, Contract> peers) {
        Contract bridge = peers.get("bridge");
        HBA source = new HBA();
        bridge.getiSCSIHBAData(Contract.DEV, source);
        entries = source.getDeviceDataBaseEntries().subList(0, Records.MOST_WRITTEN).toArray(new DevDBEntry[0]);
        for (Subject subject : subjects) {
            String expected = subject.outcome.apply(bridge);
            peers.forEach((name, peer) -> {
                if (!subject.outcome.apply(peer).equals(expected)) {
                    throw new IllegalStateException(name + ": other values than the bridge's in the " + subject.name);
                }
            });
        }
        Pairs timing = new Pairs(pairs, hba::clearDeviceDataBaseEntries);
        for (Subject subject : subjects) {
            IntSupplier a = subject.operation.apply(bridge);
            peers.forEach((name, peer) -> {
                if (peer != bridge) {
                    timing.ratio(a, subject.operation.apply(peer), subject.mostCalls)
                        .print(name.equals("twin") ? "control" : "ratio", subject.name, name, mark(name, subject));
                }
            });
        }
    }

    private static String mark(String peer, Subject subject) {
        boolean snapshot = subject.name.startsWith("snapshot");
        switch (peer) {
            case "twin":
                return "control";
            case "straight":
                return "<=1.05";
            case "jna-structure":
                return snapshot ? "<1" : "";
            default:
                return "";
        }
    }

    // Everything that an object's getters give, by name.
    private static String describe(Object object) {
        if (object == null || object instanceof Number || object instanceof String || object instanceof Boolean) {
            return String.valueOf(object);
        }
        StringBuilder text = new StringBuilder("{");
        if (object.getClass().isArray()) {
            for (int i = 0; i < Array.getLength(object); i++) {
                text.append(Array.get(object, i)).append(',');
            }
        } else if (object instanceof List) {
            ((List<?>) object).forEach(element -> text.append(describe(element)).append(','));
        } else {
            Method[] methods = object.getClass().getMethods();
            Arrays.sort(methods, Comparator.comparing(Method::getName));
            for (Method method : methods) {
                if (method.getName().startsWith("get") && method.getParameterCount() == 0
                    && !Arrays.asList(LAST_WORDS).contains(method.getName())) {
                    try {
                        text.append(method.getName()).append('=').append(describe(method.invoke(object))).append(';');
                    } catch (IllegalAccessException | InvocationTargetException e) {
                        throw new IllegalStateException(e);
                    }
                }
            }
        }
        return text.append('}').toString();
    }
}
