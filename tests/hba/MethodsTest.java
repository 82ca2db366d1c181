import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

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
import java.util.stream.Collectors;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;

/** Every native method is reached by the command that the table in java/README.md names. */
final class MethodsTest extends ToolTest {
    @Test
    void everyMethodHasItsCommand() throws IOException {
        Set<String> natives = Stream.of(ApiWrapper.class.getDeclaredMethods())
            .filter(method -> Modifier.isNative(method.getModifiers())).map(Method::getName)
            .collect(Collectors.toCollection(TreeSet::new));
        assertEquals(39, natives.size());
        assertEquals(natives, Tool.methods().keySet());

        tool.writeSampleFiles();
        // The VM logs each native method when it is called for the first time.
        Path log = tool.folder.resolve("calls.log");
        tool.environment.put("HBA_JAVA_OPTIONS", "-Xlog:jni+resolve=debug:file=" + log);
        for (Map.Entry<String, String> row : Tool.methods().entrySet()) {
            Files.deleteIfExists(log);
            tool.run(row.getValue()).expect(0);
            String calls = Files.readString(log);
            assertTrue(Pattern.compile("jni\\.ApiWrapper\\." + row.getKey() + "\\b").matcher(calls).find(),
                () -> "'hba " + row.getValue() + "' does not call " + row.getKey() + ":\n" + calls);
        }
    }

    /** Help on every level, and everything that there is stands in the manual and in the completion script. */
    @Test
    void helpManualAndCompletion() throws IOException {
        String manual = Files.readString(Tool.SOURCES.resolve("java/hba.1"));
        String completion = tool.run("completion").expect(0).out();
        Pattern entry = Pattern.compile("^  ([a-z]+) +[A-Z]", Pattern.MULTILINE);
        Matcher groups = entry.matcher(tool.run("--help").expect(0).out());
        int commands = 0;
        while (groups.find()) {
            String help = tool.run(groups.group(1) + " --help").expect(0).out();
            boolean isGroup = help.contains("Commands:");
            Matcher members = entry.matcher(isGroup ? help : "  " + groups.group(1) + "  X");
            while (members.find()) {
                String name = isGroup ? groups.group(1) + " " + members.group(1) : groups.group(1);
                commands++;
                assertTrue(manual.contains("Cm " + name), name);
                assertTrue(completion.contains("_picocli_hba_" + name.replace(' ', '_') + "()"), name);
                tool.run("help " + name).expect(0).shows("Usage: hba " + name, "--json", "Exit status:");
            }
        }
        assertTrue(commands > 35, "commands found: " + commands);
    }
}
