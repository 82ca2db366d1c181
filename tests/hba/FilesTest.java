import com.google.gson.JsonParser;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.PosixFilePermissions;
import java.util.List;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.ValueSource;

/** The files that export writes and import reads: where they may stand, who may read them, and that none gets lost. */
final class FilesTest extends ToolTest {
    private Path file() {
        return tool.directory.resolve("x.json");
    }

    private String permissions() throws IOException {
        return PosixFilePermissions.toString(Files.getPosixFilePermissions(file()));
    }

    private long filesBeside() throws IOException {
        try (Stream<Path> files = Files.list(tool.directory)) {
            return files.count();
        }
    }

    /** Nothing but a regular file is written to, and an old one only after a question. */
    @Test
    void whereFilesMayStand() throws Exception {
        Path other = tool.write("other.json", "precious");
        Files.createSymbolicLink(tool.directory.resolve("link"), other);
        tool.execute(null, List.of("mkfifo", "fifo")).expect(0);
        for (String name : List.of("link", "fifo", "/dev/null", ".")) {
            tool.refused("export 0 --yes " + name, "not a regular file");
        }
        tool.refused("export 0 /nosuch/folder/x.json", "there is no folder /nosuch/folder");
        tool.refused("export 0 other.json", "replaces", "other.json", "--yes");
        assertEquals("precious", Files.readString(other));
        assertEquals(3, filesBeside());
    }

    @ParameterizedTest
    @CsvSource({"027, rw-r-----", "000, rw-rw-rw-"})
    void whoMayRead(String umask, String expected) throws IOException {
        tool.script("umask " + umask + "; exec \"$0\" export 0 x.json").expect(0);
        assertEquals(expected, permissions());
        Files.setPosixFilePermissions(file(), PosixFilePermissions.fromString("rw-r--r--"));
        tool.run("export 0 x.json --yes").expect(0);
        assertEquals("rw-r--r--", permissions());
        tool.run("export 0 x.json --yes --reveal").expect(0);
        assertEquals("rw-------", permissions());
    }

    /** A signal leaves the old file and no draft. */
    @ParameterizedTest
    @ValueSource(strings = {"INT", "TERM", "HUP"})
    void interrupted(String signal) throws Exception {
        int status = 0;
        for (int i = 0; i < 20 && status == 0; i++) {
            Files.writeString(file(), "precious");
            Process process = tool.start("export 2 x.json --yes");
            while (process.isAlive() && filesBeside() == 1) {
                Thread.onSpinWait();
            }
            tool.signal(process, signal);
            process.getInputStream().readAllBytes();
            status = process.waitFor();
            assertEquals(1, filesBeside());
        }
        assertTrue(status > 128, "no signal came in time");
        assertEquals("precious", Files.readString(file()));
    }

    /** A power cut leaves the old document or the new one: contents, rename and folder reach the disk in order. */
    @Test
    void durable() throws IOException {
        Path log = tool.folder.resolve("order.log");
        tool.environment.put("LD_PRELOAD", System.getProperty("tavo.write.order"));
        tool.environment.put("WRITE_ORDER_LOG", log.toString());
        tool.run("export 0 x.json").expect(0);
        String folder = tool.directory.toString();
        List<String> order = Files.readAllLines(log).stream().filter(line -> line.contains(folder)).toList();
        assertEquals(3, order.size(), order::toString);
        String draft = order.get(0).substring("sync ".length());
        assertEquals(List.of("sync " + draft, "rename " + draft + " to " + file(), "sync " + folder), order);
    }

    /** What goes out can come in again: what cannot be written back is named, stays out, and stays as it is. */
    @Test
    void whatIsExportedCanBeImported() throws IOException {
        tool.run("export 0 x.json --reveal").expect(0).says("CHAPTable[3].link: 261", "0 to 255", "left out");
        assertFalse(Tool.values(JsonParser.parseString(Files.readString(file())), "CHAPTable.3").contains("link"));
        tool.run("import 0 x.json --yes").expect(0).shows("Nothing differs.");
        assertEquals("261", Tool.values(array("chap list 0"), "3.link"));
        // The table is written as a whole: a change of another entry would cut this one's link.
        Files.writeString(file(), Files.readString(file()).replace("initiator-b", "initiator-c"));
        tool.refused("import 0 x.json --yes", "CHAPTable[3].link", "261", "0 to 255");
    }
}
