import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.google.gson.JsonArray;
import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.PosixFilePermissions;
import java.util.List;
import org.junit.jupiter.api.Test;

/** Targets that portals offer, the choice of the management library, and what the doctor finds. */
final class DiscoveryTest extends ToolTest {
    private static JsonObject element(JsonArray list, int index) {
        return list.get(index).getAsJsonObject();
    }

    @Test
    void discover() throws IOException {
        JsonArray before = tool.json("target list 0").getAsJsonArray();
        JsonArray found = tool.json("discover 0 10.24.1.3 --chap-index=1").getAsJsonArray();
        assertEquals(1, found.size());
        JsonObject disk = element(found, 0);
        assertTrue(disk.toString().contains("iqn.2004-07.com.varden.tavo:shelf.disk0002"), disk.toString());
        assertEquals("2 2 1", disk.get("targetID") + " " + disk.get("state") + " " + disk.get("chapIndex"));
        assertEquals(before.size() + 1, tool.json("target list 0").getAsJsonArray().size());

        tool.run("discover 0 10.24.1.3").expect(0).shows("1 target is known", "0 of them new");
        assertEquals(before.size() + 1, tool.json("target list 0").getAsJsonArray().size());

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
        assertTrue(tool.json("target show 0 7").toString().contains("example:a b"));
    }

    private static String result(JsonElement findings, String check) {
        for (JsonElement finding : findings.getAsJsonArray()) {
            if (finding.getAsJsonObject().get("check").getAsString().equals(check)) {
                return finding.getAsJsonObject().get("result").getAsString();
            }
        }
        return "not checked";
    }

    @Test
    void doctor() throws IOException {
        tool.run("doctor").expect(0).shows("Java VM", "Tavo software adapter", "0 to 3, 525 targets",
            tool.flash.toString());
        tool.run("target set 0 1 --alias=new").expect(0);
        Files.setPosixFilePermissions(tool.settingsFile(), PosixFilePermissions.fromString("rw-r--r--"));
        JsonElement findings = tool.json("doctor");
        assertEquals("ok ok warning", result(findings, "bridge") + " " + result(findings, "adapters") + " "
            + result(findings, "stored settings"));

        Path bridge = tool.folder.resolve("bridge.so");
        tool.environment.put("HBA_BRIDGE", bridge.toString());
        tool.run("doctor").expect(1).shows("FAILED", bridge.toString(), "does not exist");
        tool.environment.remove("HBA_BRIDGE");
        tool.environment.put("TAVO_ADAPTER_FLASH", "relative");
        tool.run("doctor").expect(1).shows("FAILED", "relative", "absolute path");
    }

    @Test
    void currentFolderGone() {
        tool.execute(null, List.of("/bin/sh", "-c", "mkdir gone; cd gone; rmdir ../gone; '" + tool.launcher
            + "' version")).expect(2).says("no longer exists");
    }
}
