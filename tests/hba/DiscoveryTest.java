import com.google.gson.JsonArray;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.PosixFilePermissions;
import java.util.ArrayList;
import java.util.List;
import org.junit.jupiter.api.Test;

/** Targets that portals offer, the choice of the management library, and what the doctor finds. */
final class DiscoveryTest extends ToolTest {
    @Test
    void discover() throws IOException {
        int before = array("target list 0").size();
        JsonArray found = array("discover 0 10.24.1.3 --chap-index=1");
        assertEquals(1, found.size());
        assertEquals("2 2 1 iqn.2004-07.com.varden.tavo:shelf.disk0002",
            Tool.values(found, "0.targetID", "0.state", "0.chapIndex", "0.nodeInfo.iSCSIName"));
        assertEquals(before + 1, array("target list 0").size());

        tool.run("discover 0 10.24.1.3").expect(0).shows("1 target is known", "0 of them new");
        assertEquals(before + 1, array("target list 0").size());

        int settings = tool.settings();
        tool.run("discover 0 10.20.0.14").expect(1).says("ERR_UNREACHABLE", "10.20.0.14, port 3260");
        tool.run("discover 0 10.24.1.3 --port 3261").expect(1).says("ERR_UNREACHABLE", "port 3261");
        assertEquals(settings, tool.settings());
        tool.refused("discover 0 portal.example", "portal.example");
        tool.run("discover 2 10.24.1.3").expect(1).says("ERR_DATABASE_FULL");
    }

    @Test
    void library() throws IOException {
        tool.run("--library software version").expect(0).shows("Tavo software adapter");
        tool.run("version --library=software --json").json();
        assertEquals(tool.run("target list 0").out(), tool.run("target --library software list 0").out());
        tool.run("version --library=/no/such/folder").expect(3).says("/no/such/folder", "--library");
        tool.refused("version --library", "needs a value");
        // Where an argument is a value, it stays one.
        tool.run(null, "target", "set", "0", "7", "--iscsi-name=iqn.2004-07.com.example:a b", "--force").expect(0);
        assertEquals("iqn.2004-07.com.example:a b", Tool.values(object("target show 0 7"), "nodeInfo.iSCSIName"));
    }

    @Test
    void doctor() throws IOException {
        tool.run("doctor").expect(0).shows("Java VM", "Tavo software adapter", "0 to 3, 525 targets",
            tool.flash.toString());
        tool.run("target set 0 1 --alias=new").expect(0);
        Files.setPosixFilePermissions(tool.settingsFile(), PosixFilePermissions.fromString("rw-r--r--"));
        List<String> findings = new ArrayList<>();
        array("doctor").forEach(finding -> findings.add(Tool.values(finding, "check", "result")));
        assertTrue(findings.containsAll(List.of("bridge ok", "adapters ok", "stored settings warning")),
            findings::toString);

        Path bridge = tool.folder.resolve("bridge.so");
        tool.environment.put("HBA_BRIDGE", bridge.toString());
        tool.run("doctor").expect(1).shows("FAILED", bridge.toString(), "does not exist");
        tool.environment.remove("HBA_BRIDGE");
        tool.environment.put("TAVO_ADAPTER_FLASH", "relative");
        tool.run("doctor").expect(1).shows("FAILED", "relative", "absolute path");
    }

    @Test
    void currentFolderGone() {
        tool.script("mkdir gone; cd gone; rmdir ../gone; \"$0\" version").expect(2).says("no longer exists");
    }
}
