import com.google.gson.JsonElement;
import com.google.gson.JsonParser;
import java.io.File;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Map;
import java.util.TreeMap;

/** Runs the tool as a user would: by its launcher, in a folder of its own, on adapters fresh from the factory. */
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

    Tool() throws IOException {
        folder = Files.createTempDirectory("hba-test");
        flash = Files.createDirectory(folder.resolve("flash"));
        directory = Files.createDirectory(folder.resolve("where the user stands"));
        environment.put("TAVO_ADAPTER_FLASH", flash.toString());
    }

    /** What one run printed, and its exit status. */
    static final class Result {
        final String command;
        final int status;
        final String out;
        final String err;

        Result(String command, int status, String out, String err) {
            this.command = command;
            this.status = status;
            this.out = out;
            this.err = err;
        }

        Result expect(int expected) {
            Check.equal(command + "\n" + out + err + "exit status", expected, status);
            return this;
        }

        /** The document on the standard output; nothing else may stand there. */
        JsonElement json() {
            expect(0);
            return JsonParser.parseString(out);
        }

        Result says(String... parts) {
            for (String part : parts) {
                Check.that("standard error of '" + command + "' holds '" + part + "':\n" + err, err.contains(part));
            }
            return this;
        }

        Result shows(String... parts) {
            for (String part : parts) {
                Check.that("output of '" + command + "' holds '" + part + "':\n" + out, out.contains(part));
            }
            return this;
        }
    }

    /** Runs a command line; arguments are separated by blanks. */
    Result run(String line) {
        return run(null, line.split(" "));
    }

    Result run(String input, String... arguments) {
        List<String> command = new ArrayList<>(List.of(launcher.toString()));
        command.addAll(Arrays.asList(arguments));
        return execute(input, command);
    }

    /** Runs any command in this tool's surroundings. */
    Result execute(String input, List<String> command) {
        try {
            Path in = folder.resolve("in");
            Path out = folder.resolve("out");
            Path err = folder.resolve("err");
            Files.writeString(in, input == null ? "" : input);
            ProcessBuilder builder = new ProcessBuilder(command).directory(directory.toFile())
                .redirectInput(in.toFile()).redirectOutput(out.toFile()).redirectError(err.toFile());
            builder.environment().keySet().removeIf(name -> name.startsWith("HBA_") || name.startsWith("LC_"));
            builder.environment().put("LANG", "C");
            builder.environment().putAll(environment);
            int status = builder.start().waitFor();
            Result result = new Result(String.join(" ", command.subList(1, command.size())), status, read(out),
                read(err));
            if (!result.command.contains("--reveal")) {
                for (String secret : SECRETS) {
                    Check.that("no secret in what '" + result.command + "' printed",
                        !(result.out + result.err).contains(secret));
                }
            }
            return result;
        } catch (IOException | InterruptedException e) {
            throw new IllegalStateException(e);
        }
    }

    private static String read(Path file) throws IOException {
        return new String(Files.readAllBytes(file), StandardCharsets.UTF_8);
    }

    JsonElement json(String line) {
        return run(line + " --json").json();
    }

    Path write(String name, String text) throws IOException {
        return Files.writeString(directory.resolve(name), text);
    }

    String readFile(String name) throws IOException {
        return Files.readString(directory.resolve(name));
    }

    /** All bytes of all settings, to see that nothing was written. */
    String settings() throws IOException {
        StringBuilder all = new StringBuilder();
        File[] files = flash.toFile().listFiles((dir, name) -> name.endsWith(".flash"));
        Arrays.sort(files);
        for (File file : files) {
            all.append(file.getName()).append(Arrays.hashCode(Files.readAllBytes(file.toPath()))).append('\n');
        }
        return all.toString();
    }

    /** Every command with arguments that fit adapter 0, from the table in java/README.md, without the word hba. */
    static Map<String, String> methods() throws IOException {
        Map<String, String> commands = new TreeMap<>();
        for (String line : Files.readAllLines(SOURCES.resolve("java/README.md"))) {
            String[] cells = line.split("`");
            if (line.startsWith("| `") && cells.length == 5 && cells[3].startsWith("hba ")) {
                commands.put(cells[1], cells[3].substring("hba ".length()));
            }
        }
        return commands;
    }

    /** Writes the files that the commands of the table name. */
    void writeSampleFiles() throws IOException {
        write("targets.json", "[{\"targetID\": 9, \"nodeInfo\": {\"alias\": \"nine\"}}]");
        write("image.bin", "TAVOFW 3.1.0.2\nthe rest of the image");
    }
}
