import java.io.IOException;
import java.util.List;

/** Wrong input is named with what is permitted, ends with status 2, and changes nothing. */
public final class InputTest {
    private final Tool tool = new Tool();

    public InputTest() throws IOException {
        // A settings file to look at.
        tool.run("chap set 0 3 --link=7 --yes").expect(0);
    }

    private void refused(String line, String... says) throws IOException {
        String before = tool.settings();
        Tool.Result result = tool.run(line).expect(2).says(says);
        Check.equal("output of '" + line + "'", "", result.out);
        Check.that("no stack trace:\n" + result.err, !result.err.contains("\tat "));
        Check.equal("settings after '" + line + "'", before, tool.settings());
    }

    public void options() throws IOException {
        refused("show 32", "DEV", "'32'", "0 to 31");
        refused("show -1");
        refused("show", "DEV");
        refused("show 0 1", "1");
        refused("nonsense", "nonsense");
        refused("target", "command is missing");
        refused("target show 0 512", "TARGET", "0 to 511");
        refused("target set 0 1 --port-number=65536", "--port-number", "'65536'", "0 to 65535");
        refused("target set 0 1 --port-number=-1", "--port-number", "0 to 65535");
        refused("target set 0 1 --retry-count=256", "--retry-count", "0 to 255");
        refused("target set 0 1 --reserved-flags=0x100000000", "--reserved-flags", "0 to 4294967295");
        refused("target set 0 1 --keep-alive-to=+5", "--keep-alive-to", "'+5'");
        refused("target set 0 1 --keep-alive-to=ten", "--keep-alive-to", "'ten'", "0 to 65535 s");
        refused("target set 0 1 --ip-address=10.0.0.256", "--ip-address", "'10.0.0.256'");
        refused("target set 0 1 --ip-address=localhost", "--ip-address", "'localhost'");
        refused("target set 0 1 --initiator-session-id=00:11:22", "--initiator-session-id", "6 hexadecimal bytes");
        refused("target set 0 1", "nothing to change");
        refused("isns set 0 --automatic-discovery-flag=perhaps", "--automatic-discovery-flag", "yes or no");
        refused("ping 0 example.org", "ADDRESS", "'example.org'");
        refused("ping 0 10.0.0.1 --count=70000", "--count", "0 to 65535");
        refused("lun show 0 1 16384", "LUN", "0 to 16383");
        refused("chap set 0 0 --name=x --yes", "INDEX", "1 to 127");
        refused("chap set 0 128 --name=x --yes", "INDEX", "0 to 127");
        refused("chap set 0 1 --link=256 --yes", "--link", "0 to 255");
        refused("stats show 0 --times 3", "--times");
        refused("firmware update 0 missing.bin --yes", "missing.bin");
    }

    /** Text is measured in the bytes that reach the adapter. */
    public void longText() throws IOException {
        String name = "n".repeat(256);
        tool.run("target set 0 1 --iscsi-name=" + name).expect(0);
        Check.equal("a name of 256 bytes", name, tool.json("target show 0 1").getAsJsonObject()
            .getAsJsonObject("nodeInfo").get("iSCSIName").getAsString());
        refused("target set 0 1 --iscsi-name=" + name + "n", "--iscsi-name", "257 bytes", "at most 256");
        refused("firmware set 0 --alias=" + "\u00e4".repeat(16) + "a", "--alias", "33 bytes", "at most 32");
        tool.run("firmware set 0 --alias=" + "\u00e4".repeat(16)).expect(0);
        refused("target set 0 1 --target-address=" + "a".repeat(33), "--target-address", "at most 32");
        refused("chap set 0 1 --name=" + name + "n --yes", "--name", "at most 256");
        tool.write("long", "swordfish" + "x".repeat(92));
        refused("chap set 0 1 --secret-file=long --yes", "CHAP secret", "101 bytes", "at most 100");
        refused("chap set 0 1 --secret-file=nothing --yes", "nothing", "no such file");
    }

    /** An argument is what it says, and what it says does not steer a terminal. */
    public void oddText() {
        tool.run(null, "target", "set", "0", "1", "--alias", "@all.json", "--target-address=").expect(0);
        tool.run("target show 0 1").expect(0).shows("@all.json");
        tool.run(null, "target", "set", "0", "1", "--alias=a\u001b[2Jb").expect(0);
        tool.run("target show 0 1").expect(0).shows("a?[2Jb");
        Check.equal("the alias", "a\u001b[2Jb", tool.json("target show 0 1").getAsJsonObject()
            .getAsJsonObject("nodeInfo").get("alias").getAsString());
    }

