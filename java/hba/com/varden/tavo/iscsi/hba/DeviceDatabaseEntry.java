package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonArray;
import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import java.util.ArrayList;
import java.util.HashSet;
import java.util.List;
import java.util.Set;

/** The configured targets, that is the entries of the device database. */
final class DeviceDatabaseEntry {
    /** Slots run from 0 to this. */
    static final int LAST_SLOT = 511;
    /** Entries written by one call, so that progress can be shown in between. */
    private static final int BATCH = 32;
    static final NumberField TARGET_ID = new NumberField("targetID", 32, "Target ID").max(LAST_SLOT);

    static final RecordTable TABLE = new RecordTable(
        new NumberField("index", 32, "Position in the list").readOnly(),
        TARGET_ID,
        new NumberField("state", 32, "State"),
        new BitsField("options", 8, "Options"),
        new BitsField("control", 8, "Control"),
        new NumberField("exeCount", 16, "Execution count"),
        new NumberField("targetSessionID", 16, "Target session ID"),
        new BytesField("initiatorSessionID", DevDBEntry.SESSION_ID_LENGTH, "Initiator session ID"),
        new BitsField("reservedFlags", 32, "Reserved flags"),
        new NumberField("DDBLink", 16, "Link"),
        new NumberField("chapIndex", 16, "CHAP entry"),
        new NumberField("maxTxDataSegmentLen", 16, "Max. send segment"),
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

    /**
     * Entries as a document describes them, on the ground of what the adapter has: fields that are not named keep their
     * value; a target that is new starts with what the adapter proposes, and with the state of the default entry.
     */
    static List<DevDBEntry> read(Adapter adapter, JsonArray document, String place) {
        List<DevDBEntry> present = readAll(adapter);
        List<DevDBEntry> entries = new ArrayList<>();
        for (int i = 0; i < document.size(); i++) {
            String entryPlace = place + "[" + i + "]";
            JsonObject object = JsonDocument.object(document.get(i), entryPlace);
            DevDBEntry entry = base(adapter, present, targetID(object, entryPlace));
            TABLE.read(object, entry, entryPlace);
            entries.add(entry);
        }
        return entries;
    }

    /** Checks a document without the adapter. */
    static void validate(JsonArray document, String place) {
        Set<Integer> seen = new HashSet<>();
        for (int i = 0; i < document.size(); i++) {
            String entryPlace = place + "[" + i + "]";
            JsonObject object = JsonDocument.object(document.get(i), entryPlace);
            int targetID = targetID(object, entryPlace);
            if (!seen.add(targetID)) {
                throw new BadInput(entryPlace + ".targetID: target " + targetID + " is there twice");
            }
            TABLE.read(object, new DevDBEntry(), entryPlace);
        }
    }

    private static int targetID(JsonObject object, String place) {
        JsonElement member = object.get("targetID");
        if (member == null) {
            throw new BadInput(place + ": targetID is missing");
        }
        JsonObject alone = new JsonObject();
        alone.add("targetID", member);
        DevDBEntry entry = new DevDBEntry();
        TABLE.read(alone, entry, place);
        return entry.getTargetID();
    }

    /** What the adapter has for this target, or what a new one starts with. */
    static DevDBEntry base(Adapter adapter, List<DevDBEntry> present, int targetID) {
        DevDBEntry entry = find(present, targetID);
        if (entry == null) {
            entry = readInitial(adapter, targetID);
            entry.setState(readDefault(adapter).getState());
        }
        return entry;
    }

    /** Writes the entries in order. Whether each was taken only reading them back can tell. */
    static void write(Adapter adapter, List<DevDBEntry> entries) {
        for (int done = 0; done < entries.size();) {
            int end = Math.min(done + BATCH, entries.size());
            DevDBEntry[] batch = entries.subList(done, end).toArray(new DevDBEntry[0]);
            adapter.check("writing the targets", adapter.api.setDDBsData(adapter.dev, batch));
            done = end;
            Terminal.progress("targets written", done, entries.size());
        }
    }

    /** Adds a line for each field in which the adapter's entries differ from those that were written. */
    static void compare(Adapter adapter, List<DevDBEntry> wanted, String place, Differences differences) {
        List<DevDBEntry> found = readAll(adapter);
        for (DevDBEntry entry : wanted) {
            String entryPlace = place + "[targetID " + entry.getTargetID() + "]";
            DevDBEntry there = find(found, entry.getTargetID());
            if (there != null) {
                TABLE.compare(entry, there, entryPlace, differences);
            } else if (entry.getState() != 0) {
                differences.add(entryPlace + ": not on the adapter");
            }
        }
    }
}
