package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonArray;
import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import com.varden.tavo.iscsi.codes.Status;
import com.varden.tavo.iscsi.codes.TargetState;
import com.varden.tavo.iscsi.model.DevDBEntry;
import java.util.ArrayList;
import java.util.HashSet;
import java.util.List;
import java.util.Set;

/** Target entries that are to be written, beside those that the adapter has. */
final class DeviceDatabaseChanges {
    /** Entries written by one call, so that progress can be shown and a signal be heeded in between. */
    private static final int BATCH = 32;

    private static final RecordField NAME_AND_ADDRESS =
        new RecordField("nodeInfo", new RecordTable(NodeInfo.NAME, NodeInfo.ADDRESS), "Node");
    private static final RecordTable TARGET_AND_PORTAL = new RecordTable(NAME_AND_ADDRESS,
        new RecordField("deviceEntry", new RecordTable(DeviceParameters.PORT), ""));
    /** What leads to a target; a session does not outlive a change of it. */
    private static final RecordTable WAY_TO_TARGET = new RecordTable(
        DeviceDatabaseEntry.SESSION_ID,
        DeviceDatabaseEntry.CHAP_INDEX,
        NAME_AND_ADDRESS,
        new RecordField("deviceEntry", new RecordTable(DeviceParameters.TARGET_ADDRESS, DeviceParameters.PORT), ""));

    private final List<DevDBEntry> present;
    private final List<DevDBEntry> wanted = new ArrayList<>();
    private final List<String> places = new ArrayList<>();

    DeviceDatabaseChanges(Adapter adapter) {
        present = DeviceDatabaseEntry.readAll(adapter);
    }

    /**
     * Entries as a document describes them, on the ground of what the adapter has: fields that are not named keep their
     * value; a target that is new starts with what the adapter proposes, and with the state of the default entry.
     */
    DeviceDatabaseChanges(Adapter adapter, JsonArray document, String place) {
        this(adapter);
        for (int i = 0; i < document.size(); i++) {
            String entryPlace = place + "[" + i + "]";
            JsonObject object = JsonDocument.object(document.get(i), entryPlace);
            DeviceDatabaseEntry.TABLE.read(object, add(adapter, targetID(object, entryPlace), entryPlace), entryPlace);
        }
    }

    /** Adds an entry with what the adapter has for this target, or with what a new one starts with. */
    DevDBEntry add(Adapter adapter, int targetID, String place) {
        DevDBEntry there = DeviceDatabaseEntry.find(present, targetID);
        DevDBEntry entry;
        if (there != null) {
            entry = DeviceDatabaseEntry.copy(there);
        } else {
            entry = DeviceDatabaseEntry.readInitial(adapter, targetID);
            entry.setState(DeviceDatabaseEntry.readDefault(adapter).getState());
        }
        return note(entry, place);
    }

    private DevDBEntry note(DevDBEntry entry, String place) {
        wanted.add(entry);
        places.add(place);
        return entry;
    }

    /** Adds an entry for a new target; ends the command when the ID is that of another one. */
    DevDBEntry addNew(Adapter adapter, int targetID, String place) {
        DevDBEntry there = DeviceDatabaseEntry.find(present, targetID);
        if (there != null) {
            throw new OperationFailed("adapter " + adapter.dev + " has a " + DeviceDatabaseEntry.describe(there)
                + " already. Give another ID, or none to have a free one chosen.");
        }
        return add(adapter, targetID, place);
    }

    /** Adds what the adapter has for this target; ends the command when it has nothing. */
    DevDBEntry addPresent(Adapter adapter, int targetID, String place) {
        return note(DeviceDatabaseEntry.copy(DeviceDatabaseEntry.require(adapter, present, targetID)), place);
    }

    /** The first ID that neither an entry of the adapter nor one to be written has. */
    int firstFree() {
        List<DevDBEntry> all = new ArrayList<>(present);
        all.addAll(wanted);
        return DeviceDatabaseEntry.firstFree(all);
    }

    /** Ends the command when the adapter has no room for so many more targets. */
    void requireRoom(Adapter adapter, int count) {
        int room = DeviceDatabaseEntry.LAST_SLOT + 1 - present.size();
        if (count > room) {
            throw new OperationFailed("adapter " + adapter.dev + " has room for " + room + " more targets, and "
                + count + " would be new: " + Cure.describe(Status.ERR_DATABASE_FULL.code()),
                Status.ERR_DATABASE_FULL.code());
        }
    }

