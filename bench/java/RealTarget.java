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
    private static final int DEV = 0;
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
        require(target.api.openDevice(DEV), "the adapter cannot be opened");
        require(target.entries() == 0, "the device database is not empty");
        target.write(ASKED, arguments[3]);
        require(Libiscsi.login(ADDRESS + ":" + target.port, arguments[3]), "libiscsi cannot log in");
        double[] ratios = Pairs.ratios(Integer.parseInt(arguments[0]),
            () -> Pairs.time(System::nanoTime, target::reportLUNs),
            () -> Pairs.time(System::nanoTime, Libiscsi::reportLUNs));
        Figures.print(SECTION, "REPORT LUNS / libiscsi alone", "0..1.5", ratios);

        // One of them is known already.
        int targets = Integer.parseInt(arguments[4]);
        long start = System.nanoTime();
        target.write(ASKED + 1, "");
        double seconds = (System.nanoTime() - start) / 1e9;
        require(target.entries() == targets, "discovery found " + target.entries() + " of " + targets + " targets");
        Figures.print(SECTION, "discovery of " + targets + " targets, seconds", "0..1", seconds);
        require(target.api.closeDevice(DEV), "the adapter cannot be closed");
    }

    private static void require(boolean condition, String otherwise) {
        if (!condition) {
            throw new IllegalStateException(otherwise);
        }
    }

    private int entries() {
        return api.getiSCSIEntryNum(DEV);
    }

    // Without a name this is the discovery of what the portal offers.
    private void write(int id, String name) {
        DevDBEntry entry = new DevDBEntry();
        require(api.getInitialDDBEntry(DEV, entry, id) == 0, "there is no initial entry");
        entry.setTargetID(id);
        entry.setState(CONFIGURED);
        entry.getNodeInfo().setiSCSIName(name);
        entry.getNodeInfo().setIPAddress(IPAddr.parse(ADDRESS));
        entry.getDeviceEntry().setPortNumber(port);
        require(api.setDDBData(DEV, entry, id) == 0, "entry " + id + " cannot be written");
    }

    private int reportLUNs() {
        Target target = new Target();
        target.getTargetInfo().setTargetID(ASKED);
        return api.getScsiReportLUNsData(DEV, new HBA(), target);
    }
}
