package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.Lun;
import com.varden.tavo.iscsi.model.Target;
import java.io.IOException;
import picocli.CommandLine.Model.PositionalParamSpec;

/** Discovered targets, and their logical units one by one. */
final class TargetDatabase {
    private static final RecordTable TARGET = new RecordTable(
        new NumberField("instance", 32, "Instance"),
        new TextField("hostName", 128, "Host name"),
        new AddressField("IPAddress", "IP address"),
        new NumberField("TCPPortNumber", 16, "TCP port"),
        new NumberField("nodeCount", 16, "Nodes"),
        new NumberField("sessionID", 16, "Session ID"),
        new NumberField("connectionID", 16, "Connection ID"),
        new NumberField("portalGroup", 16, "Portal group"),
        new RecordField("targetInfo", ScsiPassThrough.ADDRESS, "Address"),
        new RecordField("nodeInfo", NodeInfo.TABLE, "Node"));

    private static final RecordTable LUN = new RecordTable(
        new RecordField("targetInfo", ScsiPassThrough.ADDRESS, "Address"),
        new RecordField("SCSIInqInfo", ScsiPassThrough.INQUIRY, "Identity"),
        ScsiPassThrough.LAST_BLOCK, ScsiPassThrough.BLOCK_LENGTH, ScsiPassThrough.CAPACITY,
        ScsiPassThrough.CAPACITY_MINIMUM);

    private TargetDatabase() {}

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
