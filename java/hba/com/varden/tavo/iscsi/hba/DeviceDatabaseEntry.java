package com.varden.tavo.iscsi.hba;

import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.IPAddr;
import java.io.IOException;
import java.util.HashSet;
import java.util.List;
import java.util.Set;
import java.util.StringJoiner;

/** The configured targets, that is the entries of the device database. */
final class DeviceDatabaseEntry {
    /** Slots run from 0 to this. */
    static final int LAST_SLOT = 511;
    static final NumberField TARGET_ID = new NumberField("targetID", 32, "Target ID").max(LAST_SLOT).heading("Target");
    /** The session's own once there is one: whatever was written, a login sets it anew. */
    private static final NumberField SESSION_HANDLE = new NumberField("targetSessionID", 16, "Target session ID") {
        @Override
        boolean isSame(Long wanted, Long found) {
            return true;
        }
    };
    static final BytesField SESSION_ID =
        new BytesField("initiatorSessionID", DevDBEntry.SESSION_ID_LENGTH, "Initiator session ID");
    static final NumberField CHAP_INDEX = new NumberField("chapIndex", 16, "CHAP entry");

    static final RecordTable TABLE = new RecordTable(
        new NumberField("index", 32, "Position in the list").readOnly(),
        TARGET_ID,
        new StateField(),
        new BitsField("options", 8, "Options"),
        new BitsField("control", 8, "Control"),
        new NumberField("exeCount", 16, "Execution count"),
        SESSION_HANDLE,
        SESSION_ID,
        new BitsField("reservedFlags", 32, "Reserved flags"),
        new NumberField("DDBLink", 16, "Link"),
        CHAP_INDEX,
        new SizeField("maxTxDataSegmentLen", "Max. send segment"),
        new NumberField("targetPortalGroupID", 16, "Target portal group"),
        new RecordField("nodeInfo", NodeInfo.TABLE, "Node"),
        new RecordField("deviceEntry", DeviceParameters.TABLE, "Session parameters"));

    private DeviceDatabaseEntry() {}

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

    /** The entry of this target ID; ends the command when there is none. */
    static DevDBEntry read(Adapter adapter, int targetID) {
        return require(adapter, readAll(adapter), targetID);
    }

    static DevDBEntry require(Adapter adapter, List<DevDBEntry> entries, int targetID) {
        DevDBEntry entry = find(entries, targetID);
        if (entry == null) {
            throw new OperationFailed("adapter " + adapter.dev + " has no target " + targetID + ". 'hba target list "
                + adapter.dev + "' lists those that it has.");
        }
        return entry;
    }

    /** The first slot without an entry, or -1. */
    static int firstFree(List<DevDBEntry> entries) {
        for (int slot = 0; slot <= LAST_SLOT; slot++) {
            if (find(entries, slot) == null) {
                return slot;
            }
        }
        return -1;
    }

    /** Has the entry lead to the target of this name at this portal. */
    static void lead(DevDBEntry entry, String name, IPAddr address, int port) {
        NodeInfo.NAME.set(entry.getNodeInfo(), name);
        NodeInfo.ADDRESS.set(entry.getNodeInfo(), address);
        entry.getDeviceEntry().setPortNumber(port);
        // The same address as text, where it fits: the longest of IPv6 do not.
        DeviceParameters.TARGET_ADDRESS.set(entry.getDeviceEntry(),
            DeviceParameters.TARGET_ADDRESS.fits(address.toString()) ? address.toString() : "");
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

    /** A copy of what can be written. */
    static DevDBEntry copy(DevDBEntry entry) {
        DevDBEntry copy = new DevDBEntry();
        TABLE.copy(entry, copy);
        return copy;
    }

    /** Writes the entries so that they can be read again. */
    static void writeBack(JsonWriter json, List<DevDBEntry> entries, String place, List<String> leftOut)
        throws IOException {
        Set<Integer> seen = new HashSet<>();
        json.beginArray();
        for (DevDBEntry entry : entries) {
            String entryPlace = place + "[targetID " + entry.getTargetIDUnsigned() + "]";
            if (entry.getTargetIDUnsigned() > LAST_SLOT || !seen.add(entry.getTargetID())) {
                leftOut.add(entryPlace + ": " + entry.getNodeInfo().getiSCSIName()
                    + " cannot be written back (another target has this ID, or it is not " + TARGET_ID.range() + ")");
            } else {
                TABLE.writeBack(json, entry, entryPlace, leftOut);
            }
        }
        json.endArray();
    }

    /** "target 5 (iqn...)". */
    static String describe(DevDBEntry entry) {
        return "target " + entry.getTargetID() + " (" + NodeInfo.NAME.show(entry.getNodeInfo()) + ")";
    }

    /** Target IDs in words: "1, 5 to 9, 12". */
    static String ranges(List<Integer> targets) {
        StringJoiner ranges = new StringJoiner(", ");
        for (int from = 0, to; from < targets.size(); from = to) {
            to = from + 1;
            while (to < targets.size() && targets.get(to) == targets.get(to - 1) + 1) {
                to++;
            }
            ranges.add(targets.get(from) + (to - from > 1 ? " to " + targets.get(to - 1) : ""));
        }
        return ranges.toString();
    }
}
