package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.codes.TargetState;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.IPAddr;
import java.io.IOException;
import java.util.List;
import picocli.CommandLine.Model.OptionSpec;
import picocli.CommandLine.Model.PositionalParamSpec;

/** What is done with targets day by day: adding and removing them, their names and sessions. */
final class DeviceDatabaseEntryVerbs {
    private DeviceDatabaseEntryVerbs() {}

    private static PositionalParamSpec target(Command command) {
        return command.parameter("TARGET", DeviceDatabaseEntry.TARGET_ID, "Target ID, 0 to 511.");
    }

    /** hba target add. */
    static final class Add extends WriteTargets {
        private final PositionalParamSpec name = parameter("NAME", NodeInfo.NAME, "iSCSI name of the target.");
        private final PositionalParamSpec address = parameter("ADDRESS", NodeInfo.ADDRESS,
            "Address of the target, " + NodeInfo.ADDRESS.range() + ".");
        private final OptionSpec port = option("--port", new NumberField("port", 16, "TCP port").min(1),
            "TCP port of the target, 1 to 65535; " + DeviceParameters.ISCSI_PORT + " without this option.");
        private final OptionSpec alias = option(NodeInfo.ALIAS);
        private final OptionSpec chapIndex = option("--chap-index", DeviceDatabaseEntry.CHAP_INDEX,
            "CHAP entry to log in with; none without this option.");
        private final OptionSpec targetID = option("--target-id", DeviceDatabaseEntry.TARGET_ID,
            "Target ID, 0 to 511; the first free one without this option.");

        Add() {
            super("Adds a target, whose other settings are those that the adapter proposes for it, and logs in.");
        }

        @Override
        void prepare() {
            requireName(name);
            if (((IPAddr) address.getValue()).isUnspecified()) {
                throw new BadInput("ADDRESS: " + address.getValue() + " is no address of a target");
            }
        }

        @Override
        DeviceDatabaseChanges changes(Adapter adapter) {
            DeviceDatabaseChanges changes = new DeviceDatabaseChanges(adapter);
            changes.requireRoom(adapter, 1);
            DevDBEntry entry = changes.addNew(adapter,
                targetID.getValue() == null ? changes.firstFree() : number(targetID), "NAME");
            DeviceDatabaseEntry.lead(entry, name.getValue(), address.getValue(),
                port.getValue() == null ? DeviceParameters.ISCSI_PORT : number(port));
            if (alias.getValue() != null) {
                NodeInfo.ALIAS.set(entry.getNodeInfo(), alias.getValue());
            }
            if (chapIndex.getValue() != null) {
                entry.setChapIndex(number(chapIndex));
            }
            if (refuses()) {
                changes.requireUnique();
                ChapTable.requireSecret(adapter, entry.getChapIndex(), "--chap-index");
            }
            return changes;
        }

        @Override
        List<String> losses(Adapter adapter) {
            return List.of();
        }

        @Override
        String what(Adapter adapter, List<DevDBEntry> entries) {
            return sentence(adapter, entries.get(0), "was added");
        }
    }

    /** hba target remove. */
    static final class Remove extends WriteTargets {
        private final PositionalParamSpec target = target(this);

        Remove() {
            super("Removes a target: its session ends, its settings are lost, and its ID is free for another one.");
        }

        @Override
        DeviceDatabaseChanges changes(Adapter adapter) {
            DeviceDatabaseChanges changes = new DeviceDatabaseChanges(adapter);
            changes.addPresent(adapter, number(target), "TARGET").setState(TargetState.FREE);
            return changes;
        }

        @Override
        String what(Adapter adapter, List<DevDBEntry> entries) {
            return sentence(adapter, entries.get(0), "was removed");
        }
    }

    /** hba target rename. */
    static final class Rename extends WriteTargets {
        private final PositionalParamSpec target = target(this);
        private final PositionalParamSpec name = parameter("NAME", NodeInfo.NAME, "The new iSCSI name.");
        private final OptionSpec alias = option(NodeInfo.ALIAS);

        Rename() {
            super("Has an entry lead to a target of another iSCSI name, with address, credentials and parameters as "
                + "they are, and logs in. Asks before a session is interrupted.");
        }

        @Override
        void prepare() {
            requireName(name);
        }

        @Override
        DeviceDatabaseChanges changes(Adapter adapter) {
            DeviceDatabaseChanges changes = new DeviceDatabaseChanges(adapter);
            DevDBEntry entry = changes.addPresent(adapter, number(target), "NAME");
            NodeInfo.NAME.set(entry.getNodeInfo(), name.getValue());
            if (alias.getValue() != null) {
                NodeInfo.ALIAS.set(entry.getNodeInfo(), alias.getValue());
            }
            if (refuses()) {
                changes.requireUnique();
            }
            return changes;
        }

        @Override
        String what(Adapter adapter, List<DevDBEntry> entries) {
            return sentence(adapter, entries.get(0), "is now " + NodeInfo.NAME.show(entries.get(0).getNodeInfo()));
        }
    }

    // An entry without a name would be a discovery.
    private static void requireName(PositionalParamSpec name) {
        if (name.getValue().toString().isEmpty()) {
            throw new BadInput("NAME: the target has no iSCSI name");
        }
    }

    /** hba target login. */
    static final class Login extends WriteCommand {
        private final PositionalParamSpec target = target(this);
        private boolean already;

        Login() {
            super("Logs in to a target, also to one that was logged out. A session that is there and answers stays.");
        }

        @Override
        List<String> losses(Adapter adapter) {
            return List.of();
        }

        @Override
        void write(Adapter adapter) {
            DevDBEntry entry = DeviceDatabaseEntry.read(adapter, number(target));
            already = entry.getState() == TargetState.LOGGED_IN && ScsiPassThrough.answers(adapter, number(target));
            if (!already) {
                Logins.logIn(adapter, entry);
            }
        }

        @Override
        int report(Adapter adapter) throws IOException {
            done("Adapter " + adapter.dev + (already ? " is logged in to target " + number(target) + " already."
                : " logged in to target " + number(target) + "."));
            return DONE;
        }
    }

    /** hba target logout. */
    static final class Logout extends WriteCommand {
        private final PositionalParamSpec target = target(this);
        private final OptionSpec options =
            option("--options", new BitsField("options", 16, "Options"), "Option bits of the request, 0 to 65535.");
        private final OptionSpec newIndex = option("--new-index", new NumberField("newIndex", 16, "New index"),
            "New target ID of the request, 0 to 65535; 0 without this option.");

        Logout() {
            super("Ends the session with a target, until 'hba target login' or a reset of the adapter.");
        }

        @Override
        List<String> losses(Adapter adapter) {
            DevDBEntry there = DeviceDatabaseEntry.read(adapter, number(target));
            return there.getState() == TargetState.LOGGED_OUT ? List.of()
                : List.of("ends the session with " + DeviceDatabaseEntry.describe(there));
        }

        @Override
        void write(Adapter adapter) {
            DeviceDatabaseEntry.read(adapter, number(target));
            Logins.logOut(adapter, number(target), options.getValue() == null ? 0 : number(options),
                newIndex.getValue() == null ? 0 : number(newIndex));
        }

        @Override
        int report(Adapter adapter) throws IOException {
            done("Adapter " + adapter.dev + " logged out of target " + number(target) + ".");
            return DONE;
        }
    }
}
