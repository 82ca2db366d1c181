package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonArray;
import com.varden.tavo.iscsi.model.DevDBEntry;
import java.io.IOException;
import java.util.List;
import picocli.CommandLine.Model.OptionSpec;
import picocli.CommandLine.Model.PositionalParamSpec;

/** What can be done with the configured targets. */
final class DeviceDatabaseEntryCommands {
    private DeviceDatabaseEntryCommands() {}

    /** hba target list. */
    static final class ListAll extends DeviceCommand {
        ListAll() {
            super("Lists the entries of the device database that are in use.");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            List<DevDBEntry> entries = DeviceDatabaseEntry.readAll(adapter);
            TextOutput.Columns columns =
                new TextOutput.Columns("Target", "State", "iSCSI name", "IP address", "Port");
            for (DevDBEntry entry : entries) {
                columns.row(entry.getTargetID(), entry.getState(), entry.getNodeInfo().getiSCSIName(),
                    entry.getNodeInfo().getIPAddress(), entry.getDeviceEntry().getPortNumber());
            }
            showList(DeviceDatabaseEntry.TABLE, entries, columns, "No target is configured.");
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
            DevDBEntry entry = DeviceDatabaseEntry.base(adapter, DeviceDatabaseEntry.readAll(adapter), number(target));
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
            document = JsonDocument.array(JsonDocument.parse(file.getValue()), "the document");
            DeviceDatabaseEntry.validate(document, "targets");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            List<DevDBEntry> entries = DeviceDatabaseEntry.read(adapter, document, "targets");
            DeviceDatabaseEntry.write(adapter, entries);
            Differences differences = new Differences("in the file");
            DeviceDatabaseEntry.compare(adapter, entries, "targets", differences);
            return report(entries.size() + " targets of adapter " + adapter.dev + " were written.",
                differences);
        }
    }

    /** hba target logout. */
    static final class Logout extends DeviceCommand {
        private final PositionalParamSpec target =
            parameter("TARGET", DeviceDatabaseEntry.TARGET_ID, "Target ID, 0 to 511.");
        private final OptionSpec options =
            option("--options", new BitsField("options", 16, "Options"), "Option bits of the request, 0 to 65535.");
        private final OptionSpec newIndex = option("--new-index", new NumberField("newIndex", 16, "New index"),
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
