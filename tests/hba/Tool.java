import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import com.google.gson.JsonParser;
import java.io.IOException;
import java.io.InputStream;
import java.io.OutputStream;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Map;
import java.util.TreeMap;
import java.util.stream.Stream;

/** Runs the tool as a user would: by its launcher, in a folder of its own, without a locale. */
final class Tool {
    /** The build tree that holds bin/hba. */
    static final Path PREFIX = Path.of(System.getProperty("tavo.prefix"));
    static final Path SOURCES = Path.of(System.getProperty("tavo.sources"));
    /** Secrets of the adapters in the factory and of these tests: no output may hold one, except with --reveal. */
    static final List<String> SECRETS = List.of("sample-secret", "ssssssssss", "swordfish");

    final Path folder;
    final Path flash;
    final Map<String, String> environment = new TreeMap<>();
    Path launcher = PREFIX.resolve("bin/hba");
    Path directory;

    Tool(Path folder) throws IOException {
        this.folder = folder;
        flash = Files.createDirectory(folder.resolve("flash"));
        directory = Files.createDirectory(folder.resolve("where the user stands"));
        environment.put("TAVO_ADAPTER_FLASH", flash.toString());
        environment.put("TERM", "xterm");
    }

    /** What one run printed, and its exit status. */
    record Result(String command, int status, String out, String err) {
        Result expect(int expected) {
            assertEquals(expected, status, () -> "exit status of " + this);
            return this;
        }

        /** The document on the standard output; nothing else may stand there. */
        JsonElement json() {
            return JsonParser.parseString(expect(0).out);
        }

        Result says(String... parts) {
            Stream.of(parts).forEach(part -> assertTrue(err.contains(part), () -> "no '" + part + "' from " + this));
            return this;
        }

        Result shows(String... parts) {
            Stream.of(parts).forEach(part -> assertTrue(out.contains(part), () -> "no '" + part + "' from " + this));
            return this;
        }
    }

    /** Runs a command line; arguments are separated by blanks. */
    Result run(String line) {
        return run(null, line.split(" +"));
    }

    Result run(String input, String... arguments) {
        return execute(input, command(arguments));
    }

    private List<String> command(String... arguments) {
        return Stream.concat(Stream.of(launcher.toString()), Stream.of(arguments)).toList();
    }

    /** Starts a command line that a signal ends; what it says comes in one stream. */
    Process start(String line) throws IOException {
        Stream<String> command = command(line.split(" +")).stream();
        return process(Stream.concat(Stream.of("env", "--default-signal"), command).toList())
            .redirectErrorStream(true).start();
    }

    void signal(Process process, String name) {
        execute(null, List.of("kill", "-" + name, Long.toString(process.pid())));
    }

    /** Runs command lines in as many processes at the same time; each has to succeed. */
    void runAtOnce(List<String> lines) throws IOException, InterruptedException {
        List<Process> processes = new ArrayList<>();
        for (String line : lines) {
            processes.add(start(line));
        }
        for (Process process : processes) {
            String said = new String(process.getInputStream().readAllBytes(), StandardCharsets.UTF_8);
            assertEquals(0, process.waitFor(), said);
        }
    }

    /** The command that runs an application in a VM that finds the bridge. */
    static List<String> application(Class<?> main, String... arguments) {
        List<String> command = List.of(System.getProperty("java.home") + "/bin/java",
            "-Dtavo.iscsi.library=" + PREFIX.resolve("lib/libtavoiscsi.so"), "-cp",
            System.getProperty("java.class.path"), main.getName());
        return Stream.concat(command.stream(), Stream.of(arguments)).toList();
    }

    /** Runs lines of a shell, in which "$0" is the tool. */
    Result script(String lines) {
        return execute(null, List.of("bash", "-c", lines, launcher.toString()));
    }

    /** Runs any command in this tool's surroundings. */
    Result execute(String input, List<String> command) {
        try {
            Path in = Files.writeString(folder.resolve("in"), input == null ? "" : input);
            Path out = folder.resolve("out");
            Path err = folder.resolve("err");
            int status = process(command).redirectInput(in.toFile()).redirectOutput(out.toFile())
                .redirectError(err.toFile()).start().waitFor();
            Result result = new Result(String.join(" ", command.subList(1, command.size())), status, read(out),
                read(err));
            boolean hasSecret = SECRETS.stream().anyMatch((result.out + result.err)::contains);
            assertTrue(result.command.contains("--reveal") || !hasSecret, () -> "a secret from " + result);
            boolean hasTrace = result.err.contains("\tat ");
            assertTrue(result.command.contains("--debug") || !hasTrace, () -> "a stack trace from " + result);
            return result;
        } catch (IOException | InterruptedException e) {
            throw new IllegalStateException(e);
        }
    }

