package com.varden.tavo.iscsi.hba;

import picocli.CommandLine;
import picocli.CommandLine.Model.CommandSpec;

/** The tree of commands. Of a command line that names a command only that one is made; for help, all of them. */
final class Commands {
    /** Full names in the order of the help; those of groups have no command of their own. */
    private static final String[][] TREE = {
        {"adapters", "List the adapters."},
        {"show", "Show all about an adapter: addresses, versions, state, targets."},
        {"info", "Show identity, versions, chip and state of an adapter."},
        {"target", "Show and change the configured targets."},
        {"target list", "List the configured targets."},
        {"target show", "Show a configured target."},
        {"target default", "Show the adapter's default entry."},
        {"target initial", "Show the contents proposed for a new target."},
        {"target set", "Change a configured target, or make a new one."},
        {"target load", "Write many targets from a JSON file."},
        {"target logout", "Log out of a target."},
        {"target portal", "Show where a target was discovered and how it is connected."},
        {"lun", "Ask the logical units of a target."},
        {"lun list", "List the logical units of a target."},
        {"lun show", "Show identity and capacity of a logical unit."},
        {"lun inquiry", "Show what a logical unit says of itself."},
        {"lun capacity", "Show the capacity of a logical unit."},
        {"firmware", "Show and change the firmware's settings, update the firmware."},
        {"firmware show", "Show the firmware's settings."},
        {"firmware defaults", "Show the firmware's default settings."},
        {"firmware set", "Change the firmware's settings."},
        {"firmware restore", "Restore the firmware's default settings."},
        {"firmware update", "Write a firmware image to the adapter."},
        {"stats", "Show and reset the counters of the port."},
        {"stats show", "Show the counters."},
        {"stats reset", "Set the counters to zero."},
        {"log", "Show the adapter's logs."},
        {"log errors", "Show the log of connection errors."},
        {"log arp", "Show the ARP table."},
        {"chap", "Show and change the CHAP table."},
        {"chap list", "List the CHAP entries."},
        {"chap set", "Change or add a CHAP entry."},
        {"chap clear", "Empty a CHAP entry."},
        {"isns", "Show and change discovery by iSNS."},
        {"isns show", "Show the settings of iSNS discovery."},
        {"isns set", "Change the settings of iSNS discovery."},
        {"isns targets", "List the targets that iSNS discovery found."},
        {"ping", "Have the adapter ping an address."},
        {"reset", "Reset an adapter."},
        {"crash", "Have the adapter's crash record written to a file."},
        {"export", "Write all settings of an adapter as one JSON document."},
        {"import", "Write an adapter's settings back and say what differs."},
        {"version", "Show the versions of the tool and of the management library."},
        {"completion", "Write a completion script for bash."},
    };

    private Commands() {}

    // Each family makes its own commands, so that only the classes of the one that is named are loaded.
    private static Command create(String name) {
        switch (name) {
            case "adapters":
            case "show":
            case "info":
                return AdapterInformation.command(name);
            case "target list":
            case "target show":
            case "target default":
            case "target initial":
                return DeviceDatabaseEntry.command(name);
            case "target set":
            case "target load":
            case "target logout":
                return DeviceDatabaseWrites.command(name);
            case "target portal":
            case "lun show":
                return TargetDatabase.command(name);
            case "lun list":
            case "lun inquiry":
            case "lun capacity":
                return ScsiPassThrough.command(name);
            case "firmware show":
            case "firmware defaults":
            case "firmware set":
            case "firmware restore":
                return FirmwareConfiguration.command(name);
            case "firmware update":
            case "ping":
            case "reset":
            case "crash":
                return Maintenance.command(name);
            case "stats show":
            case "stats reset":
                return Statistics.command(name);
            case "log errors":
            case "log arp":
                return Logs.command(name);
            case "chap list":
            case "chap set":
            case "chap clear":
                return ChapTable.command(name);
            case "isns show":
            case "isns set":
            case "isns targets":
                return IsnsDiscovery.command(name);
            case "export":
            case "import":
                return Backup.command(name);
            case "version":
                return Version.command();
            case "completion":
                return Completion.command();
            default:
                return null;
        }
    }

    /** The command line with the command that the arguments name, or with all when they name none. */
    static CommandLine build(String[] arguments) {
        CommandSpec root = group("hba", "Manage iSCSI host bus adapters.");
        root.usageMessage().footer(
            "", "Numbers may be decimal or hexadecimal (0x...). 'hba COMMAND --help' says more.");
        addAll(root, "", arguments, 0);
        CommandLine line = new CommandLine(root);
        line.setUsageHelpLongOptionsMaxWidth(30);
        line.setExpandAtFiles(false);
        return line;
    }

    private static void addAll(CommandSpec parent, String prefix, String[] arguments, int depth) {
        String wanted = depth < arguments.length ? find(prefix + arguments[depth]) : null;
        for (String[] entry : TREE) {
            String name = entry[0];
            if (!name.startsWith(prefix) || name.indexOf(' ', prefix.length()) >= 0
                || wanted != null && !name.equals(wanted)) {
                continue;
            }
            String word = name.substring(prefix.length());
            Command command = create(name);
            CommandSpec child = command != null ? command.spec : group(word, entry[1]);
            child.usageMessage().header(command != null ? new String[] {entry[1], ""} : new String[0]);
            child.usageMessage().width(TextOutput.WIDTH);
            child.usageMessage().abbreviateSynopsis(child.options().size() > 10);
            parent.addSubcommand(word, new CommandLine(child));
            if (command == null) {
                addAll(child, name + " ", arguments, depth + 1);
            }
        }
    }

    private static String find(String name) {
        for (String[] entry : TREE) {
            if (entry[0].equals(name)) {
                return name;
            }
        }
        return null;
    }

    private static CommandSpec group(String name, String description) {
        CommandSpec spec = CommandSpec.create().name(name);
        spec.usageMessage().description(description);
        Command.common(spec);
        return spec;
    }
}
