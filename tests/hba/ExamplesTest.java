import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import org.junit.jupiter.api.Test;

/** The ten tasks of hba-examples(7): the commands of the page, in its order, do what the page says. */
final class ExamplesTest extends ToolTest {
    private final Map<String, List<String>> tasks = new LinkedHashMap<>();
    private final List<String> asked = new ArrayList<>();

    private void readPage() throws IOException {
        List<String> commands = null;
        for (String line : Files.readAllLines(Tool.SOURCES.resolve("java/hba-examples.7"))) {
            if (line.startsWith(".Ss ")) {
                commands = new ArrayList<>();
                tasks.put(line.substring(".Ss ".length()).replaceFirst("\\..*", ""), commands);
            } else if (line.startsWith(".Dl hba ")) {
                commands.add(line.substring(".Dl hba ".length()));
            }
        }
        assertEquals(10, tasks.size());
        tasks.values().forEach(each -> assertTrue(each.size() == 1 || each.size() == 2, each::toString));
    }

    /** Runs a command of a task. What asks says so first, and then has its answer. */
    private Tool.Result run(int task, int command) {
        String line = tasks.get("" + task).get(command - 1);
        Tool.Result result = tool.run(line);
        if (result.status() == 2 && result.err().contains("Give --yes")) {
            asked.add(task + "." + command);
            return tool.run(line + " --yes");
        }
        return result;
    }

    @Test
    void tenTasks() throws IOException {
        readPage();
        tool.write("secret.txt", "sample-secret-one\n");
        tool.writeSampleFiles();

        run(1, 1).expect(1).shows("7 of 8", "no session with target 100");
        run(1, 2).expect(1).says("did not log in to target 100", "nothing answers", "Check the address");

        run(2, 1).expect(0);
        run(2, 2).expect(0).shows("Target 0 of adapter 1 was added.", "It logged in.");

        run(3, 1).expect(0).shows("shelf.disk0035");
        run(3, 2).expect(0).shows("36 targets were added", "36 logged in, 0 did not.");
        assertEquals(5 + 1 + 36, array("target list 1").size());

        run(4, 1).expect(0);
        String settings = tool.readFile("settings.json");
        assertEquals(0, Files.getPosixFilePermissions(tool.directory.resolve("settings.json")).stream()
            .filter(permission -> !permission.name().startsWith("OWNER")).count());
        Path second = Files.createDirectory(tool.folder.resolve("second machine"));
        tool.environment.put("TAVO_ADAPTER_FLASH", second.toString());
        tool.run("target add 1 iqn.2004-07.com.varden.tavo:shelf.disk0400 fd00:24::191 --target-id=400").expect(0);
        run(4, 2).expect(0).shows("Unchanged: firmware; iSNS; targets 2 to 3, 64 to 65, 300.",
            "37 logged in, 0 did not.", "Nothing differs.");
        assertEquals(5 + 1 + 36, array("target list 1").size());
        assertEquals("2", Tool.values(object("target show 1 0"), "state"));
        tool.run("export 1 second.json --reveal").expect(0);
        assertEquals(settings, tool.readFile("second.json"));
        tool.environment.put("TAVO_ADAPTER_FLASH", tool.flash.toString());

        run(5, 1).expect(0).shows("Target 300 of adapter 1 was removed.");
        assertEquals(5 + 36, array("target list 1").size());

        assertEquals(4, run(6, 1).expect(0).out().split("no answer").length);
        assertEquals(4, run(6, 2).expect(0).out().split("Per second").length);

        run(7, 1).expect(0).shows("TAVO DISK 512         500.0 GiB");

        run(8, 1).expect(0);
        run(8, 2).expect(0);
        tool.run("info 1").expect(0).shows("3.1.0.2");

        assertTrue(run(9, 1).expect(1).out().contains("\"verdict\": \"trouble\""));
        tool.run(tasks.get("9").get(0).replace("status", "status 2")).expect(0);

        run(10, 1).expect(0);
        assertFalse(tool.readFile("before.json").contains("sample-secret"));
        tool.run("target remove 1 0 --yes").expect(0);
        tool.run("target rename 1 3 iqn.2004-07.com.varden.tavo:other --yes").expect(0);
        tool.run("target add 1 iqn.2004-07.com.varden.tavo:shelf.disk0400 fd00:24::191").expect(0);
        run(10, 2).expect(0).shows("Nothing differs.");
        tool.run("export 1 after.json").expect(0);
        assertEquals(tool.readFile("before.json"), tool.readFile("after.json"));
        assertEquals(List.of("4.2", "5.1", "8.1", "8.2", "10.2"), asked);
    }
}
