import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.google.gson.JsonArray;
import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import java.io.IOException;
import java.nio.file.Files;
import org.junit.jupiter.api.Test;

/** What is written is read back, field by field, and nothing else changes. */
final class SettingsTest extends ToolTest {
    /** The members of a document that differ from another's, with their new values. */
    private static JsonObject changes(JsonObject before, JsonObject after) {
        JsonObject changes = new JsonObject();
        for (String name : after.keySet()) {
            JsonElement old = before.get(name);
            if (old != null && old.isJsonObject()) {
                JsonObject inner = changes(old.getAsJsonObject(), after.getAsJsonObject(name));
                inner.entrySet().forEach(member -> changes.add(member.getKey(), member.getValue()));
            } else if (!after.get(name).equals(old)) {
                changes.add(name, after.get(name));
            }
        }
        return changes;
    }

    private JsonObject object(String line) {
        return tool.json(line).getAsJsonObject();
    }

    private JsonArray array(String line) {
        return tool.json(line).getAsJsonArray();
    }

    /** Every option of "target set" but the state, each with a value of its own, at the ends of the ranges. */
    @Test
    void everyFieldOfATarget() {
        JsonObject before = object("target show 0 17");
        tool.run(null, "target", "set", "0", "17", "--yes", "--force", "--options=0xfe",
            "--control=255",
            "--exe-count=65535", "--target-session-id=40001", "--initiator-session-id=ff:00:80:7F:01:fe",
            "--reserved-flags=0x80000001", "--ddb-link=40002", "--chap-index=40003",
            "--max-tx-data-segment-len=40004", "--target-portal-group-id=40005",
            "--iscsi-name=iqn.2026-11.example:\u00e4", "--alias=zwei Platten", "--ip-address=fe80::1:2",
            "--portal-count=40006", "--target-address=there",
            "--port-number=65534", "--device-type=40007", "--iscsi-options=0x8001", "--tcp-options=40008",
            "--ip-options=40009", "--execution-throttle=40010", "--retry-count=200", "--retry-delay=255",
            "--max-rx-data-segment-len=40011", "--first-burst-size=40012", "--max-burst-size=40013",
            "--max-outstanding-r2t=40014", "--default-time2wait=40015", "--default-time2retain=40016",
            "--keep-alive-to=40017", "--task-management-timeout=40018").expect(0);
        assertEquals(Tool.document("""
            {state: 1, options: 254, control: 255, exeCount: 65535, targetSessionID: 40001,
             initiatorSessionID: 'ff:00:80:7f:01:fe', reservedFlags: 2147483649, DDBLink: 40002, chapIndex: 40003,
             maxTxDataSegmentLen: 40004, targetPortalGroupID: 40005, iSCSIName: 'iqn.2026-11.example:\u00e4',
             alias: 'zwei Platten', IPAddress: 'fe80::1:2', portalCount: 40006, targetAddress: 'there',
             portNumber: 65534, deviceType: 40007, iSCSIOptions: 32769, TCPOptions: 40008, IPOptions: 40009,
             executionThrottle: 40010, retryCount: 200, retryDelay: 255, maxRxDataSegmentLen: 40011,
             firstBurstSize: 40012, maxBurstSize: 40013, maxOutstandingR2T: 40014, defaultTime2Wait: 40015,
             defaultTime2Retain: 40016, keepAliveTO: 40017, taskManagementTimeout: 40018}"""),
            changes(before, object("target show 0 17")));
    }

    @Test
    void newTargetsAndFreeSlots() {
        tool.run("target set 3 511 --iscsi-name=iqn.2026-11.example:new --ip-address=10.9.8.7").expect(0);
        JsonArray targets = array("target list 3");
        assertEquals(1, targets.size());
        JsonObject target = targets.get(0).getAsJsonObject();
        assertEquals("511 1", target.get("targetID") + " " + target.get("state"));
        assertEquals("80:00:00:09:01:ff", target.get("initiatorSessionID").getAsString());
        tool.run("target set 3 511 --state=0 --yes").expect(0).shows("Target 511 of adapter 3 was freed.");
        tool.run("target list 3").expect(0).shows("No target is configured.");
        tool.run("target logout 0 5 --yes").expect(0);
        assertEquals(3, object("target show 0 5").get("state").getAsInt());
        tool.run("target logout 0 7 --yes").expect(1).says("0x20000103 ERR_NO_SUCH_ENTRY");
        // From one adapter to another, as in the manual.
        tool.run(tool.run("target list 0 --json").out(), "target", "load", "3", "-").expect(0)
            .shows("8 targets of adapter 3 were written.", "Nothing differs.");
        // There the entries are only configured, since the adapter has no link.
        assertEquals(array("target list 0").toString().replace("\"state\":2", "\"state\":1"),
            array("target list 3").toString());
    }

