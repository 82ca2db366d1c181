package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.hba.serve.Metrics;
import com.varden.tavo.iscsi.hba.serve.Serve;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.concurrent.Callable;
import picocli.CommandLine;
import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.Model.OptionSpec;
import picocli.CommandLine.ParseResult;

/** The tree of commands. Of a command line that names a command only that one is made; for help, all of them. */
public final class Commands {
    /** All commands and groups in the order of the help, with what the list of commands says of each. */
    private enum Name {
        STATUS("status", "Show how the adapters are doing, and whether all is well."),
        ADAPTERS("adapters", "List the adapters."),
        SHOW("show", "Show all about an adapter: addresses, versions, state, targets."),
        INFO("info", "Show identity, versions, chip and state of an adapter."),
        TARGET("target", "Show and change the configured targets."),
        TARGET_LIST("target list", "List the configured targets."),
        TARGET_SHOW("target show", "Show a configured target."),
        TARGET_DEFAULT("target default", "Show the adapter's default entry."),
        TARGET_INITIAL("target initial", "Show the contents proposed for a new target."),
        TARGET_ADD("target add", "Add a target."),
        TARGET_REMOVE("target remove", "Remove a target."),
        TARGET_RENAME("target rename", "Give a target another iSCSI name."),
        TARGET_LOGIN("target login", "Log in to a target."),
        TARGET_LOGOUT("target logout", "Log out of a target."),
        TARGET_SET("target set", "Change single fields of a configured target, or make a new one."),
        TARGET_LOAD("target load", "Write many targets from a JSON file."),
        TARGET_PORTAL("target portal", "Show where a target was discovered and how it is connected."),
        DISCOVER("discover", "Add the targets that a portal offers."),
        LUN("lun", "Ask the logical units of a target."),
        LUN_LIST("lun list", "List the logical units of a target with product and size."),
        LUN_SHOW("lun show", "Show identity and capacity of a logical unit."),
        LUN_INQUIRY("lun inquiry", "Show what a logical unit says of itself."),
        LUN_CAPACITY("lun capacity", "Show the capacity of a logical unit."),
        FIRMWARE("firmware", "Show and change the firmware's settings, update the firmware."),
        FIRMWARE_SHOW("firmware show", "Show the firmware's settings."),
        FIRMWARE_DEFAULTS("firmware defaults", "Show the firmware's default settings."),
        FIRMWARE_SET("firmware set", "Change the firmware's settings."),
        FIRMWARE_RESTORE("firmware restore", "Restore the firmware's default settings."),
        FIRMWARE_UPDATE("firmware update", "Write a firmware image to the adapter."),
        STATS("stats", "Show and reset the counters of the port."),
        STATS_SHOW("stats show", "Show the counters."),
        STATS_RESET("stats reset", "Set the counters to zero."),
        LOG("log", "Show the adapter's logs."),
        LOG_ERRORS("log errors", "Show the log of connection errors."),
        LOG_ARP("log arp", "Show the ARP table."),
        CHAP("chap", "Show and change the CHAP table."),
        CHAP_LIST("chap list", "List the CHAP entries."),
        CHAP_SET("chap set", "Change or add a CHAP entry."),
        CHAP_CLEAR("chap clear", "Empty a CHAP entry."),
        ISNS("isns", "Show and change discovery by iSNS."),
        ISNS_SHOW("isns show", "Show the settings of iSNS discovery."),
        ISNS_SET("isns set", "Change the settings of iSNS discovery."),
        ISNS_TARGETS("isns targets", "List the targets that iSNS discovery found."),
        ISNS_ADD("isns add", "Add targets that iSNS discovery found."),
        PING("ping", "Have the adapter ping an address."),
        RESET("reset", "Reset an adapter."),
        CRASH("crash", "Have the adapter's crash record written to a file."),
        SERVE("serve", "Show the adapters on a web page, and their metrics to Prometheus."),
        METRICS("metrics", "Print the metrics of all adapters once, for Prometheus."),
        EXPORT("export", "Write all settings of an adapter as one JSON document."),
        IMPORT("import", "Write an adapter's settings back and say what differs."),
        DOCTOR("doctor", "Check what the tool needs, and say what to do about what is missing."),
        VERSION("version", "Show the versions of the tool and of the management library."),
        COMPLETION("completion", "Write a completion script for bash, zsh or fish.");

        private final String words;
        private final String description;

        Name(String words, String description) {
            this.words = words;
            this.description = description;
        }

        /** Whether it is one word more than the prefix, which ends in a blank or is empty. */
        private boolean follows(String prefix) {
            return words.startsWith(prefix) && words.indexOf(' ', prefix.length()) < 0;
        }

