import com.varden.tavo.iscsi.jni.ApiWrapper;
import java.io.IOException;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Map;
import java.util.Set;
import java.util.TreeSet;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

/** Every native method is reached by the command that the table in java/README.md names. */
public final class MethodsTest {
    // The VM logs each native method when it is called for the first time.
    private static final Pattern LINKED = Pattern.compile("com\\.varden\\.tavo\\.iscsi\\.jni\\.ApiWrapper\\.(\\w+)");

    private final Tool tool = new Tool();

    public MethodsTest() throws IOException {}

    public void everyMethodHasItsCommand() throws IOException {
        Set<String> natives = new TreeSet<>();
        for (Method method : ApiWrapper.class.getDeclaredMethods()) {
            if (Modifier.isNative(method.getModifiers())) {
                natives.add(method.getName());
            }
        }
        Check.equal("number of native methods", 39, natives.size());
        Map<String, String> table = Tool.methods();
        Check.equal("methods in the table", natives, table.keySet());

        tool.writeSampleFiles();
        for (Map.Entry<String, String> row : table.entrySet()) {
            Path log = tool.folder.resolve("calls.log");
            Files.deleteIfExists(log);
            tool.environment.put("HBA_JAVA_OPTIONS", "-Xlog:jni+resolve=debug:file=" + log);
            tool.run(row.getValue()).expect(0);
            Set<String> called = new TreeSet<>();
            Matcher matcher = LINKED.matcher(Files.readString(log));
            while (matcher.find()) {
                called.add(matcher.group(1));
            }
            Check.that("'hba " + row.getValue() + "' calls " + row.getKey() + ", not only " + called,
                called.contains(row.getKey()));
        }
    }

    /** Help on every level, and everything that there is stands in the manual and in the completion script. */
    public void helpManualAndCompletion() throws IOException {
        String manual = Files.readString(Tool.SOURCES.resolve("java/hba.1"));
        String completion = tool.run("completion").expect(0).out;
        Pattern entry = Pattern.compile("^  ([a-z]+) +[A-Z]", Pattern.MULTILINE);
        Matcher groups = entry.matcher(tool.run("--help").expect(0).out);
        int commands = 0;
        while (groups.find()) {
            String help = tool.run(groups.group(1) + " --help").expect(0).out;
            boolean isGroup = help.contains("Commands:");
            Matcher members = entry.matcher(isGroup ? help : "  " + groups.group(1) + "  X");
            while (members.find()) {
                String name = isGroup ? groups.group(1) + " " + members.group(1) : groups.group(1);
                commands++;
                Check.that("'" + name + "' in the manual", manual.contains("Cm " + name));
                Check.that("'" + name + "' in the completion",
                    completion.contains("_picocli_hba_" + name.replace(' ', '_') + "()"));
                Tool.Result own = tool.run("help " + name).expect(0);
                own.shows("Usage: hba " + name, "--json", "Exit status:");
            }
        }
        Check.that("commands were found: " + commands, commands > 35);
    }
}