    @Test
    void firmware() {
        JsonObject before = object("firmware show 0");
        tool.run("firmware set 0 --yes --iscsi-name=iqn.2026-11.example:me --alias=me --ip-address=10.1.2.3 "
            + "--subnet-mask=255.255.0.0 --gateway=10.1.0.1 --primary-dns=fd00::53 --slp-da=0.0.0.0 "
            + "--fw-options=0xffff --add-fw-options=40001 --retry-count=0").expect(0);
        JsonObject changed = object("firmware show 0");
        assertEquals(Tool.document("""
            {iSCSIName: 'iqn.2026-11.example:me', alias: 'me', IPAddress: '10.1.2.3', subnetMask: '255.255.0.0',
             gateway: '10.1.0.1', primaryDNS: 'fd00::53', slpDa: '0.0.0.0', FWOptions: 65535, addFWOptions: 40001,
             retryCount: 0}"""), changes(before, changed));
        // What is not named is kept, the names too.
        tool.run("firmware set 0 --gateway=10.1.0.2 --yes").expect(0);
        assertEquals(Tool.document("{gateway: '10.1.0.2'}"), changes(changed, object("firmware show 0")));
        tool.run("firmware restore 0 --yes").expect(0);
        assertEquals(object("firmware defaults 0"), object("firmware show 0").get("initFW"));
    }

    @Test
    void service() throws IOException {
        tool.writeSampleFiles();
        tool.run("firmware update 0 image.bin --yes").expect(0);
        tool.run("info 0").shows("3.0.1.27");
        tool.run("reset 0 --yes").expect(0);
        tool.run("info 0").shows("3.1.0.2");
        tool.run("crash 0 crash.txt").expect(0).shows(tool.directory.resolve("crash.txt").toString());
        assertFalse(tool.readFile("crash.txt").isEmpty());
        tool.run("crash 0 no/such/folder.txt").expect(1).says("0x2000010a ERR_OUTPUT_FILE");

        tool.run("ping 0 10.20.0.11 --count=7").expect(0).shows("10.20.0.11 answers", "7 packets");
        tool.run("ping 1 fd00:20::11").expect(0);
        tool.run("ping 0 10.99.0.1").expect(1).says("ping of 10.99.0.1", "0x2000010b ERR_UNREACHABLE");
        tool.run("stats show 0").expect(0);
        tool.run("stats reset 0 --yes").expect(0);
        assertEquals(0, object("stats show 0").get("iSCSITxPDUCount").getAsInt());

        tool.run("target set 0 100 --alias=again").expect(0);
        JsonArray errors = array("log errors 0");
        JsonObject last = errors.get(errors.size() - 1).getAsJsonObject();
        assertEquals("100 1", last.get("deviceIndex") + " " + last.get("entryType"));
        assertEquals(17, array("log arp 0").get(0).getAsJsonObject().get("MACAddress").getAsString().length());
    }

    @Test
    void trace() throws IOException {
        tool.run("show 0 --trace trace.txt").expect(0);
        tool.run("info 0 --trace=trace.txt --json").json();
        String trace = tool.readFile("trace.txt");
        assertTrue(trace.contains("SDGetInitFW") && trace.contains("SDGetHbaDeviceChipPropertyiSCSI"), trace);
        tool.run("info 0 --trace no/such/folder.txt").expect(1).says("trace to", "no/such/folder.txt");
    }

    private JsonArray chapTable() {
        return tool.run("chap list 0 --json --reveal").json().getAsJsonArray();
    }