    List<DevDBEntry> present() {
        return present;
    }

    List<DevDBEntry> wanted() {
        return wanted;
    }

    /** Checks a document without the adapter. */
    static void validate(JsonArray document, String place) {
        Set<Integer> seen = new HashSet<>();
        for (int i = 0; i < document.size(); i++) {
            String entryPlace = place + "[" + i + "]";
            JsonObject object = JsonDocument.object(document.get(i), entryPlace);
            int targetID = targetID(object, entryPlace);
            if (!seen.add(targetID)) {
                throw new BadInput(entryPlace + ".targetID: duplicate target ID " + targetID);
            }
            DeviceDatabaseEntry.TABLE.read(object, new DevDBEntry(), entryPlace);
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
        DeviceDatabaseEntry.TABLE.read(alone, entry, place);
        return entry.getTargetID();
    }

    /** Refuses entries that are unlikely to be meant: without a name, with one that is none, in an unknown state. */
    void requireSense() {
        for (int i = 0; i < wanted.size(); i++) {
            DevDBEntry entry = wanted.get(i);
            DevDBEntry there = DeviceDatabaseEntry.find(present, entry.getTargetID());
            requireSense(entry, there == null ? new DevDBEntry() : there, places.get(i));
        }
    }

    // What the adapter has already it may keep.
    private static void requireSense(DevDBEntry entry, DevDBEntry there, String place) {
        int state = entry.getState();
        if (!StateField.isKnown(state) && state != there.getState()) {
            throw new BadInput(place + ": state " + Integer.toUnsignedString(state) + " is not known: 0 frees the "
                + "entry, 1 configured, 2 logged in, 3 logged out. --force writes it all the same.");
        }
        String name = NodeInfo.NAME.get(entry.getNodeInfo());
        boolean kept = there.getState() != TargetState.FREE && NodeInfo.NAME.isSame(name,
            NodeInfo.NAME.get(there.getNodeInfo()));
        if (state == TargetState.FREE || kept) {
            return;
        }
        if (name == null || name.isEmpty()) {
            throw new BadInput(place + ": the target has no iSCSI name. --force writes it all the same.");
        }
        IscsiName.require(name, place);
    }

    /** Refuses entries by which the adapter would have the same target at the same portal twice. */
    void requireUnique() {
        for (int i = 0; i < wanted.size(); i++) {
            for (DevDBEntry there : present) {
                Differences differences = new Differences("wanted");
                TARGET_AND_PORTAL.compare(wanted.get(i), there, "", differences);
                if (there.getTargetID() != wanted.get(i).getTargetID() && differences.isEmpty()) {
                    throw new BadInput(places.get(i) + ": " + DeviceDatabaseEntry.describe(there)
                        + " has the same name, address and port. --force writes it all the same.");
                }
            }
        }
    }

    /** What is lost when the entries are written: entries that are freed, sessions that end. */
    List<String> losses(boolean everyChange) {
        List<String> losses = new ArrayList<>();
        for (DevDBEntry entry : wanted) {
            DevDBEntry there = DeviceDatabaseEntry.find(present, entry.getTargetID());
            if (there == null) {
                continue;
            }
            boolean inSession = there.getState() == TargetState.LOGGED_IN;
            String target = DeviceDatabaseEntry.describe(there);
            Differences differences = new Differences("wanted");
            (everyChange ? DeviceDatabaseEntry.TABLE : WAY_TO_TARGET).compare(there, entry, "", differences);
            if (entry.getState() == TargetState.FREE) {
                losses.add("frees " + target + ": its settings are lost" + (inSession ? ", its session ends" : ""));
            } else if (inSession && entry.getState() == TargetState.LOGGED_OUT) {
                losses.add("ends the session with " + target);
            } else if (inSession && !differences.isEmpty()) {
                losses.add("changes " + target + ", which interrupts its session");
            }
        }
        return losses;
    }

    /** Adds that the targets which no entry names are freed, before anything else is written. */
    void prune() {
        List<DevDBEntry> freed = new ArrayList<>(present);
        List<Integer> targets = notNamed();
        freed.removeIf(there -> !targets.contains(there.getTargetID())
            || there.getTargetIDUnsigned() > DeviceDatabaseEntry.LAST_SLOT);
        freed.replaceAll(DeviceDatabaseEntry::copy);
        for (DevDBEntry entry : freed) {
            entry.setState(TargetState.FREE);
            places.add(0, DeviceDatabaseEntry.describe(entry));
        }
        wanted.addAll(0, freed);
    }

    /** Notes what a write will change. */
    void plan(String place, Differences differences) {
        for (DevDBEntry entry : wanted) {
            String entryPlace = place + "[targetID " + entry.getTargetID() + "]";
            DevDBEntry there = DeviceDatabaseEntry.find(present, entry.getTargetID());
            String name = " (" + NodeInfo.NAME.show(entry.getNodeInfo()) + ")";
            if (there == null && entry.getState() != TargetState.FREE) {
                differences.add(entryPlace + ": is added" + name);
            } else if (there != null && entry.getState() == TargetState.FREE) {
                differences.add(entryPlace + ": is removed" + name);
            } else if (there != null) {
                DeviceDatabaseEntry.TABLE.compare(entry, there, entryPlace, differences);
            }
        }
    }

    /** The IDs of the targets that the adapter has and that no entry names. */
    List<Integer> notNamed() {
        List<Integer> targets = new ArrayList<>();
        for (DevDBEntry there : present) {
            if (DeviceDatabaseEntry.find(wanted, there.getTargetID()) == null) {
                targets.add(there.getTargetID());
            }
        }
        return targets;
    }

    /** Writes a single entry. */
    void writeOne(Adapter adapter) {
        DevDBEntry entry = wanted.get(0);
        adapter.check("writing target " + entry.getTargetID(),
            adapter.api.setDDBData(adapter.dev, entry, entry.getTargetID()));
    }

    /** The entries that differ from what the adapter has. */
    List<DevDBEntry> changed() {
        return wanted.stream().filter(this::isChanged).toList();
    }

    /** The IDs of the entries that the adapter has already. */
    List<Integer> unchanged() {
        return wanted.stream().filter(entry -> !isChanged(entry)).map(DevDBEntry::getTargetID).toList();
    }

    private boolean isChanged(DevDBEntry entry) {
        DevDBEntry there = DeviceDatabaseEntry.find(present, entry.getTargetID());
        if (there == null) {
            return entry.getState() != TargetState.FREE;
        }
        Differences differences = new Differences("wanted");
        DeviceDatabaseEntry.TABLE.compare(entry, there, "", differences);
        return !differences.isEmpty();
    }

    /** Writes the entries in order, and stops at a signal. Whether each was taken only reading them back can tell. */
    void write(Adapter adapter) {
        write(adapter, wanted);
    }

    /** Writes the entries that differ from what the adapter has. */
    void writeChanged(Adapter adapter) {
        write(adapter, changed());
    }

    private static void write(Adapter adapter, List<DevDBEntry> entries) {
        for (int done = 0; done < entries.size();) {
            if (Interruption.isRequested()) {
                throw new OperationFailed("interrupted: " + progress(entries, done));
            }
            Progress.show("writing targets", done, entries.size());
            int end = Math.min(done + BATCH, entries.size());
            List<DevDBEntry> batch = entries.subList(done, end);
            int status = adapter.api.setDDBsData(adapter.dev, batch.toArray(new DevDBEntry[0]));
            if (status != 0 && done > 0) {
                Terminal.message(progress(entries, done));
            }
            adapter.check("writing the targets " + ranges(batch), status);
            done = end;
        }
        Progress.end();
    }

    private static String progress(List<DevDBEntry> entries, int done) {
        return done == 0 ? "no target was written"
            : "the targets " + ranges(entries.subList(0, done)) + " (" + done + " of " + entries.size()
                + ") were written, the targets " + ranges(entries.subList(done, entries.size())) + " were not";
    }

    private static String ranges(List<DevDBEntry> entries) {
        return DeviceDatabaseEntry.ranges(entries.stream().map(DevDBEntry::getTargetID).toList());
    }

    /** Notes each field in which the adapter's entries differ from those that were written. */
    void compare(Adapter adapter, String place, Differences differences) {
        List<DevDBEntry> found = DeviceDatabaseEntry.readAll(adapter);
        for (DevDBEntry entry : wanted) {
            String entryPlace = place + "[targetID " + entry.getTargetID() + "]";
            DevDBEntry there = DeviceDatabaseEntry.find(found, entry.getTargetID());
            if (entry.getState() == TargetState.FREE) {
                if (there != null) {
                    differences.add(entryPlace + ": still on the adapter");
                }
            } else if (there == null) {
                differences.add(entryPlace + ": not on the adapter");
            } else {
                DeviceDatabaseEntry.TABLE.compare(entry, there, entryPlace, differences);
            }
        }
    }
}
