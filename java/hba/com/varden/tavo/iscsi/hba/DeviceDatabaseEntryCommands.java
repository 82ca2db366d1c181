package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonArray;
import com.varden.tavo.iscsi.codes.TargetState;
import com.varden.tavo.iscsi.model.DevDBEntry;
import java.io.IOException;
import java.util.List;
import picocli.CommandLine.Model.OptionSpec;
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
            DevDBEntry entry = DeviceDatabaseEntry.find(DeviceDatabaseEntry.readAll(adapter), number(target));
            if (entry == null) {
                throw new OperationFailed("adapter " + adapter.dev + " has no target " + number(target));
            }
            show(DeviceDatabaseEntry.TABLE, entry);
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

    /** A command that writes entries: the logins that follow are part of what it says. */
    private abstract static class WriteEntries extends WriteCommand {
        private final OptionSpec force = force();
        private DeviceDatabaseChanges written;
        private Differences differences;

        WriteEntries(String... description) {
            super(description);
        }

        abstract DeviceDatabaseChanges changes(Adapter adapter);

        abstract void send(Adapter adapter, DeviceDatabaseChanges changes);

        /** Whether each change of a target in session is asked for, or only one of what leads to the target. */
        abstract boolean asksForEveryChange();

        private DeviceDatabaseChanges checked(Adapter adapter) {
            DeviceDatabaseChanges changes = changes(adapter);
            if (!isSet(force)) {
                changes.requireSense();
            }
            return changes;
        }

        @Override
        List<String> losses(Adapter adapter) {
            return checked(adapter).losses(asksForEveryChange());
        }

        @Override
        void write(Adapter adapter) {
            written = checked(adapter);
            send(adapter, written);
            differences = new Differences("written");
            written.compare(adapter, "targets", differences);
        }

        @Override
        int report(Adapter adapter) throws IOException {
            List<DevDBEntry> entries = written.wanted();
            String what = entries.size() == 1 ? "Target " + entries.get(0).getTargetID() + " of adapter " + adapter.dev
                    + (entries.get(0).getState() == TargetState.FREE ? " was freed." : " was written.")
                : entries.size() + " targets of adapter " + adapter.dev + " were written.";
            return report(what, differences, Logins.await(adapter, entries));
        }
    }

    /** hba target set. */
    static final class SetOne extends WriteEntries {
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

        @Override
        void send(Adapter adapter, DeviceDatabaseChanges changes) {
            changes.writeOne(adapter);
        }

        @Override
        boolean asksForEveryChange() {
            return false;
        }
    }

    /** hba target load. */
    static final class Load extends WriteEntries {
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

    /** hba target logout. */
    static final class Logout extends WriteCommand {
        private final PositionalParamSpec target =
            parameter("TARGET", DeviceDatabaseEntry.TARGET_ID, "Target ID, 0 to 511.");
        private final OptionSpec options =
            option("--options", new BitsField("options", 16, "Options"), "Option bits of the request, 0 to 65535.");
        private final OptionSpec newIndex = option("--new-index", new NumberField("newIndex", 16, "New index"),
            "New target ID of the request, 0 to 65535; 0 without this option.");

        Logout() {
            super("Ends the session with a target.");
        }

        @Override
        List<String> losses(Adapter adapter) {
            DevDBEntry there = DeviceDatabaseEntry.find(DeviceDatabaseEntry.readAll(adapter), number(target));
            return List.of("ends the session with "
                + (there == null ? "target " + number(target) : DeviceDatabaseEntry.describe(there)));
        }

        @Override
        void write(Adapter adapter) {
            adapter.check("the logout", adapter.api.logoutDDB(adapter.dev, number(target),
                options.getValue() == null ? 0 : number(options), newIndex.getValue() == null ? 0 : number(newIndex)));
            DevDBEntry there = DeviceDatabaseEntry.find(DeviceDatabaseEntry.readAll(adapter), number(target));
            if (there != null && there.getState() == TargetState.LOGGED_IN) {
                throw new OperationFailed("adapter " + adapter.dev + ": the logout was accepted, but the session with "
                    + DeviceDatabaseEntry.describe(there) + " goes on");
            }
        }

        @Override
        int report(Adapter adapter) throws IOException {
            done("Adapter " + adapter.dev + " logged out of target " + number(target) + ".");
            return DONE;
        }
    }
}
