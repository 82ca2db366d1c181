package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonArray;
import com.varden.tavo.iscsi.model.DevDBEntry;
import java.io.IOException;
import java.util.List;
import picocli.CommandLine.Model.PositionalParamSpec;

/** What can be done with the configured targets. */
final class DeviceDatabaseEntryCommands {
    private DeviceDatabaseEntryCommands() {}

    /** Gives a command the list of entries as people see it. */
    static void listTargets(Command command) {
        command.listing(
            DeviceDatabaseEntry.TABLE, "targetID", "state", "iSCSIName", "IPAddress", "portNumber");
    }

    /** hba target list. */
    static final class ListAll extends DeviceCommand {
        private final Watch watch = watch(false);

        ListAll() {
            super("Lists the entries of the device database that are in use.");
            listTargets(this);
        }

        @Override
        int run(Adapter adapter) throws IOException {
            return watch.run(() -> showOnce(adapter));
        }

        private int showOnce(Adapter adapter) throws IOException {
            List<DevDBEntry> entries = DeviceDatabaseEntry.readAll(adapter);
            showList(entries, "No target is configured.");
            int count = adapter.api.getiSCSIEntryNum(adapter.dev);
            if (count != entries.size()) {
                Terminal.message("the adapter says that it has " + Integer.toUnsignedString(count) + " targets");
            }
            return DONE;
        }
    }

    /** hba target show. */
    static final class Show extends DeviceCommand {
        private final PositionalParamSpec target =
            parameter("TARGET", DeviceDatabaseEntry.TARGET_ID, "Target ID, 0 to 511.");

        Show() {
            super("Shows all fields of one entry of the device database.");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            show(DeviceDatabaseEntry.TABLE, DeviceDatabaseEntry.read(adapter, number(target)));
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
            show(DeviceDatabaseEntry.TABLE, DeviceDatabaseEntry.readDefault(adapter));
            return DONE;
        }
    }

    /** hba target initial. */
    static final class Initial extends DeviceCommand {
        private final PositionalParamSpec index =
            parameter("INDEX", DeviceDatabaseEntry.TARGET_ID, "Index of the new entry, 0 to 511.");

        Initial() {
            super("Shows what the adapter proposes for a new entry.");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            show(DeviceDatabaseEntry.TABLE, DeviceDatabaseEntry.readInitial(adapter, number(index)));
            return DONE;
        }
    }

    /** hba target set. */
    static final class SetOne extends WriteTargets {
        private final PositionalParamSpec target =
            parameter("TARGET", DeviceDatabaseEntry.TARGET_ID, "Target ID, 0 to 511.");
        private final FieldOptions node = new FieldOptions(this, NodeInfo.TABLE);
        private final FieldOptions own =
            new FieldOptions(this, DeviceDatabaseEntry.TABLE.without(DeviceDatabaseEntry.TARGET_ID));
        private final FieldOptions session = new FieldOptions(this, DeviceParameters.TABLE);

        SetOne() {
            super("Changes what the options name and keeps the rest. A target that is not there yet starts with what "
                + "'hba target initial' shows. State 0 frees the entry. Asks before an entry is freed, and before a "
                + "target in session gets another name, address, port or CHAP entry.");
        }

        @Override
        void prepare() {
            FieldOptions.requireOne(node, own, session);
        }

        @Override
        DeviceDatabaseChanges changes(Adapter adapter) {
            DeviceDatabaseChanges changes = new DeviceDatabaseChanges(adapter);
            DevDBEntry entry = changes.add(adapter, number(target), "target " + number(target));
            node.apply(entry.getNodeInfo());
            own.apply(entry);
            session.apply(entry.getDeviceEntry());
            return changes;
        }
    }

    /** hba target load. */
    static final class Load extends WriteTargets {
        private final PositionalParamSpec file =
            parameter("FILE", "1", "JSON file with an array of targets, or - for the standard input.");
        private JsonArray document;

        Load() {
            super("Writes the targets of a JSON file in the form that 'hba target list --json' gives, and reads them "
                + "back. Each needs its targetID; what else is not named stays as it is, or starts with what 'hba "
                + "target initial' shows. Targets that the file does not name stay. Asks before an entry is freed or "
                + "a target in session changed.");
        }

        @Override
        void prepare() {
            document = JsonDocument.array(JsonDocument.parse(file.getValue()), "the document");
            DeviceDatabaseChanges.validate(document, "targets");
        }

        @Override
        DeviceDatabaseChanges changes(Adapter adapter) {
            return new DeviceDatabaseChanges(adapter, document, "targets");
        }

        @Override
        void send(Adapter adapter, DeviceDatabaseChanges changes) {
            Interruption.watch();
            changes.write(adapter);
        }

        @Override
        boolean asksForEveryChange() {
            return true;
        }
    }
}
