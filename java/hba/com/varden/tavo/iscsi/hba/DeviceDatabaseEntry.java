package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import java.io.IOException;
import java.util.List;
import picocli.CommandLine.Model.PositionalParamSpec;

/** The configured targets, that is the entries of the device database. */
final class DeviceDatabaseEntry {
    /** Slots run from 0 to this. */
    static final int LAST_SLOT = 511;
    static final Field TARGET_ID = Field.number("targetID", 32, "Target ID").max(LAST_SLOT);

    static final RecordTable TABLE = new RecordTable(
        Field.number("index", 32, "Position in the list").readOnly(),
        TARGET_ID,
        Field.number("state", 32, "State"),
        Field.bits("options", 8, "Options"),
        Field.bits("control", 8, "Control"),
        Field.number("exeCount", 16, "Execution count"),
        Field.number("targetSessionID", 16, "Target session ID"),
        Field.bytes("initiatorSessionID", DevDBEntry.SESSION_ID_LENGTH, "Initiator session ID"),
        Field.bits("reservedFlags", 32, "Reserved flags"),
        Field.number("DDBLink", 16, "Link"),
        Field.number("chapIndex", 16, "CHAP entry"),
        Field.number("maxTxDataSegmentLen", 16, "Max. send segment"),
        Field.number("targetPortalGroupID", 16, "Target portal group"),
        Field.record("nodeInfo", NodeInfo.TABLE, "Node"),
        Field.record("deviceEntry", DeviceParameters.TABLE, "Session parameters"));

    private DeviceDatabaseEntry() {}

    static Command command(String name) {
        switch (name) {
            case "target list":
                return new ListAll();
            case "target show":
                return new Show();
            case "target default":
                return new Default();
            default:
                return new Initial();
        }
    }

    /** All entries in use. */
    static List<DevDBEntry> readAll(Adapter adapter) {
        HBA hba = new HBA();
        adapter.check("reading the targets", adapter.api.getiSCSIHBAData(adapter.dev, hba));
        return hba.getDeviceDataBaseEntries();
    }

    /** The entry of this target ID, or null. */
    static DevDBEntry find(List<DevDBEntry> entries, int targetID) {
        for (DevDBEntry entry : entries) {
            if (entry.getTargetID() == targetID) {
                return entry;
            }
        }
        return null;
    }

    static DevDBEntry readDefault(Adapter adapter) {
        DevDBEntry entry = adapter.api.getDefaultDDBEntry(adapter.dev);
        adapter.check("reading the default entry", entry != null);
        return entry;
    }

    /** The contents proposed for a new entry. The target ID is set, the state is left at 0. */
    static DevDBEntry readInitial(Adapter adapter, int targetID) {
        DevDBEntry entry = new DevDBEntry();
        adapter.check("reading the contents for a new target",
            adapter.api.getInitialDDBEntry(adapter.dev, entry, targetID));
        entry.setTargetID(targetID);
        return entry;
    }

    /** hba target list. */
    static final class ListAll extends DeviceCommand {
        ListAll() {
            super("Lists the entries of the device database that are in use.");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            List<DevDBEntry> entries = readAll(adapter);
            TextOutput.Columns columns =
                new TextOutput.Columns("Target", "State", "iSCSI name", "IP address", "Port");
            for (DevDBEntry entry : entries) {
                columns.row(entry.getTargetID(), entry.getState(), entry.getNodeInfo().getiSCSIName(),
                    entry.getNodeInfo().getIPAddress(), entry.getDeviceEntry().getPortNumber());
            }
            showList(TABLE, entries, columns, "No target is configured.");
            int count = adapter.api.getiSCSIEntryNum(adapter.dev);
            if (count != entries.size()) {
                Terminal.message("the adapter says that it has " + Integer.toUnsignedString(count) + " targets");
            }
            return DONE;
        }
    }

    /** hba target show. */
    static final class Show extends DeviceCommand {
        private final PositionalParamSpec target = parameter("TARGET", TARGET_ID, "Target ID, 0 to 511.");

        Show() {
            super("Shows all fields of one entry of the device database.");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            DevDBEntry entry = find(readAll(adapter), number(target));
            if (entry == null) {
                throw new OperationFailed("adapter " + adapter.dev + " has no target " + number(target));
            }
            show(TABLE, entry);
            return DONE;
        }
    }

    /** hba target default. */
    static final class Default extends DeviceCommand {
        Default() {
            super("Shows the entry that the adapter uses where nothing else is said.");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            show(TABLE, readDefault(adapter));
            return DONE;
        }
    }

    /** hba target initial. */
    static final class Initial extends DeviceCommand {
        private final PositionalParamSpec index = parameter("INDEX", TARGET_ID, "Index of the new entry, 0 to 511.");

        Initial() {
            super("Shows what the adapter proposes for a new entry.");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            show(TABLE, readInitial(adapter, number(index)));
            return DONE;
        }
    }
}
