import com.google.gson.JsonArray;
import com.google.gson.JsonObject;
import java.io.IOException;
import java.util.regex.MatchResult;
import java.util.regex.Pattern;
import java.util.stream.Collectors;
import org.junit.jupiter.api.Test;

/** What an administrator does with targets and documents: one command each, and its effect. */
final class VerbsTest extends ToolTest {
    private static final String SHELF = "iqn.2004-07.com.varden.tavo:shelf.disk";

    @Test
    void addRenameRemove() throws IOException {
        assertEquals("[2] 1", Tool.values(tool.json("target add 0 " + SHELF
            + "0001 10.24.1.2 --alias=one --chap-index=1"), "targetIDs", "logins.sessions"));
        assertEquals("2 1 " + SHELF + "0001 one 10.24.1.2 1 10.24.1.2 3260", Tool.values(object("target show 0 2"),
            "state", "chapIndex", "nodeInfo.iSCSIName", "nodeInfo.alias", "nodeInfo.IPAddress", "nodeInfo.portalCount",
            "deviceEntry.targetAddress", "deviceEntry.portNumber"));
        tool.run("target add 1 " + SHELF + "0002 2001:db8:1111:2222:3333:4444:5555:6666 --port=860 --target-id=9")
            .expect(0).shows("Target 9 of adapter 1 was added.", "It did not log in: nothing answers");

        tool.refused("target add 0 " + SHELF + "0001 10.24.1.2", "target 2", "the same name, address and port",
            "--force");
        tool.refused("target add 0 disk 10.24.1.2", "'disk' is no iSCSI name");
        tool.refused("target add 0 " + SHELF + "0001 ::", "no address of a target");
        tool.refused("target add 0 " + SHELF + "0003", "ADDRESS");
        tool.refused("target add 0 " + SHELF + "0003 10.24.1.4 --port=0", "1 to 65535");
        tool.refused("target add 0 " + SHELF + "0003 10.24.1.4 --chap-index=9", "CHAP entry 9 has no secret");
        tool.run("target add 0 " + SHELF + "0003 10.24.1.4 --target-id=5").expect(1).says("array2.many", "already");
        tool.run("target add 2 " + SHELF + "0003 10.24.1.4").expect(1).says("ERR_DATABASE_FULL", "hba target remove");

        tool.refused("target rename 0 2 " + SHELF + "0002", "changes target 2", "Give --yes");
        tool.run("target rename 0 2 " + SHELF + "0002 --yes").expect(0).shows("is now " + SHELF + "0002",
            "It did not log in: the login was refused: 0203h");
        tool.refused("target remove 0 2", "frees target 2 (" + SHELF + "0002)", "Give --yes");
        tool.run("target remove 0 2 --yes").expect(0).shows("Target 2 of adapter 0 was removed.");
        for (String verb : new String[] {"remove 0 2", "rename 0 2 " + SHELF + "0001", "login 0 2", "logout 0 2"}) {
            tool.run("target " + verb + " --yes").expect(1).says("adapter 0 has no target 2");
        }
    }

    @Test
    void sessions() throws IOException {
        tool.refused("target logout 0 1", "ends the session with target 1");
        tool.run("target logout 0 1 --yes").expect(0);
        assertEquals("3", Tool.values(object("target show 0 1"), "state"));
        tool.run("target login 0 1").expect(0).shows("logged in to target 1.");
        assertEquals("2", Tool.values(object("target show 0 1"), "state"));
        int settings = tool.settings();
        tool.run("target login 0 1").expect(0).shows("already");
        assertEquals(settings, tool.settings());
        // It shows a session until somebody asks the target something.
        tool.run("target login 0 100").expect(1).says("did not log in to target 100", "nothing answers");
    }

    @Test
    void isnsAdd() throws IOException {
        tool.refused("isns add 1", "or give --all");
        tool.run("isns add 1 " + SHELF + "0035 iqn.2004-07.com.example:none").expect(1)
            .says("found no target iqn.2004-07.com.example:none");
        assertEquals(0, tool.settings());
        tool.run("isns add 1 " + SHELF + "0035 " + SHELF + "0001").expect(0).shows("2 targets were added to adapter 1",
            "2 logged in");
        assertEquals(SHELF + "0001 shelf disk 1 fd00:24::2", Tool.values(object("target show 1 0"),
            "nodeInfo.iSCSIName", "nodeInfo.alias", "nodeInfo.IPAddress"));
        assertEquals(34, object("isns add 1 --all").getAsJsonArray("targetIDs").size());
        tool.run("isns add 1 --all").expect(0).shows("0 targets were added to adapter 1, 36 were configured already.");
        assertEquals(5 + 36, array("target list 1").size());
        tool.run("isns add 2 --all").expect(1).says("room for 0 more targets, and 48 would be new");
    }

