package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.Lun;
import com.varden.tavo.iscsi.model.Target;
import java.io.IOException;
import picocli.CommandLine.Model.PositionalParamSpec;

/** Discovered targets, and their logical units one by one. */
final class TargetDatabase {
    static final RecordTable ADDRESS = new RecordTable(
        Field.number("bus", 16, "Bus"),
        Field.number("targetID", 16, "Target"),
        Field.number("LUN", 16, "LUN"));

    private static final RecordTable TARGET = new RecordTable(
        Field.number("instance", 32, "Instance"),
        Field.text("hostName", 128, "Host name"),
        Field.address("IPAddress", "IP address"),
        Field.number("TCPPortNumber", 16, "TCP port"),
        Field.number("nodeCount", 16, "Nodes"),
        Field.number("sessionID", 16, "Session ID"),
        Field.number("connectionID", 16, "Connection ID"),
        Field.number("portalGroup", 16, "Portal group"),
        Field.record("targetInfo", ADDRESS, "Address"),
        Field.record("nodeInfo", NodeInfo.TABLE, "Node"));

    private static final RecordTable LUN = new RecordTable(
        Field.record("targetInfo", ADDRESS, "Address"),
        Field.record("SCSIInqInfo", ScsiPassThrough.INQUIRY, "Identity"),
        ScsiPassThrough.LAST_BLOCK, ScsiPassThrough.BLOCK_LENGTH, ScsiPassThrough.CAPACITY,
        ScsiPassThrough.CAPACITY_MINIMUM);

    private TargetDatabase() {}

    static Command command(String name) {
        switch (name) {
            case "target portal":
                return new Portal();
            default:
                return new LunShow();
        }
    }

    /** hba target portal. */
    static final class Portal extends DeviceCommand {
        private final PositionalParamSpec target =
            parameter("TARGET", DeviceDatabaseEntry.TARGET_ID, "Target ID, 0 to 511.");

        Portal() {
            super("Shows the portal at which a target was discovered, its node, and its session.");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            HBA hba = new HBA();
            adapter.check("reading the targets", adapter.api.getiSCSIHBAData(adapter.dev, hba));
            Target found = new Target();
            found.getTargetInfo().setTargetID(number(target));
            DevDBEntry entry = DeviceDatabaseEntry.find(hba.getDeviceDataBaseEntries(), number(target));
            if (entry != null) {
                found.setInstance(hba.getDeviceDataBaseEntries().indexOf(entry));
            } else {
                // With no entries held the instance number is the target itself.
                hba.clearDeviceDataBaseEntries();
                found.setInstance(number(target));
            }
            adapter.check("reading where target " + number(target) + " was discovered",
                adapter.api.getiSCSITargetData(adapter.dev, hba, found));
            show(TARGET, found);
            return DONE;
        }
    }

    /** hba lun show. */
    static final class LunShow extends DeviceCommand {
        private final ScsiPassThrough.Unit unit = new ScsiPassThrough.Unit(this);

        LunShow() {
            super("Sends INQUIRY and READ CAPACITY to a logical unit.");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            Lun lun = new Lun();
            unit.fill(lun.getTargetInfo());
            adapter.check("asking " + unit.name(), adapter.api.getiSCSILunData(adapter.dev, lun));
            show(LUN, lun);
            return DONE;
        }
    }
}