    /**
     * Runs a command on a terminal of 80 columns, which script(1) provides, and answers each prompt when it comes;
     * gives what the terminal showed.
     */
    String converse(int expected, String command, String... promptsAndAnswers) throws Exception {
        Process process = process(List.of("timeout", "--foreground", "120", "script", "-qec",
            "stty rows 24 columns 80; " + command, "/dev/null")).redirectErrorStream(true).start();
        StringBuilder shown = new StringBuilder();
        try (InputStream out = process.getInputStream(); OutputStream in = process.getOutputStream()) {
            int next = 0;
            int answered = 0;
            for (int c = out.read(); c >= 0; c = out.read()) {
                shown.append((char) c);
                if (next < promptsAndAnswers.length && shown.indexOf(promptsAndAnswers[next], answered) >= 0) {
                    answered = shown.length();
                    in.write((promptsAndAnswers[next + 1] + "\n").getBytes(StandardCharsets.UTF_8));
                    in.flush();
                    next += 2;
                }
            }
            assertEquals(promptsAndAnswers.length, next, () -> "prompts of '" + command + "' in\n" + shown);
        }
        assertEquals(expected, process.waitFor(), () -> "exit status of '" + command + "':\n" + shown);
        return shown.toString();
    }

    /** A process where the user stands, with the environment of a bare machine. */
    ProcessBuilder process(List<String> command) {
        ProcessBuilder builder = new ProcessBuilder(command).directory(directory.toFile());
        builder.environment().keySet().removeIf(name -> name.matches("(HBA|LC)_.*|LANG|LANGUAGE|COLUMNS|NO_COLOR"));
        builder.environment().putAll(environment);
        return builder;
    }

    private static String read(Path file) throws IOException {
        return new String(Files.readAllBytes(file), StandardCharsets.UTF_8);
    }

    /** The document without what stands beside its values for readers. */
    JsonElement json(String line) {
        return withoutAsides(run(line + " --json").json());
    }

    /** Members of a document, or of one within it, by their paths: "nodeInfo.alias", "0.state". */
    static String values(JsonElement document, String... paths) {
        List<String> values = new ArrayList<>();
        for (String path : paths) {
            JsonElement value = document;
            for (String name : path.split("\\.")) {
                value = value.isJsonArray() ? value.getAsJsonArray().get(Integer.parseInt(name))
                                            : value.getAsJsonObject().get(name);
            }
            values.add(value.isJsonPrimitive() ? value.getAsString() : value.toString());
        }
        return String.join(" ", values);
    }

    private static JsonElement withoutAsides(JsonElement document) {
        if (document.isJsonArray()) {
            document.getAsJsonArray().forEach(Tool::withoutAsides);
        } else if (document.isJsonObject()) {
            JsonObject object = document.getAsJsonObject();
            object.keySet().removeIf(name -> name.matches(".+(Text|Bytes)")
                && object.has(name.replaceFirst("(Text|Bytes)$", "")));
            object.entrySet().forEach(member -> withoutAsides(member.getValue()));
        }
        return document;
    }

    Path write(String name, String text) throws IOException {
        return Files.writeString(directory.resolve(name), text);
    }

    String readFile(String name) throws IOException {
        return Files.readString(directory.resolve(name));
    }

    /** The file with the settings of all adapters. */
    Path settingsFile() {
        return flash.resolve("settings.db");
    }

    /** A digest of all settings, to see that nothing was written; 0 when nothing ever was. */
    int settings() throws IOException {
        return Files.exists(settingsFile()) ? Arrays.hashCode(Files.readAllBytes(settingsFile())) : 0;
    }

    /** Runs what has to be refused: status 2, nothing on the standard output, nothing written. */
    void refused(String line, String... says) throws IOException {
        int before = settings();
        Result result = run(line).expect(2).says(says);
        assertEquals("", result.out, line);
        assertEquals(before, settings(), line);
    }

    /** Writes the files that the commands of the table name. */
    void writeSampleFiles() throws IOException {
        write("targets.json", "[{\"targetID\": 9, \"nodeInfo\": {\"iSCSIName\": \"iqn.2004-07.com.example:nine\"}}]");
        write("image.bin", "TAVOFW 3.1.0.2\nthe rest of the image");
        write("all.json", "{\"format\": \"hba settings\", \"firmware\": {\"alias\": \"a\"}}");
    }

    /** A document; names and text may stand in single quotes. */
    static JsonElement document(String text, Object... values) {
        return JsonParser.parseString(String.format(text, values));
    }
}
