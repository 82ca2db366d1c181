import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.varden.tavo.iscsi.jni.ApiWrapper;
import java.io.IOException;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
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

    /** The commands that may follow a word, each with that word. */
    private Set<String> words(String before) {
        Set<String> words = new TreeSet<>();
        String[] question = before.isEmpty() ? new String[] {"__complete", ""}
                                             : new String[] {"__complete", before, ""};
        Matcher candidates = Pattern.compile("^([a-z]+)\t", Pattern.MULTILINE)
            .matcher(tool.run(null, question).expect(0).out());
        while (candidates.find()) {
            words.add((before + " " + candidates.group(1)).strip());
        }
        return words;
    }

    /** Everything that there is stands in the manual and is completed, and has its help. */
    @Test
    void helpManualAndCompletion() throws IOException {
        String manual = Files.readString(Tool.SOURCES.resolve("java/hba.1"));
        Set<String> names = new TreeSet<>();
        for (String name : words("")) {
            Set<String> further = words(name);
            names.addAll(further.isEmpty() ? Set.of(name) : further);
        }
        assertTrue(names.size() > 35, names::toString);
        names.forEach(name -> assertTrue(manual.contains("Cm " + name), name));
        for (String name : List.of("target set", "stats reset", "discover")) {
            tool.run("help " + name).expect(0).shows("Usage: hba " + name, "--json", "Exit status:");
        }
    }
}