    @Test
    void units() throws IOException {
        tool.run("lun list 0 1").expect(0).shows("TAVO DISK 4096          1.0 TiB", "2.0 TiB or more", "512 bytes");
        JsonArray units = object("lun list 0 6").getAsJsonArray("units");
        assertEquals(161, units.size());
        assertEquals("16383 VARDEN   21474836480 null", Tool.values(units.get(160), "targetInfo.LUN",
            "SCSIInqInfo.vendorID", "capacity", "failure"));
        // The unit that a target without units is given refuses to say anything.
        assertTrue(tool.run("lun list 0 42").expect(0).out().matches("(?s).*\n0 +- +- +-\n"));
        tool.refused("lun list 0 1 --rescan", "interrupts the session with target 1");
        tool.run("target logout 0 1 --yes").expect(0);
        tool.run("lun list 0 1").expect(1).says("ERR_NO_SUCH_TARGET");
        tool.run("lun list 0 1 --rescan").expect(0).shows("500.0 GiB");
        assertEquals("2", Tool.values(object("target show 0 1"), "state"));
    }

    /** What an import would do is what it does, and nothing more; with --prune the adapter then equals the document. */
    @Test
    void importWritesWhatDiffers() throws IOException {
        tool.run("export 0 before.json").expect(0);
        tool.run("target add 0 " + SHELF + "0001 10.24.1.2").expect(0);
        tool.run("target remove 0 5 --yes").expect(0);
        tool.run("target set 0 17 --alias=changed").expect(0);
        tool.run("target set 0 42 --alias=changed").expect(0);
        tool.run("firmware restore 0 --yes").expect(0);
        int settings = tool.settings();
        tool.run("import 0 before.json --compare").expect(1).shows("firmware.gateway: 10.20.0.1 in the file, - on",
            "targets[targetID 42].nodeInfo.alias: nothing behind it in the file, changed on the adapter");
        tool.run("import 0 before.json --dry-run").expect(0).shows("targets[targetID 5]: is added",
            "Only on the adapter, and staying there without --prune: target 2.", "Nothing was written.");
        JsonObject plan = object("import 0 before.json --dry-run --prune --trace=trace.txt");
        assertEquals("[\"CHAPTable\",\"iSNS\",\"targets 0 to 1, 6, 100, 511\"] [] []",
            Tool.values(plan, "unchanged", "refusals", "onlyOnAdapter"));
        assertTrue(plan.toString().contains(("""
            "targets[targetID 2]: is removed (%s0001)",\
            "targets[targetID 5]: is added (iqn.2004-07.com.varden.tavo:array2.many)",\
            "targets[targetID 17].nodeInfo.alias: changed becomes three hundred disks",""").formatted(SHELF)),
            plan::toString);
        tool.refused("import 0 before.json --prune", "overwrites the settings of adapter 0", "frees target 2 (" + SHELF
            + "0001): its settings are lost, its session ends", "changes target 17", "gateway from - to 10.20.0.1");
        tool.refused("import 0 before.json --prune --compare", "--compare");
        assertEquals(settings, tool.settings());
        assertEquals("[2,5,17,42] [] " + plan.get("unchanged"), Tool.values(
            object("import 0 before.json --prune --yes --trace=trace.txt"), "targetIDs", "differences", "unchanged"));
        // The trace has both, and only the second one writes.
        assertEquals("SDEnableDebugTraceiSCSI SDEnableDebugTraceiSCSI SDSetInitFW" + " SDSetDDBEntry".repeat(4),
            Pattern.compile("SD(Enable|Set)\\w+").matcher(tool.readFile("trace.txt")).results()
                .map(MatchResult::group).collect(Collectors.joining(" ")));
        tool.run("export 0 after.json").expect(0);
        assertEquals(tool.readFile("before.json"), tool.readFile("after.json"));
        // Where nothing changes, nobody is asked; what is only on the adapter differs all the same.
        settings = tool.settings();
        tool.run("import 0 before.json").expect(0).shows("Nothing was written to adapter 0.", "Nothing differs.");
        assertEquals(settings, tool.settings());
        tool.run("target add 0 " + SHELF + "0001 10.24.1.2").expect(0);
        tool.run("import 0 before.json").expect(1).shows("targets[targetID 2]: only on the adapter");
    }

    /** Secrets that are hidden hinder a write to another adapter, and the comparison of nothing else. */
    @Test
    void documentWithoutSecrets() throws IOException {
        tool.run("export 0 hidden.json").expect(0);
        String hidden = "CHAPTable[1].chapSecretStr: the secret is hidden";
        Tool.Result plan = tool.run("import 1 hidden.json --dry-run").expect(1).shows("becomes initiator-a",
            "targets[targetID 17]: is added", "It is refused as long as", hidden);
        assertFalse(plan.out().contains("secrets differ"));
        tool.run("import 1 hidden.json --compare").expect(1).shows("CHAPTable[1].chapName: initiator-a in the file");
        tool.refused("import 1 hidden.json --yes", hidden);
    }
}
