package com.varden.tavo.iscsi.hba;

import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.jni.ApiWrapper;
import com.varden.tavo.iscsi.jni.BridgeNotLoadedException;
import com.varden.tavo.iscsi.model.DevDBEntry;
import java.io.IOException;
import java.net.InetAddress;
import java.net.InetSocketAddress;
import java.net.Socket;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.PosixFilePermissions;
import java.util.ArrayList;
import java.util.LinkedHashSet;
import java.util.List;
import java.util.Locale;
import java.util.Set;

/** hba doctor: checks one thing after the other, from the Java VM to the portals of the targets. */
final class Doctor extends Command {
    /** How the version texts of the project's own libraries begin. */
    private static final String SOFTWARE = "Tavo software";
    private static final String HOST = "Tavo host";
    private static final int CONNECT_MILLIS = 2000;
    private static final int MOST_PORTALS = 16;
    private static final Path PING_GROUPS = Path.of("/proc/sys/net/ipv4/ping_group_range");
    private static final Path OWN_STATUS = Path.of("/proc/self/status");
    private static final int CAP_NET_RAW = 13;

    private enum Result { OK, WARNING, FAILED, SKIPPED }

    /**
     * What was found.
     *
     * @param advice what it means and what to do; empty when nothing is to be done
     */
    private record Finding(String check, Result result, String detail, String advice) {}

    private record Portal(String address, int port) {}

    private final List<Finding> findings = new ArrayList<>();

    Doctor() {
        super("Checks the Java VM, the bridge, the management library, the adapters, the stored settings, and for the "
            + "host adapter ping and the portals of the configured targets. Says of each what was found, and what to "
            + "do where something is wrong. Changes nothing.");
    }

    @Override
    public Integer call() throws IOException {
        note("Java VM", Result.OK, System.getProperty("java.version") + ", " + System.getProperty("sun.arch.data.model")
            + "-bit, " + System.getProperty("java.home"), "");
        ApiWrapper api = checkBridge();
        if (api != null) {
            String version = api.getVersioniSCSI();
            note("management library", Result.OK, version + ", " + Path.of("").toRealPath(), "");
            checkSettings(version);
            List<DevDBEntry> targets = checkAdapters();
            if (version.startsWith(HOST)) {
                checkPing();
                checkPortals(targets);
            } else if (version.startsWith(SOFTWARE)) {
                note("ping", Result.SKIPPED, "the storage network of the software adapter is imagined", "");
                note("iSCSI port", Result.SKIPPED, "the storage network of the software adapter is imagined", "");
            }
        }
        report();
        return findings.stream().anyMatch(finding -> finding.result == Result.FAILED) ? FAILED : DONE;
    }

    private void note(String check, Result result, String detail, String advice) {
        findings.add(new Finding(check, result, detail, advice));
    }

    private ApiWrapper checkBridge() {
        String bridge = String.valueOf(System.getProperty("tavo.iscsi.library"));
        try {
            ApiWrapper api = Adapter.api();
            note("bridge", Result.OK, bridge, "");
            return api;
        } catch (BridgeNotLoadedException e) {
            note("bridge", Result.FAILED, bridge, e.getMessage());
        } catch (UnsatisfiedLinkError e) {
            note("bridge", Result.FAILED, bridge, "It is of another version than this tool: " + e.getMessage());
        }
        return null;
    }

    private void checkSettings(String version) throws IOException {
        if (!version.startsWith(SOFTWARE) && !version.startsWith(HOST)) {
            note("stored settings", Result.SKIPPED, "a library of another maker keeps them in its own way", "");
            return;
        }
        Path folder = SettingsFolder.find();
        if (folder == null) {
            note("stored settings", Result.FAILED, SettingsFolder.VARIABLE + " is "
                + System.getenv(SettingsFolder.VARIABLE), "It has to name a folder that exists, by its absolute path.");
        } else if (!Files.exists(folder)) {
            note("stored settings", Result.OK, folder + ", made by the first write", "");
        } else if (!Files.isReadable(folder) || !Files.isExecutable(folder)) {
            note("stored settings", Result.FAILED, folder + " cannot be read by this user",
                "The settings belong to another user. Run the tool as that user, or name a folder of your own with "
                    + SettingsFolder.VARIABLE + ". Do not open the folder to others: it holds CHAP secrets.");
        } else if (!Files.isWritable(folder)) {
            note("stored settings", Result.WARNING, folder + " cannot be written by this user",
                "Adapters can be looked at, not changed.");
        } else {
            Set<String> open = othersMayRead(folder);
            note("stored settings", open.isEmpty() ? Result.OK : Result.WARNING, folder.toString(), open.isEmpty() ? ""
                : "Others may read " + String.join(", ", open) + ", which may hold CHAP secrets: chmod 600.");
        }
    }

