import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

/** Questions, secrets, tables and progress on a terminal. */
final class TerminalTest extends ToolTest {
    private static final String RED = "\033[31m";

    private String converse(int expected, String line, String... promptsAndAnswers) throws Exception {
        return tool.converse(expected, "exec '" + tool.launcher + "' " + line, promptsAndAnswers);
    }

    @Test
    void questions() throws Exception {
        assertTrue(converse(1, "firmware restore 0", "[y/N] ", "n").contains("nothing was done"));
        tool.run("firmware show 0").expect(0).shows("10.20.0.5");
        converse(0, "firmware restore 0", "[y/N] ", "y");
        assertFalse(tool.run("firmware show 0").expect(0).out().contains("10.20.0.5"));
        tool.write("x.json", "precious");
        converse(1, "export 0 x.json", "replaces " + tool.directory.resolve("x.json") + ". Continue? [y/N] ", "n");
        assertEquals("precious", tool.readFile("x.json"));
    }

    @Test
    void secretIsTypedUnseen() throws Exception {
        String shown = converse(
            0, "chap set 1 1 --secret --yes", "CHAP secret: ", "swordfish", "CHAP secret again: ", "swordfish");
        assertFalse(shown.contains("swordfish"), shown);
        tool.run("chap list 1 --reveal").expect(0).shows("swordfish");
        converse(2, "chap set 1 1 --secret --yes", "secret: ", "swordfish", "again: ", "swordfisk");
    }

    /** Output and help fit the terminal, however wide it is; elsewhere nothing is cut. */
    @ParameterizedTest
    @ValueSource(strings = {"adapters", "show 0", "show 1", "target list 0", "target portal 0 511",
        "stats show 1", "chap list 0 --reveal", "isns targets 1", "--help", "target set --help", "chap set --help"})
    void width(String line) throws Exception {
        tool.environment.put("NO_COLOR", "1");
        for (int columns : line.endsWith("--help") ? new int[] {80} : new int[] {80, 60}) {
            String surroundings = columns == 80 ? "" : "COLUMNS=" + columns + " ";
            String shown = tool.converse(0, surroundings + "exec '" + tool.launcher + "' " + line);
            assertFalse(shown.isEmpty(), line);
            shown.lines().forEach(text -> assertTrue(text.length() <= columns, text));
        }
    }

    /** A list takes all of the width that the terminal itself tells. */
    @Test
    void allOfTheWidth() throws Exception {
        tool.environment.put("NO_COLOR", "1");
        String shown = tool.converse(0, "stty columns 101; exec '" + tool.launcher + "' target list 0");
        assertEquals(101, shown.lines().mapToInt(String::length).max().orElse(0), shown);
    }

    @Test
    void trouble() throws Exception {
        assertTrue(converse(0, "target list 0").contains(RED + "configured (1)"));
        assertTrue(converse(1, "status 0").contains(RED + "7 of 8"));
        tool.run("target list 0").expect(0).shows("mnopqrstuvwxyzabcdefghijklmnopqrstuvwxyzabcdefghijklm  10.20");
        assertFalse(tool.run("target list 0").out().contains("\033"));
        tool.environment.put("NO_COLOR", "1");
        assertFalse(converse(0, "target list 0").contains("\033"));
    }

    /** Each look is written over the one before, and what the terminal cannot hold is left out. */
    @Test
    void watchInPlace() throws Exception {
        String[] looks = converse(0, "target list 2 --watch=0.1 --times=3").split("\033\\[H", -1);
        assertEquals(4, looks.length);
        for (int i = 1; i < looks.length; i++) {
            assertEquals(23, looks[i].lines().filter(line -> line.contains("\033[K")).count(), looks[i]);
            assertTrue(looks[i].startsWith("Target  State"), looks[i]);
        }
    }

    @Test
    void progress() throws Exception {
        // All 512 entries of an adapter change.
        String before = tool.run("export 2 -").expect(0).out();
        tool.write("large.json", before.replace("pool.disk", "other.disk"));
        String shown = converse(0, "import 2 large.json --yes");
        assertTrue(shown.contains("writing targets [##") && shown.contains("] 256 of 512, "), shown);
        assertTrue(shown.contains(" s left\r\033[KThe settings of"), shown);
        assertFalse(tool.run(before, "import", "2", "-", "--yes").expect(0).err().contains("["));
        tool.writeSampleFiles();
        shown = converse(0, "firmware update 0 image.bin --yes");
        assertTrue(shown.contains("writing the image [#-"), shown);
        assertTrue(converse(0, "reset 0 --yes").contains("\033[KAdapter 0 was reset."), shown);
    }
}
