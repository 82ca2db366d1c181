import com.google.gson.JsonParser;
import java.io.IOException;
import java.nio.channels.FileChannel;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;
import java.util.ArrayList;
import java.util.List;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

/** What a writer may count on: it is asked first, overtaken by nobody, and told what is there afterwards. */
final class WritesTest extends ToolTest {
    private static final String FAULTY = System.getProperty("tavo.faulty.adapter");

    // Without a terminal nothing is lost that --yes does not allow, and the message names it.
    @ParameterizedTest
    @CsvSource(delimiter = '|', textBlock = """
        target set 0 0 --state=0                       | frees target 0 (iqn.2004-07.com.varden.tavo:array1.boot)
        target set 0 1 --port-number=3261              | changes target 1 (iqn
        target set 0 1 --state=3                       | ends the session with target 1
        target load 0 free.json                        | frees target 5
        target load 0 change.json                      | changes target 6
        import 0 all.json                              | frees target 5
        firmware set 0 --ip-address=10.1.2.3           | IP address from 10.20.0.5 to 10.1.2.3
        firmware set 0 --iscsi-name=iqn.2004-07.com.example:me | own name from iqn.2004-07.com
        isns set 1 --enable-isns-discovery-flag=no     | switches iSNS discovery off
        chap set 1 1 --no-secret                       | removes the secret of CHAP entry 1
        chap clear 1 1                                 | empties CHAP entry 1
        firmware restore 0                             | replaces the settings of adapter 0
        firmware update 0 image.bin                    | replaces the firmware of adapter 0
        reset 0                                        | resets adapter 0
        stats reset 0                                  | sets the counters of adapter 0
        target logout 0 1                              | ends the session with target 1""")
    void asksBeforeItDestroys(String line, String loss) throws IOException {
        tool.writeSampleFiles();
        tool.write("free.json", "[{\"targetID\": 5, \"state\": 0}]");
        tool.write("change.json", "[{\"targetID\": 6, \"nodeInfo\": {\"alias\": \"other\"}}]");
        tool.write("all.json", "{\"format\": \"hba settings\", \"targets\": [{\"targetID\": 5, \"state\": 0}]}");
        tool.refused(line, loss, "Give --yes");
    }

    /** Nobody's write gets lost, and each who adds a target gets an ID of its own. */
    @Test
    void manyWritersAtOnce() throws Exception {
        List<String> lines = new ArrayList<>();
        for (int i = 1; i <= 4; i++) {
            lines.add("chap set 1 " + (10 + i) + " --name=writer-" + i);
            lines.add("target add 1 iqn.2004-07.com.example:added-" + i + " fd00:24::" + i);
        }
        tool.runAtOnce(lines);
        String written = array("chap list 1") + " " + array("target list 1");
        for (int i = 1; i <= 4; i++) {
            assertTrue(written.contains("\"writer-" + i) && written.contains(":added-" + i), written);
        }
    }

    /** A writer that does not come to an end is named; what lies in the lock's place is not followed or waited for. */
    @Test
    void lock() throws Exception {
        Path lock = tool.flash.resolve("adapter2.hba.lock");
        tool.run("chap set 2 1 --name=first").expect(0);
        try (FileChannel channel = FileChannel.open(lock, StandardOpenOption.WRITE)) {
            channel.lock();
            tool.run("chap set 2 1 --name=second").expect(1).says("process " + ProcessHandle.current().pid());
            tool.run("chap list 2").expect(0).shows("first");
            tool.run("chap set 1 1 --name=other").expect(0);
        }
        Files.delete(lock);
        Path precious = tool.write("precious", "");
        Files.createSymbolicLink(lock, precious);
        tool.run("chap set 2 1 --name=second").expect(1).says("symbolic link");
        Files.delete(lock);
        tool.execute(null, List.of("mkfifo", lock.toString())).expect(0);
        tool.run("chap set 2 1 --name=second").expect(1).says("not a regular file");
        tool.run("chap list 2").expect(0).shows("first");
    }

    /** An adapter that says yes and keeps its old settings is found out. */
    @ParameterizedTest
    @CsvSource(delimiter = '|', textBlock = """
        chap set 1 1 --name=new                        | CHAPTable[1].chapName: new written
        firmware set 1 --alias=new                     | firmware.alias: new written
        isns set 1 --server-ip-address=fd00::9          | iSNS.serverIPAddress: fd00::9 written""")
    void readsBack(String line, String says) {
        tool.environment.put("LD_PRELOAD", FAULTY);
        assertEquals("", tool.run(line).expect(1).says("what was read back differs", says).out());
    }

