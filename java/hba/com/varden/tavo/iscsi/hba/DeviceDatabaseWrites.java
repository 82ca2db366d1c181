package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonArray;
import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import com.varden.tavo.iscsi.model.DevDBEntry;
import java.io.IOException;
import java.util.ArrayList;
import java.util.HashSet;
import java.util.List;
import java.util.Set;
import picocli.CommandLine.Model.OptionSpec;
import picocli.CommandLine.Model.PositionalParamSpec;

/** What changes configured targets. */
final class DeviceDatabaseWrites {
    /** Entries written by one call, so that progress can be shown in between. */
    private static final int BATCH = 32;

    private DeviceDatabaseWrites() {}

    static Command command(String name) {
        switch (name) {
            case "target set":
                return new SetOne();
            case "target load":
                return new Load();
            default:
                return new Logout();
        }
    }

    /**
     * Entries as a document describes them, on the ground of what the adapter has: fields that are not named keep their
     * value; a target that is new starts with what the adapter proposes, and with the state of the default entry.
     */
    static List<DevDBEntry> read(Adapter adapter, JsonArray document, String place) {
        List<DevDBEntry> present = DeviceDatabaseEntry.readAll(adapter);
        List<DevDBEntry> entries = new ArrayList<>();
        for (int i = 0; i < document.size(); i++) {
            String entryPlace = place + "[" + i + "]";
            JsonObject object = RecordTable.object(document.get(i), entryPlace);
            DevDBEntry entry = base(adapter, present, targetID(object, entryPlace));
            DeviceDatabaseEntry.TABLE.read(object, entry, entryPlace);
            entries.add(entry);
        }
        return entries;
    }

    /** Checks a document without the adapter. */
    static void validate(JsonArray document, String place) {
        Set<Integer> seen = new HashSet<>();
        for (int i = 0; i < document.size(); i++) {
            String entryPlace = place + "[" + i + "]";
            JsonObject object = RecordTable.object(document.get(i), entryPlace);
            int targetID = targetID(object, entryPlace);
            if (!seen.add(targetID)) {
                throw new BadInput(entryPlace + ".targetID: target " + targetID + " is there twice");
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

    /** What the adapter has for this target, or what a new one starts with. */
    private static DevDBEntry base(Adapter adapter, List<DevDBEntry> present, int targetID) {
        DevDBEntry entry = DeviceDatabaseEntry.find(present, targetID);
        if (entry == null) {
            entry = DeviceDatabaseEntry.readInitial(adapter, targetID);
            entry.setState(DeviceDatabaseEntry.readDefault(adapter).getState());
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
    static void compare(Adapter adapter, List<DevDBEntry> wanted, String place, List<String> differences) {
        List<DevDBEntry> found = DeviceDatabaseEntry.readAll(adapter);
        for (DevDBEntry entry : wanted) {
            String entryPlace = place + "[targetID " + entry.getTargetID() + "]";
            DevDBEntry there = DeviceDatabaseEntry.find(found, entry.getTargetID());
            if (there != null) {
                DeviceDatabaseEntry.TABLE.compare(entry, there, entryPlace, differences);
            } else if (entry.getState() != 0) {
                differences.add(entryPlace + ": not on the adapter");
            }
        }
    }

    /** hba target set. */
    static final class SetOne extends DeviceCommand {
        private final PositionalParamSpec target =
            parameter("TARGET", DeviceDatabaseEntry.TARGET_ID, "Target ID, 0 to 511.");
        private final FieldOptions node = new FieldOptions(this, NodeInfo.TABLE);
        private final FieldOptions own =
            new FieldOptions(this, DeviceDatabaseEntry.TABLE.without(DeviceDatabaseEntry.TARGET_ID));
        private final FieldOptions session = new FieldOptions(this, DeviceParameters.TABLE);

        SetOne() {
            super("Changes what the options name and keeps the rest. A target that is not there yet starts with what "
                + "'hba target initial' shows. State 0 takes a target out of use.");
        }

        @Override
        void prepare() {
            FieldOptions.requireOne(node, own, session);
        }

        @Override
        int run(Adapter adapter) throws IOException {
            DevDBEntry entry = base(adapter, DeviceDatabaseEntry.readAll(adapter), number(target));
            node.apply(entry.getNodeInfo());
            own.apply(entry);
            session.apply(entry.getDeviceEntry());
            adapter.check("writing target " + entry.getTargetID(),
                adapter.api.setDDBData(adapter.dev, entry, entry.getTargetID()));
            done("Target " + entry.getTargetID() + " of adapter " + adapter.dev + " was written.");
            return DONE;
        }
    }

    /** hba target load. */
    static final class Load extends DeviceCommand {
        private final PositionalParamSpec file =
            parameter("FILE", "1", "JSON file with an array of targets, or - for the standard input.");
        private JsonArray document;

        Load() {
            super("Writes the targets of a JSON file in the form that 'hba target list --json' gives, and reads them "
                + "back. Each needs its targetID; what else is not named stays as it is, or starts with what 'hba "
                + "target initial' shows. Targets that the file does not name stay.");
        }

        @Override
        void prepare() {
            document = Backup.array(Backup.parse(file.getValue()), "the document");
            validate(document, "targets");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            List<DevDBEntry> entries = read(adapter, document, "targets");
            write(adapter, entries);
            List<String> differences = new ArrayList<>();
            compare(adapter, entries, "targets", differences);
            return Backup.report(this, entries.size() + " targets of adapter " + adapter.dev + " were written.",
                differences);
        }
    }

    /** hba target logout. */
    static final class Logout extends DeviceCommand {
        private final PositionalParamSpec target =
            parameter("TARGET", DeviceDatabaseEntry.TARGET_ID, "Target ID, 0 to 511.");
        private final OptionSpec options =
            option("--options", Field.bits("options", 16, "Options"), "Option bits of the request, 0 to 65535.");
        private final OptionSpec newIndex = option("--new-index", Field.number("newIndex", 16, "New index"),
            "New target ID of the request, 0 to 65535; 0 without this option.");

        Logout() {
            super("Ends the session with a target.");
            needsConfirmation();
        }

        @Override
        void prepare() {
            confirm("ends the session with target " + number(target));
        }

        @Override
        int run(Adapter adapter) throws IOException {
            adapter.check("the logout", adapter.api.logoutDDB(adapter.dev, number(target),
                options.getValue() == null ? 0 : number(options), newIndex.getValue() == null ? 0 : number(newIndex)));
            done("Adapter " + adapter.dev + " logged out of target " + number(target) + ".");
            return DONE;
        }
    }
}