    @Test
    void chap() throws IOException {
        JsonArray before = chapTable();
        tool.write("secret.txt", "swordfish \u00e9\nnot this line\n");
        // The link of entry 3 cannot be written back whole: nobody is to lose it by changing another entry.
        tool.run("chap set 0 1 --secret-file=secret.txt --yes").expect(2)
            .says("link of CHAP entry 3 is 261", "--force");
        assertEquals(before, chapTable());
        tool.run("chap set 0 1 --secret-file=secret.txt --force").expect(0);
        tool.run("swordfish 2", "chap", "set", "0", "5", "--name=five", "--flags=0x80", "--link=255",
            "--secret-file=-").expect(0);
        JsonArray table = chapTable();
        assertEquals(6, table.size());
        assertEquals(Tool.document("{chapName: 'initiator-a', flags: 64, link: 0, chapSecretLength: 12, "
            + "chapSecretStr: 'swordfish \u00e9'}"), table.get(1));
        assertEquals(before.get(2), table.get(2));
        assertEquals("", table.get(4).getAsJsonObject().get("chapName").getAsString());
        assertEquals(Tool.document("{chapName: 'five', flags: 128, link: 255, chapSecretLength: 11, "
            + "chapSecretStr: 'swordfish 2'}"), table.get(5));
        tool.run("chap list 0").expect(0).shows("five", "********");
        tool.run("chap clear 0 5 --yes").expect(0);
        assertEquals(4, chapTable().size());
    }

    @Test
    void isns() {
        tool.run("isns set 0 --enable-isns-discovery-flag=yes --automatic-discovery-flag=yes "
            + "--server-ip-address=10.22.0.53").expect(0);
        assertEquals(48, array("isns targets 0").size());
        tool.run("isns set 0 --server-ip-address=10.20.0.53").expect(0);
        assertEquals(12, array("isns targets 0").size());
        tool.run("isns set 0 --server-ip-address=10.22.0.54").expect(0);
        tool.run("isns targets 0").expect(1).says("0x20000072 ERR_BUFFER_TOO_SMALL");
        tool.run("isns set 0 --hba-iscsi-name=iqn.2026-11.example:me").expect(0);
        tool.run("isns set 0 --enable-isns-discovery-flag=no --yes").expect(0);
        JsonObject settings = object("isns show 0");
        assertFalse(settings.get("enableiSNSDiscoveryFlag").getAsBoolean());
        assertTrue(settings.get("automaticDiscoveryFlag").getAsBoolean());
    }

    /** Ten targets are written, all is exported, the defaults are restored, all is imported: nothing differs. */
    @Test
    void session() throws IOException {
        JsonArray ten = new JsonArray();
        for (int i = 200; i < 210; i++) {
            ten.add(Tool.document("{targetID: %d, nodeInfo: {iSCSIName: 'iqn.2026-11.example:disk%d', IPAddress: "
                + "'10.30.0.%d'}}", i, i, i));
        }
        tool.write("ten.json", ten.toString());
        tool.run("target load 0 ten.json").expect(0).shows("10 targets", "Nothing differs.");
        tool.run("export 0 before.json").expect(0);
        tool.run("firmware restore 0 --yes").expect(0);
        tool.run("target set 0 203 --alias=changed").expect(0);
        tool.run("import 0 before.json --compare").expect(1).shows("differences:",
            "targets[targetID 203].nodeInfo.alias: - in the file, changed on the adapter", "firmware.gateway: ");
        JsonObject report = object("import 0 before.json --yes");
        assertEquals(0, report.getAsJsonArray("differences").size(), report::toString);
        tool.run("export 0 after.json").expect(0);
        assertEquals(tool.readFile("before.json"), tool.readFile("after.json"));
        tool.run("target set 0 300 --iscsi-name=iqn.2026-11.example:more").expect(0);
        tool.run("import 0 before.json --yes").expect(1).shows("targets[targetID 300]: only on the adapter");
    }

    /** With the secrets in the document an adapter that has lost everything gets them back. */
    @Test
    void sessionWithSecrets() throws IOException {
        tool.run("chap set 0 3 --link=7 --yes").expect(0);
        tool.run("export 0 hidden.json").expect(0);
        tool.run("export 0 all.json --reveal").expect(0);
        JsonArray secrets = chapTable();
        Files.delete(tool.settingsFile());
        tool.run("chap set 0 1 --name=other --force").expect(0);
        tool.refused("import 0 hidden.json --yes", "CHAPTable[1].chapSecretStr: the secret is hidden");
        tool.run("import 0 all.json --yes").expect(0).shows("Nothing differs.");
        assertEquals(secrets, chapTable());
    }

    /** All 512 entries of an adapter go out and in again. */
    @Test
    void largestSession() {
        tool.run("export 2 large.json").expect(0);
        tool.run("target set 2 0 --state=0 --yes").expect(0);
        tool.run("target set 2 511 --alias=changed").expect(0);
        tool.run("import 2 large.json --yes").expect(0).shows("Nothing differs.");
        assertEquals(512, array("target list 2").size());
    }
}