    /** What destroys or interrupts is not done without a terminal or --yes. */
    public void confirmations() throws IOException {
        tool.writeSampleFiles();
        tool.run("export 0 all.json").expect(0);
        for (String line : List.of("firmware restore 0", "firmware update 0 image.bin", "reset 0", "stats reset 0",
                 "target logout 0 1", "import 0 all.json", "chap clear 0 1")) {
            refused(line, "--yes");
        }
        refused("chap set 0 1 --secret", "no terminal");
    }

    public void documents() throws IOException {
        tool.write("broken.json", "[{");
        refused("target load 0 broken.json", "broken.json is not a JSON document");
        refused("target load 0 absent.json", "absent.json", "no such file");
        String[][] targets = {
            {"{}", "an array is needed"},
            {"[5]", "targets[0]: an object is needed"},
            {"[{}]", "targets[0]: targetID is missing"},
            {"[{\"targetID\": 512}]", "targets[0].targetID", "0 to 511"},
            {"[{\"targetID\": 1.5}]", "targets[0].targetID", "'1.5'"},
            {"[{\"targetID\": 8}, {\"targetID\": 8}]", "targets[1].targetID: target 8 is there twice"},
            {"[{\"targetID\": 8, \"portNumbr\": 1}]", "targets[0].portNumbr: there is no such field"},
            {"[{\"targetID\": 8, \"deviceEntry\": {\"portNumber\": 70000}}]", "targets[0].deviceEntry.portNumber",
                "'70000'", "0 to 65535"},
            {"[{\"targetID\": 8, \"deviceEntry\": {\"portNumber\": true}}]", "deviceEntry.portNumber"},
            {"[{\"targetID\": 8, \"nodeInfo\": {\"alias\": 5}}]", "nodeInfo.alias", "at most 32 bytes"},
            {"[{\"targetID\": 8, \"nodeInfo\": {\"IPAddress\": \"here\"}}]", "nodeInfo.IPAddress", "'here'"},
            {"[{\"targetID\": 8, \"nodeInfo\": []}]", "nodeInfo: an object is needed"},
        };
        for (String[] target : targets) {
            tool.write("targets.json", target[0]);
            String[] says = List.of(target).subList(1, target.length).toArray(new String[0]);
            refused("target load 0 targets.json", says);
            if (target[0].startsWith("[")) {
                tool.write("all.json", "{\"format\": \"hba settings\", \"targets\": " + target[0] + "}");
                refused("import 0 all.json --yes", says);
            }
        }
        String[][] documents = {
            {"[]", "the document: an object is needed"},
            {"{}", "format", "hba settings"},
            {"{\"format\": \"hba settings\", \"target\": []}", "target: there is no such section"},
            {"{\"format\": \"hba settings\", \"firmware\": {\"initFW\": {\"FWOptions\": -1}}}",
                "firmware.initFW.FWOptions", "0 to 65535"},
            {"{\"format\": \"hba settings\", \"iSNS\": {\"automaticDiscoveryFlag\": 1}}", "iSNS.auto", "yes or no"},
            {"{\"format\": \"hba settings\", \"CHAPTable\": [{\"chapName\": \"a\"}]}", "CHAPTable[0]", "entry 0 empty"},
            {"{\"format\": \"hba settings\", \"CHAPTable\": [{}, {\"chapSecretStr\": \"swordfish\", "
                + "\"chapSecret\": \"00\"}]}", "CHAPTable[1]", "exclude each other"},
            {"{\"format\": \"hba settings\", \"CHAPTable\": [{}, {\"chapSecret\": \"xx\"}]}", "CHAPTable[1].chap"},
            // A fault in the last section keeps the first from being written, too.
            {"{\"format\": \"hba settings\", \"firmware\": {\"alias\": \"new\"}, \"iSNS\": 1}", "iSNS: an object"},
        };
        for (String[] document : documents) {
            tool.write("all.json", document[0]);
            refused("import 0 all.json --yes", List.of(document).subList(1, document.length).toArray(new String[0]));
        }
    }
}