        /**
         * The command, or null for a group. The compiler sees to it that each name has its case. What is returned is an
         * interface, so that the VM loads no more classes than that of the command that is made.
         */
        private Callable<Integer> create() {
            return switch (this) {
                case TARGET, LUN, FIRMWARE, STATS, LOG, CHAP, ISNS -> null;
                case STATUS -> new AdapterStatusCommand();
                case ADAPTERS -> new AdapterInformation.Adapters();
                case SHOW -> new AdapterInformation.Show();
                case INFO -> new AdapterInformation.Info();
                case TARGET_LIST -> new DeviceDatabaseEntryCommands.ListAll();
                case TARGET_SHOW -> new DeviceDatabaseEntryCommands.Show();
                case TARGET_DEFAULT -> new DeviceDatabaseEntryCommands.Default();
                case TARGET_INITIAL -> new DeviceDatabaseEntryCommands.Initial();
                case TARGET_ADD -> new DeviceDatabaseEntryVerbs.Add();
                case TARGET_REMOVE -> new DeviceDatabaseEntryVerbs.Remove();
                case TARGET_RENAME -> new DeviceDatabaseEntryVerbs.Rename();
                case TARGET_LOGIN -> new DeviceDatabaseEntryVerbs.Login();
                case TARGET_LOGOUT -> new DeviceDatabaseEntryVerbs.Logout();
                case TARGET_SET -> new DeviceDatabaseEntryCommands.SetOne();
                case TARGET_LOAD -> new DeviceDatabaseEntryCommands.Load();
                case TARGET_PORTAL -> new TargetDatabase.Portal();
                case DISCOVER -> new Discovery.Discover();
                case LUN_LIST -> new ScsiPassThroughUnits();
                case LUN_SHOW -> new TargetDatabase.LunShow();
                case LUN_INQUIRY -> new ScsiPassThrough.Inquiry();
                case LUN_CAPACITY -> new ScsiPassThrough.Capacity();
                case FIRMWARE_SHOW -> new FirmwareConfiguration.Show();
                case FIRMWARE_DEFAULTS -> new FirmwareConfiguration.Defaults();
                case FIRMWARE_SET -> new FirmwareConfiguration.SetSome();
                case FIRMWARE_RESTORE -> new FirmwareConfiguration.Restore();
                case FIRMWARE_UPDATE -> new Maintenance.Update();
                case STATS_SHOW -> new Statistics.Show();
                case STATS_RESET -> new Statistics.Reset();
                case LOG_ERRORS -> new Logs.Errors();
                case LOG_ARP -> new Logs.Arp();
                case CHAP_LIST -> new ChapTableCommands.ListAll();
                case CHAP_SET -> new ChapTableCommands.SetOne();
                case CHAP_CLEAR -> new ChapTableCommands.Clear();
                case ISNS_SHOW -> new IsnsDiscovery.Show();
                case ISNS_SET -> new IsnsDiscovery.SetSome();
                case ISNS_TARGETS -> new IsnsDiscovery.Targets();
                case ISNS_ADD -> new IsnsDiscovery.Add();
                case PING -> new Maintenance.Ping();
                case RESET -> new Maintenance.Reset();
                case CRASH -> new Maintenance.Crash();
                case SERVE -> new Serve();
                case METRICS -> new Metrics();
                case EXPORT -> new Backup.Export();
                case IMPORT -> new BackupImport();
                case DOCTOR -> new Doctor();
                case VERSION -> new Version();
                case COMPLETION -> new Completion.Script();
            };
        }
    }

    private Commands() {}

    /**
     * The command that a command line names, with its arguments.
     *
     * @throws BadInput when it names none
     */
    public static Command parse(String... arguments) {
        ParseResult last = build(arguments).parseArgs(arguments);
        while (last.hasSubcommand()) {
            last = last.subcommand();
        }
        if (last.commandSpec().userObject() instanceof Command command) {
            return command;
        }
        throw new BadInput("a command is missing");
    }

    /** The command line with the command that the arguments name, or with all when they name none. */
    static CommandLine build(String[] arguments) {
        CommandSpec root = group("hba", "Manage iSCSI host bus adapters.");
        root.usageMessage().footer(
            "", "Numbers may be decimal or hexadecimal (0x...). 'hba COMMAND --help' says more.");
        OptionSpec version = OptionSpec.builder("-V", "--version").versionHelp(true).type(boolean.class)
            .description("Show the tool's version and exit; 'hba version' shows the library's too.").build();
        root.addOption(version);
        if (arguments.length != 1 || !List.of(version.names()).contains(arguments[0])) {
            addAll(root, "", arguments, 0);
        }
        CommandLine line = new CommandLine(root);
        line.setUsageHelpLongOptionsMaxWidth(30);
        line.setExpandAtFiles(false);
        return line;
    }

    private static void addAll(CommandSpec parent, String prefix, String[] arguments, int depth) {
        Name wanted = depth < arguments.length ? find(prefix + arguments[depth]) : null;
        for (Name name : Name.values()) {
            if (name.follows(prefix) && (wanted == null || name == wanted)) {
                add(parent, name, name.words.substring(prefix.length()), arguments, depth);
            }
        }
    }

    private static void add(CommandSpec parent, Name name, String word, String[] arguments, int depth) {
        CommandSpec child;
        if (name.create() instanceof Command command) {
            child = command.spec;
            child.usageMessage().header(name.description, "");
        } else {
            child = group(word, name.description);
        }
        child.usageMessage().width(TextOutput.WIDTH);
        child.usageMessage().abbreviateSynopsis(child.options().size() > 10);
        parent.addSubcommand(word, new CommandLine(child));
        addAll(child, name.words + " ", arguments, depth + 1);
    }

    static boolean isCommand(String words) {
        return find(words) != null;
    }

    /** The words that may follow these, with what each does: "show" and others behind "target". */
    static Map<String, String> following(String words) {
        String prefix = words.isEmpty() ? "" : words + " ";
        Map<String, String> following = new LinkedHashMap<>();
        for (Name name : Name.values()) {
            if (name.follows(prefix)) {
                following.put(name.words.substring(prefix.length()), name.description);
            }
        }
        return following;
    }

    /** The arguments of a command, or of a group of commands. */
    static CommandSpec spec(String words) {
        Name name = find(words);
        return name != null && name.create() instanceof Command command ? command.spec : group(words, "");
    }

    private static Name find(String words) {
        for (Name name : Name.values()) {
            if (name.words.equals(words)) {
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
