package com.varden.tavo.iscsi.hba;

import com.google.gson.stream.JsonWriter;
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
        return add(OptionSpec.builder(name).type(String.class).paramLabel(label).description(description).build());
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
        return add(PositionalParamSpec.builder().type(Object.class).converters(field), label, "1", description);
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
    final void showList(RecordTable table, List<?> owners, TextOutput.Columns columns, String none)
        throws IOException {
        if (wantsJson()) {
            JsonWriter writer = jsonWriter();
            table.writeList(writer, owners);
            finish(writer);
        } else if (owners.isEmpty()) {
            System.out.println(none);
        } else {
            columns.print(System.out);
        }
    }

    /** Says that something was done. */
    final void done(String what) throws IOException {
        if (wantsJson()) {
            JsonWriter writer = jsonWriter();
            writer.beginObject().name("done").value(what).endObject();
            finish(writer);
        } else {
            System.out.println(TerminalText.lines(what));
        }
    }

    /**
     * Says what was done, what differs afterwards, and what became of logins, if any follow; returns the exit status.
     */
    final int report(String what, Differences differences, Logins logins) throws IOException {
        List<String> lines = differences.lines();
        if (wantsJson()) {
            JsonWriter writer = jsonWriter();
            writer.beginObject().name("done").value(what).name("differences").beginArray();
            for (String line : lines) {
                writer.value(line);
            }
            writer.endArray();
            if (logins != null) {
                writer.name("logins");
                logins.write(writer);
            }
            writer.endObject();
            finish(writer);
        } else {
            System.out.println(what);
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

    /**
     * Runs the command, which was given --json, and writes its document elsewhere than to the standard output.
     *
     * @return the exit status
     */
    public final int writeDocument(PrintStream out) throws Exception {
        output = out;
        return call();
    }

    private PrintStream output() {
        return output != null ? output : System.out;
    }

    final JsonWriter jsonWriter() {
        return Terminal.json(output(), "  ");
    }

    final void finish(JsonWriter writer) throws IOException {
        writer.flush();
        output().println();
    }
}