    /** A signal in the middle: what was written and what was not. */
    @ParameterizedTest
    @CsvSource({"INT, 130", "TERM, 143"})
    void interrupted(String signal, int status) throws Exception {
        tool.run(tool.run("target list 2 --json").out(), "target", "load", "3", "-").expect(0);
        tool.write("large.json", tool.run("target list 2 --json").out().replace("pool.disk", "other.disk"));
        tool.environment.put("LD_PRELOAD", FAULTY);
        Process process = tool.start("target load 3 large.json --yes");
        // Some entries have been written when the store's log has grown.
        Path log = tool.flash.resolve("settings.db-wal");
        while (process.isAlive() && !(Files.exists(log) && Files.size(log) > 100_000)) {
            Thread.sleep(20);
        }
        tool.signal(process, signal);
        String said = new String(process.getInputStream().readAllBytes());
        assertEquals(status, process.waitFor(), said);
        assertTrue(said.matches("(?s).*interrupted: the targets 0 to \\d+ \\(\\d+ of 512\\) were "
            + "written, the targets \\d+ to 511 were not.*"), said);
    }

    /** How many logged in, and for each reason the targets that did not. */
    @Test
    void logins() throws IOException {
        tool.run("target set 0 100 --alias=x").expect(0).shows("It did not log in: nothing answers at this address.");
        tool.run("target set 0 0 --alias=x").expect(0).shows("It logged in.");
        tool.write("mixed.json", """
            [{"targetID": 1, "nodeInfo": {"alias": "x"}}, {"targetID": 100}, {"targetID": 17, "state": 3},
             {"targetID": 7, "nodeInfo": {"iSCSIName": "iqn.2004-07.com.example:none", "IPAddress": "10.20.0.11"}}]""");
        tool.run("target load 0 mixed.json --yes").expect(0).shows("1 logged in, 2 did not:",
            "  target 100: nothing answers at this address", "  target 7: the login was refused: 0203h not found");
        assertEquals(Tool.document("{sessions: 1, failed: [{targetID: 7, reason: 'the login was refused: 0203h not "
            + "found'}, {targetID: 100, reason: 'nothing answers at this address'}]}"),
            object("target load 0 mixed.json --yes").get("logins"));
        tool.run(tool.run("target list 0 --json").out(), "target", "load", "3", "-").expect(0)
            .shows("0 logged in,", ": the adapter has no link");
    }

    @Test
    void failuresForProgramsAndForPeople() {
        assertEquals("2 BAD_INPUT", Tool.values(JsonParser.parseString(tool.run("target show 0 512 --json").expect(2)
            .err()), "error.status", "error.name"));
        // The bridge's own lines stand beside it.
        String error = tool.run("ping 0 10.99.0.1 --json").expect(1).err().replaceAll("(?m)^[^{].*", "");
        assertEquals(0x2000010bL + " ERR_UNREACHABLE",
            Tool.values(JsonParser.parseString(error), "error.status", "error.name"));
        tool.run("target lst 0").expect(2).says("no command 'hba target lst'", "Did you mean", "list");
        tool.run("tagret list 0").expect(2).says("Did you mean", "target");
        tool.run("target set 0 1 --alais=x").expect(2).says("no option '--alais", "Did you mean", "--alias");
        tool.run("help nosuch").expect(2).says("no command 'hba nosuch'");
        tool.script("\"$0\" target show 0 $(printf '\\344')").expect(2).says("not text in UTF-8");
        // A reader that has seen enough is no failure to speak of.
        assertEquals("", tool.script("\"$0\" show 2 | head -1; exit ${PIPESTATUS[0]}").expect(141).err());
    }

    /** Nothing that an adapter, a target or a document says steers the terminal. */
    @Test
    void textDoesNotSteer() throws IOException {
        String steering = "a\u001bb\u009bc\u202ed\u2028e";
        tool.run(null, "target", "set", "0", "7", "--force", "--alias=" + steering).expect(0);
        tool.run("target show 0 7").expect(0).shows("a?b?c?d?e");
        Tool.Result json = tool.run("target show 0 7 --json").expect(0).shows("a\\u001bb\\u009bc\\u202ed\\u2028e");
        assertEquals(steering, Tool.values(json.json(), "nodeInfo.alias"));
        tool.write("odd.json", "[{\"targetID\": 7, \"x" + steering.substring(2) + "\": 1}]");
        tool.refused("target load 0 odd.json", "xb?c?d?e: there is no such field");
    }
}
