package com.varden.tavo.iscsi.bench;

import com.varden.tavo.iscsi.jni.ApiWrapper;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.IPAddr;
import com.varden.tavo.iscsi.model.Target;
import java.nio.file.Path;

/**
 * What the host adapter costs with a target daemon on the loopback interface: {@code RealTarget PAIRS PEER PORT NAME
 * TARGETS}, with the file of libiscsi's native methods, the daemon's port, the name of the target that is asked, and
 * how many targets there are. The VM stands in the adapter's folder; the device database is empty.
 */
final class RealTarget {
    private static final String SECTION = "9 What does a real target cost? On the loopback interface";
    private static final String ADDRESS = "127.0.0.1";
    private static final int CONFIGURED = 1;
    private static final int ASKED = 0;

    private final ApiWrapper api = new ApiWrapper();
    private final int port;

    private RealTarget(int port) {
        this.port = port;
    }

    public static void main(String[] arguments) {
        RealTarget target = new RealTarget(Integer.parseInt(arguments[2]));
        System.load(Path.of(arguments[1]).toString());
        Measured.require(target.api.openDevice(Peer.DEV), "the adapter cannot be opened");
        Measured.require(target.api.getiSCSIEntryNum(Peer.DEV) == 0, "the device database is not empty");
        target.write(ASKED, arguments[3]);
        Measured.require(loginAlone(ADDRESS + ":" + target.port, arguments[3]), "libiscsi cannot log in");
        double[] ratios = Pairs.ratios(Integer.parseInt(arguments[0]),
            () -> Pairs.time(System::nanoTime, target::reportLUNs),
            () -> Pairs.time(System::nanoTime, RealTarget::reportLUNsAlone));
        Measured.print(SECTION, "REPORT LUNS / libiscsi alone", "0..1.5", ratios);

        // One of them is known already.
        int targets = Integer.parseInt(arguments[4]);
        long start = System.nanoTime();
        target.write(ASKED + 1, "");
        double seconds = (System.nanoTime() - start) / 1e9;
        int found = target.api.getiSCSIEntryNum(Peer.DEV);
        Measured.require(found == targets, "discovery found " + found + " of " + targets + " targets");
        Measured.print(SECTION, "discovery of " + targets + " targets, seconds", "0..1", seconds);
        Measured.require(target.api.closeDevice(Peer.DEV), "the adapter cannot be closed");
    }

    // Logs libiscsi alone in to a target, once.
    private static native boolean loginAlone(String portal, String target);

    // Has libiscsi alone send what the bridge sends for one call; 0 when every answer came.
    private static native int reportLUNsAlone();

    // Without a name this is the discovery of what the portal offers.
    private void write(int id, String name) {
        DevDBEntry entry = new DevDBEntry();
        Measured.require(api.getInitialDDBEntry(Peer.DEV, entry, id) == 0, "there is no initial entry");
        entry.setTargetID(id);
        entry.setState(CONFIGURED);
        entry.getNodeInfo().setiSCSIName(name);
        entry.getNodeInfo().setIPAddress(IPAddr.parse(ADDRESS));
        entry.getDeviceEntry().setPortNumber(port);
        Measured.require(api.setDDBData(Peer.DEV, entry, id) == 0, "entry " + id + " cannot be written");
    }

    private int reportLUNs() {
        Target target = new Target();
        target.getTargetInfo().setTargetID(ASKED);
        return api.getScsiReportLUNsData(Peer.DEV, new HBA(), target);
    }
}