    private static Set<String> othersMayRead(Path folder) throws IOException {
        Set<String> open = new LinkedHashSet<>();
        try (var files = Files.newDirectoryStream(folder, "settings*")) {
            for (Path file : files) {
                String mode = PosixFilePermissions.toString(Files.getPosixFilePermissions(file));
                if (!mode.endsWith("------")) {
                    open.add(file.getFileName().toString());
                }
            }
        }
        return open;
    }

    /** The target entries of all adapters. */
    private List<DevDBEntry> checkAdapters() {
        List<DevDBEntry> targets = new ArrayList<>();
        List<Integer> opened = new ArrayList<>();
        for (int dev = 0; dev <= Adapter.LAST_INDEX; dev++) {
            try (Adapter adapter = Adapter.tryOpen(dev)) {
                if (adapter != null) {
                    opened.add(dev);
                    targets.addAll(DeviceDatabaseEntry.readAll(adapter));
                }
            } catch (OperationFailed e) {
                note("adapter " + dev, Result.FAILED, "its settings cannot be read", e.getMessage());
            }
        }
        if (opened.isEmpty()) {
            note("adapters", Result.FAILED, "none can be opened", "The management library finds no adapter. The host "
                + "adapter has one for each network interface with an address, the loopback interface left out; "
                + "TAVO_ADAPTER_INTERFACES names others.");
        } else {
            note("adapters", Result.OK, DeviceDatabaseEntry.ranges(opened) + ", " + targets.size() + " targets", "");
        }
        return targets;
    }

    // A raw socket needs a capability; without it the kernel lets the groups of a range use sockets for echo alone.
    private void checkPing() throws IOException {
        long capabilities = 0;
        long group = -1;
        for (String line : Files.readAllLines(OWN_STATUS)) {
            String[] words = line.split("\\s+");
            if (words[0].equals("CapEff:")) {
                capabilities = Long.parseUnsignedLong(words[1], 16);
            } else if (words[0].equals("Gid:")) {
                group = Long.parseLong(words[2]);
            }
        }
        String[] range = Files.readString(PING_GROUPS).trim().split("\\s+");
        boolean member = group >= Long.parseLong(range[0]) && group <= Long.parseLong(range[1]);
        if (member || (capabilities >> CAP_NET_RAW & 1) != 0) {
            note("ping", Result.OK, "allowed", "");
        } else {
            note("ping", Result.WARNING, "not allowed for this user", "'hba ping' answers that it is not supported. "
                + "Root allows it with: sysctl -w net.ipv4.ping_group_range='" + group + " " + group + "'");
        }
    }

    private void checkPortals(List<DevDBEntry> targets) {
        Set<Portal> portals = new LinkedHashSet<>();
        for (DevDBEntry target : targets) {
            if (!target.getNodeInfo().getIPAddress().isUnspecified()) {
                portals.add(new Portal(target.getNodeInfo().getIPAddress().toString(),
                    target.getDeviceEntry().getPortNumber() & 0xFFFF));
            }
        }
        if (portals.isEmpty()) {
            note("iSCSI port", Result.SKIPPED, "no target is configured", "'hba discover' adds what a portal offers.");
        }
        portals.stream().limit(MOST_PORTALS).forEach(this::checkPortal);
        if (portals.size() > MOST_PORTALS) {
            note("iSCSI port", Result.SKIPPED, portals.size() - MOST_PORTALS + " more portals", "");
        }
    }

    private void checkPortal(Portal portal) {
        String place = portal.address + ", port " + portal.port;
        try (Socket socket = new Socket()) {
            // An address, never a name: nothing is looked up.
            socket.connect(new InetSocketAddress(InetAddress.getByName(portal.address), portal.port), CONNECT_MILLIS);
            note("iSCSI port", Result.OK, place + " accepts connections", "");
        } catch (IOException e) {
            note("iSCSI port", Result.FAILED, place + ": " + e.getMessage(), "Nothing listens there, or a firewall is "
                + "in the way. Check address and port of the target entry, and that the target is running.");
        }
    }

    private void report() throws IOException {
        if (wantsJson()) {
            JsonWriter json = jsonWriter();
            json.beginArray();
            for (Finding finding : findings) {
                json.beginObject().name("check").value(finding.check);
                json.name("result").value(finding.result.name().toLowerCase(Locale.ROOT));
                json.name("detail").value(finding.detail).name("advice").value(finding.advice).endObject();
            }
            json.endArray();
            finish(json);
            return;
        }
        for (Finding finding : findings) {
            String result = switch (finding.result) {
                case OK -> "ok      ";
                case WARNING -> "warning ";
                case FAILED -> Terminal.highlighted("FAILED") + "  ";
                case SKIPPED -> "-       ";
            };
            System.out.println(
                result + String.format(" %-20s", finding.check) + TerminalText.of(finding.detail));
            if (!finding.advice.isEmpty()) {
                System.out.println("         " + TerminalText.of(finding.advice));
            }
        }
    }
}
