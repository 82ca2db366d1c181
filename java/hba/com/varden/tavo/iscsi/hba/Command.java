package com.varden.tavo.iscsi.hba;

import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.model.DevDBEntry;
import java.io.IOException;
import java.io.PrintStream;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.concurrent.Callable;
import picocli.CommandLine.Model.ArgSpec;
import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.Model.OptionSpec;
import picocli.CommandLine.Model.PositionalParamSpec;

/**
 * A command of the tool: declares its arguments in its constructor and does its work in call. Arguments are declared by
 * method and not by annotation, which the tool would have to look for at every start.
 */
public abstract class Command implements Callable<Integer> {
    public static final int DONE = 0;
    public static final int FAILED = 1;
    public static final int USAGE = 2;
    static final int NOT_LOADED = 3;
    /** What a shell makes of a program that writes to a pipe whose reader has gone. */
    static final int PIPE_CLOSED = 141;

    final CommandSpec spec = CommandSpec.wrapWithoutInspection(this);
    private final OptionSpec json;
    private int parameters;
    private Listing listing;
    private Watch watch;
    private PrintStream output;

    protected Command(String... description) {
        spec.usageMessage().description(description);
        json = flag("--json", "Write the result as a JSON document.");
        common(spec);
    }

    /** What every command has, groups of commands too. */
    static void common(CommandSpec spec) {
        spec.addOption(OptionSpec.builder("-h", "--help").usageHelp(true).type(boolean.class)
            .description("Show this help and exit.").build());
        spec.addOption(OptionSpec.builder("--debug").type(boolean.class)
            .description("Show the Java stack trace of a failure.").build());
        // Taken by the launcher, which starts the VM in the folder of the library; here for help and completion.
        spec.addOption(OptionSpec.builder("--library").type(String.class).paramLabel("LIBRARY")
            .completionCandidates(List.of("software", "host"))
            .description("Management library: software, host, or the folder of another one.").build());
        spec.usageMessage().exitCodeListHeading("Exit status:%n").exitCodeList(exitStatuses()).sortOptions(false);
    }

    private static Map<String, String> exitStatuses() {
        Map<String, String> statuses = new LinkedHashMap<>();
        statuses.put("0", "done");
        statuses.put("1", "the operation failed, or what was read back differs");
        statuses.put("2", "the command or its input is wrong; nothing was done");
        statuses.put("3", "the native libraries cannot be loaded");
        return statuses;
    }

    protected final OptionSpec flag(String name, String description) {
        return add(OptionSpec.builder(name).type(boolean.class).description(description).build());
    }

    /** For commands that refuse input that the adapter takes but that is unlikely to be meant. */
    final OptionSpec force() {
        return flag("--force", "Write what is refused otherwise, such as a target without a name or a name that is no "
            + "iSCSI name.");
    }

    protected final OptionSpec option(String name, String label, String description) {
        return option(name, label, null, description);
    }

    /** An option for which the completion knows words. */
    final OptionSpec option(String name, String label, List<String> candidates, String description) {
        return add(OptionSpec.builder(name).type(String.class).paramLabel(label).completionCandidates(candidates)
            .description(description).build());
    }

    /** For commands that show a list: which fields of its records they show without being told. */
    final Listing listing(RecordTable table, String... usual) {
        listing = new Listing(this, table, usual);
        return listing;
    }

    /** Checks what the options of every command may say, before anything is done; throws BadInput. */
    final void check() {
        if (listing != null) {
            listing.check(wantsJson());
        }
        if (watch != null) {
            watch.check();
        }
    }

    /** An option that may stand alone, which then means the usual value. */
    final OptionSpec optionalValue(String name, String label, String usual, String description) {
        return add(OptionSpec.builder(name).type(String.class).arity("0..1").fallbackValue(usual).paramLabel(label)
            .description(description).build());
    }

    /** For commands that can show their result again and again. */
    final Watch watch(boolean endMatters) {
        watch = new Watch(this, endMatters);
        return watch;
    }

    /** An option whose value is that of a field; its range stands in the help. */
    final OptionSpec option(SettingField<?> field) {
        return option(field.option(), field, field.label + ": " + field.range() + ".");
    }

    protected final OptionSpec option(String name, SettingField<?> field, String description) {
        return add(OptionSpec.builder(name).type(Object.class).converters(field)
            .paramLabel(field.valueLabel()).description(description).build());
    }

    private OptionSpec add(OptionSpec option) {
        spec.addOption(option);
        return option;
    }

    final PositionalParamSpec parameter(String label, String arity, String description) {
        return add(PositionalParamSpec.builder().type(String.class), label, arity, description);
    }

    final PositionalParamSpec parameter(String label, SettingField<?> field, String description) {
        return parameter(label, "1", field, description);
    }

    final PositionalParamSpec parameter(String label, String arity, SettingField<?> field, String description) {
        return add(PositionalParamSpec.builder().type(Object.class).converters(field), label, arity, description);
    }

