import com.google.gson.JsonObject;
import com.google.gson.JsonParser;
import java.io.BufferedReader;
import java.util.List;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

/** Lists as rows: which columns, in which order, for whom; and the status, once and again and again. */
final class ListingTest extends ToolTest {
    @Test
    void columnsAndOrder() throws Exception {
        assertEquals("511  5\n100  5\n42   5\n",
            tool.run("target list 0 --columns=target-id,retryCount --sort=-targetID --no-headers").expect(0).out()
                .replaceFirst("(?s)\\n17 .*", "\n"));
        tool.run("target list 0 --columns=+alias --sort=state,-alias").expect(0).shows(
            "IP address  Port  Alias\n100     configured (1)");
        assertEquals("targetID,state,maxBurstSize,alias\n0,logged in,262144,\"a \"\"b\"\", c\"\n",
            named("a \"b\", c").run("target list 0 --csv --columns=targetID,state,maxBurstSize,alias").expect(0).out()
                .replaceFirst("(?s)\\n1,.*", "\n"));
        assertEquals("IPAddress\n10.20.0.9\n10.20.0.11\n", named("x").run(
            "target list 0 --csv --columns=IPAddress --sort=IPAddress").expect(0).out()
                .replaceFirst("(?s)11\\n.*", "11\n"));
        // Wide characters take two columns, marks on others none.
        named("\u65e5\u672ce\u0301").run("target list 0 --columns=alias,IPAddress").expect(0).shows(
            "\n\u65e5\u672ce\u0301" + " ".repeat(29) + "10.20.0.11\n",
            "\nan alias of thirty-two character  10.20.0.13\n");
        tool.refused("target list 0 --columns=targetId,stat", "no column 'stat'", "Did you mean 'state'?");
        tool.refused("discover 0 10.24.1.1 --sort=", "no column ''");
        tool.refused("discover 0 10.24.1.1 --csv --json", "do not go with --json");
    }

    private Tool named(String alias) {
        tool.run(null, "target", "set", "0", "0", "--alias=" + alias, "--yes").expect(0);
        tool.run("target set 0 100 --ip-address=10.20.0.9").expect(0);
        return tool;
    }

    /** Every command that prints a table writes it for programs too: as many values as headings, and no sentences. */
    @ParameterizedTest
    @ValueSource(strings = {"status", "adapters", "target list 0", "discover 0 10.24.1.1", "lun list 0 6",
        "stats show 1", "log errors 0", "log arp 0", "chap list 0", "isns targets 1"})
    void forPrograms(String line) {
        Tool.Result result = tool.run(line + " --columns=all --csv");
        List<String> rows = result.out().lines().toList();
        assertTrue(rows.size() > (line.startsWith("log") ? 0 : 1), result::toString);
        for (String row : rows) {
            assertEquals(rows.get(0).split(",", -1).length,
                row.replaceAll("\"[^\"]*\"", "").split(",", -1).length, row);
        }
    }

    @Test
    void status() {
        tool.run("status").expect(1).shows("7 of 8", "512 of 512", "adapter 0: no session with target 100",
            "adapter 1: no session with target 300");
        tool.run("target set 0 5 --chap-index=0 --yes").expect(0);
        tool.run("firmware set 0 --alias=x").expect(0);
        assertEquals("trouble 8 6 1 [\"no session with targets 5, 100\"]",
            Tool.values(JsonParser.parseString(tool.run("status 0 --json").expect(1).out()), "verdict",
                "adapters.0.targetCount", "adapters.0.sessionCount", "adapters.0.errorCount", "adapters.0.troubles"));
        // What was logged out of on request, and a port that nobody uses, are no trouble; nor is a reset to come.
        tool.run("target logout 0 5 --yes").expect(0);
        tool.run("target set 0 100 --state=0 --yes").expect(0);
        tool.run("status 0").expect(0).shows("6 of 7", "All is well.");
        tool.run("status 3").expect(0).shows("no link (2)", "All is well.");
        tool.run("status 31").expect(1).says("adapter 31 cannot be opened");
    }

    @Test
    void watch() throws Exception {
        List<String> looks = tool.run("stats show 0 --watch=0.1 --times=3 --json").expect(0).out().lines().toList();
        assertEquals(3, looks.size());
        JsonObject last = JsonParser.parseString(looks.get(2)).getAsJsonObject();
        assertEquals(33, last.getAsJsonObject("perSecond").size());
        assertEquals("0.0", Tool.values(last, "perSecond.MACTxFramesCount"));
        assertEquals(2, tool.run("stats show 0 --watch 0.1 --times 2").expect(0).shows("Per second").out()
            .split("MAC frames sent", -1).length - 1);
        // It ends at an interrupt, with whole documents, and when its reader has gone.
        Process process = tool.start("status --watch=0.1 --json");
        BufferedReader documents = process.inputReader();
        JsonParser.parseString(documents.readLine());
        tool.signal(process, "INT");
        documents.lines().forEach(JsonParser::parseString);
        assertEquals(130, process.waitFor());
        tool.script("\"$0\" status --watch=0.1 --json | head -n 2; exit ${PIPESTATUS[0]}").expect(141);
    }
}
