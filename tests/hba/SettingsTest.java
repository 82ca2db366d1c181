import com.google.gson.JsonArray;
import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import java.io.IOException;
import java.nio.file.Files;
import java.util.List;
import java.util.regex.Pattern;
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

    /** Every field of a target entry, in a document, and as options one of each kind at the end of its range. */
    @Test
    void everyFieldOfATarget() throws IOException {
        String present = object("target show 0 17").toString();
        String changed = Pattern.compile(":(\\d+)(?=[,}])").matcher(present)
            .replaceAll(number -> ":" + (Long.parseLong(number.group(1)) + 1));
        for (String[] text : new String[][] {{"80:00:01:17:00:11", "ff:00:80:7f:01:fe"}, {"array2.farm", "\u00e4"},
                 {"three hundred disks", "zwei Platten"}, {"10.20.0.12", "fe80::1:2"}}) {
            changed = changed.replace(text[0], text[1]);
        }
        JsonObject wanted = Tool.document(changed).getAsJsonObject();
        // These are the adapter's. A target that nobody offers is configured and has no session.
        changes(wanted, Tool.document("{index: 4, targetID: 17, state: 1, targetSessionID: 0}").getAsJsonObject())
            .entrySet().forEach(member -> wanted.add(member.getKey(), member.getValue()));
        tool.write("x.json", "[" + wanted + "]");
        tool.run("target load 0 x.json --yes").expect(0);
        assertEquals(wanted, object("target show 0 17"));
        tool.run(null, "target", "set", "0", "17", "--options=0xfe", "--retry-count=255", "--max-outstanding-r2t=65535",
            "--reserved-flags=4294967295", "--iscsi-options=0x8001", "--alias=", "--default-time2wait=0").expect(0);
        assertEquals(Tool.document("{options: 254, retryCount: 255, maxOutstandingR2T: 65535, reservedFlags: "
            + "4294967295, iSCSIOptions: 32769, alias: '', defaultTime2Wait: 0}"),
            changes(wanted, object("target show 0 17")));
    }

    @Test
    void newTargetsAndFreeSlots() {
        tool.run("target set 3 511 --iscsi-name=iqn.2026-11.example:new --ip-address=10.9.8.7").expect(0);
        assertEquals("1 80:00:00:09:01:ff",
            Tool.values(object("target show 3 511"), "state", "initiatorSessionID"));
        tool.run("target set 3 511 --state=0 --yes").expect(0).shows("Target 511 of adapter 3 was freed.");
        tool.run("target list 3").expect(0).shows("No target is configured.");
        tool.run("target logout 0 5 --yes").expect(0);
        assertEquals("3", Tool.values(object("target show 0 5"), "state"));
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
        tool.run("ping 0 10.20.0.11 --count=7").expect(0).shows("10.20.0.11 answers", "7 packets");
        tool.run("stats reset 0 --yes").expect(0);
        assertEquals("0", Tool.values(object("stats show 0"), "iSCSITxPDUCount"));
    }

    @Test
    void chap() throws IOException {
        JsonArray before = array("chap list 0 --reveal");
        tool.write("secret.txt", "swordfish \u00e9\nnot this line\n");
        // The link of entry 3 cannot be written back whole: nobody is to lose it by changing another entry.
        tool.refused("chap set 0 1 --secret-file=secret.txt --yes", "link of CHAP entry 3 is 261", "--force");
        tool.run("chap set 0 1 --secret-file=secret.txt --force").expect(0);
        tool.run("swordfish 2", "chap", "set", "0", "5", "--name=five", "--flags=0x80", "--link=255",
            "--secret-file=-").expect(0);
        JsonArray table = array("chap list 0 --reveal");
        assertEquals(Tool.document("""
            [{chapName: 'initiator-a', flags: 64, link: 0, chapSecretLength: 12, chapSecretStr: 'swordfish \u00e9'},
             {chapName: '', flags: 0, link: 0, chapSecretLength: 0, chapSecretStr: ''},
             {chapName: 'five', flags: 128, link: 255, chapSecretLength: 11, chapSecretStr: 'swordfish 2'}, %s]""",
            before.get(2)).toString(), List.of(table.get(1), table.get(4), table.get(5), table.get(2)).toString()
                .replace(", {", ",{"));
        tool.run("chap list 0").expect(0).shows("five", "********");
        tool.run("chap clear 0 5 --yes").expect(0);
        assertEquals(4, array("chap list 0 --reveal").size());
    }

    @Test
    void isns() {
        tool.run("isns set 0 --enable-isns-discovery-flag=yes --automatic-discovery-flag=yes "
            + "--server-ip-address=10.22.0.53").expect(0);
        assertEquals(48, array("isns targets 0").size());
        tool.run("isns set 0 --server-ip-address=10.22.0.54").expect(0);
        tool.run("isns targets 0").expect(1).says("0x20000072 ERR_BUFFER_TOO_SMALL");
        tool.run("isns set 0 --enable-isns-discovery-flag=no --yes").expect(0);
        assertEquals("false true",
            Tool.values(object("isns show 0"), "enableiSNSDiscoveryFlag", "automaticDiscoveryFlag"));
    }

    /** With the secrets in the document an adapter that has lost everything gets them back. */
    @Test
    void sessionWithSecrets() throws IOException {
        tool.run("chap set 0 3 --link=7 --yes").expect(0);
        tool.run("export 0 all.json --reveal").expect(0);
        JsonArray secrets = array("chap list 0 --reveal");
        Files.delete(tool.settingsFile());
        tool.run("chap set 0 1 --name=other --force").expect(0);
        tool.run("import 0 all.json --yes").expect(0).shows("Nothing differs.");
        assertEquals(secrets, array("chap list 0 --reveal"));
    }
}