    /** The parameters from here on, any number of them. */
    final PositionalParamSpec parameters(String label, SettingField<?> field, String description) {
        PositionalParamSpec rest = PositionalParamSpec.builder().type(List.class).auxiliaryTypes(Object.class)
            .converters(field).index(parameters + "..*").arity("0..*").paramLabel(label).description(description)
            .build();
        spec.addPositional(rest);
        return rest;
    }

    private PositionalParamSpec add(PositionalParamSpec.Builder builder, String label, String arity, String text) {
        PositionalParamSpec parameter = builder.index(String.valueOf(parameters++)).arity(arity)
            .required(arity.equals("1")).paramLabel(label).description(text).build();
        spec.addPositional(parameter);
        return parameter;
    }

    protected static boolean isSet(OptionSpec flag) {
        return Boolean.TRUE.equals(flag.getValue());
    }

    protected static int number(ArgSpec argument) {
        return ((Long) argument.getValue()).intValue();
    }

    protected final boolean wantsJson() {
        return isSet(json);
    }

    /** Whether people read the result, who are told more than a list. */
    final boolean wantsWords() {
        return !wantsJson() && (listing == null || !listing.isForPrograms());
    }

    /** Shows a record. */
    final void show(RecordTable table, Object owner) throws IOException {
        if (wantsJson()) {
            JsonWriter writer = jsonWriter();
            table.write(writer, owner);
            finish(writer);
        } else {
            TextOutput.record(System.out, table, owner, 0);
        }
    }

    /** Shows a list in full in JSON, and in columns for people. */
    final void showList(List<?> owners, String none) throws IOException {
        if (wantsJson()) {
            JsonWriter writer = jsonWriter();
            listing.table.writeList(writer, owners);
            finish(writer);
        } else if (owners.isEmpty() && wantsWords()) {
            System.out.println(none);
        } else {
            listing.print(System.out, owners);
        }
    }

    /** Says that something was done. */
    final void done(String what) throws IOException {
        done(what, null);
    }

    /** Says that something was done, and what became of the logins that follow, if any. */
    final void done(String what, Logins logins) throws IOException {
        if (wantsJson()) {
            JsonWriter writer = jsonWriter();
            writer.beginObject().name("done").value(what);
            if (logins != null) {
                writer.name("logins");
                logins.write(writer);
            }
            writer.endObject();
            finish(writer);
            return;
        }
        System.out.println(TerminalText.lines(what));
        for (String line : logins == null ? List.<String>of() : logins.lines()) {
            System.out.println(line);
        }
    }

    /**
     * Says what was done, to which targets, what was left as it is if that was looked at, what differs afterwards, and
     * what became of logins, if any follow; returns the exit status.
     */
    final int report(String what, List<DevDBEntry> targets, List<String> unchanged, Differences differences,
        Logins logins) throws IOException {
        List<String> lines = differences.lines();
        if (wantsJson()) {
            JsonWriter writer = jsonWriter();
            writer.beginObject().name("done").value(what);
            writeLines(writer, "differences", lines);
            writer.name("targetIDs").beginArray();
            for (DevDBEntry target : targets) {
                writer.value(target.getTargetID());
            }
            writer.endArray();
            if (unchanged != null) {
                writeLines(writer, "unchanged", unchanged);
            }
            if (logins != null) {
                writer.name("logins");
                logins.write(writer);
            }
            writer.endObject();
            finish(writer);
        } else {
            System.out.println(what);
            if (unchanged != null && !unchanged.isEmpty()) {
                System.out.println("Unchanged: " + String.join("; ", unchanged) + ".");
            }
            for (String line : logins == null ? List.<String>of() : logins.lines()) {
                System.out.println(line);
            }
            System.out.println(lines.isEmpty() ? "Nothing differs." : lines.size() + " differences:");
            for (String line : lines) {
                System.out.println("  " + TerminalText.of(line));
            }
        }
        return lines.isEmpty() ? DONE : FAILED;
    }

    /** Writes a member of the result that is a list of texts. */
    static void writeLines(JsonWriter writer, String name, List<String> lines) throws IOException {
        writer.name(name).beginArray();
        for (String line : lines) {
            writer.value(line);
        }
        writer.endArray();
    }

    /**
     * Runs the command, which was given --json, and writes its document elsewhere than to the standard output.
     *
     * @return the exit status
     */
    public final int writeDocument(PrintStream out) throws Exception {
        output = out;
        check();
        return call();
    }

    private PrintStream output() {
        return output != null ? output : System.out;
    }

    /** A writer of the result; of those that follow each other each stands on one line. */
    final JsonWriter jsonWriter() {
        return Terminal.json(output(), watch != null && watch.isOn() ? "" : "  ");
    }

    final void finish(JsonWriter writer) throws IOException {
        writer.flush();
        output().println();
    }
}
