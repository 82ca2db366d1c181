import com.varden.tavo.iscsi.jni.ApiWrapper;
import java.io.IOException;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.Map;
import java.util.TreeMap;
import java.util.regex.Pattern;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;

/** Every native method is reached by the command that the table in java/README.md names. */
final class MethodsTest extends ToolTest {
    @Test
    void everyMethodHasItsCommand() throws IOException {
        Map<String, String> commands = new TreeMap<>();
        Pattern.compile("(?m)^\\| `(\\w+)` \\| `hba (.+)` \\|$")
            .matcher(Files.readString(Tool.SOURCES.resolve("java/README.md"))).results()
            .forEach(row -> commands.put(row.group(1), row.group(2)));
        List<String> natives = Stream.of(ApiWrapper.class.getDeclaredMethods())
            .filter(method -> Modifier.isNative(method.getModifiers())).map(Method::getName).sorted().toList();
        assertEquals(39, natives.size());
        assertEquals(natives, List.copyOf(commands.keySet()));

        tool.writeSampleFiles();
        // The VM logs each native method when it is called for the first time.
        Path log = tool.folder.resolve("calls.log");
        tool.environment.put("HBA_JAVA_OPTIONS", "-Xlog:jni+resolve=debug:file=" + log);
        for (Map.Entry<String, String> row : commands.entrySet()) {
            Files.deleteIfExists(log);
            tool.run(row.getValue()).expect(0);
            String calls = Files.readString(log);
            assertTrue(Pattern.compile("jni\\.ApiWrapper\\." + row.getKey() + "\\b").matcher(calls).find(),
                () -> "'hba " + row.getValue() + "' does not call " + row.getKey() + ":\n" + calls);
        }
    }
}
