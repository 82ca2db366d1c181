import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

/** Wrong input is named with what is permitted, ends with status 2, and changes nothing. */
final class InputTest extends ToolTest {
    private static final String SEPARATOR = " & ";

    // What destroys or interrupts is not done without a terminal or --yes.
    @ParameterizedTest
    @CsvSource(delimiter = '|', quoteCharacter = '`', textBlock = """
        show 32                                         | DEV & '32' & 0 to 31
        show -1                                         | -1
        show                                            | DEV
        show 0 1                                        | 1
        nonsense                                        | nonsense
        target                                          | command is missing
        target show 0 512                               | TARGET & 0 to 511
        target set 0 1 --port-number=65536              | --port-number & '65536' & 0 to 65535
        target set 0 1 --port-number=-1                 | --port-number & 0 to 65535
        target set 0 1 --retry-count=256                | --retry-count & 0 to 255
        target set 0 1 --reserved-flags=0x100000000     | --reserved-flags & 0 to 4294967295
        target set 0 1 --keep-alive-to=+5               | --keep-alive-to & '+5'
        target set 0 1 --keep-alive-to=ten              | --keep-alive-to & 'ten' & 0 to 65535 s
        target set 0 1 --ip-address=10.0.0.256          | --ip-address & '10.0.0.256'
        target set 0 1 --ip-address=localhost           | --ip-address & 'localhost'
        target set 0 1 --initiator-session-id=00:11:22  | --initiator-session-id & 6 hexadecimal bytes
        target set 0 1                                  | nothing to change
        isns set 0 --automatic-discovery-flag=perhaps   | --automatic-discovery-flag & yes or no
        ping 0 example.org                              | ADDRESS & 'example.org'
        ping 0 10.0.0.1 --count=70000                   | --count & 0 to 65535
        lun show 0 1 16384                              | LUN & 0 to 16383
        chap set 0 0 --name=x --yes                     | INDEX & 1 to 127
        chap set 0 128 --name=x --yes                   | INDEX & 1 to 127
        chap set 0 1 --link=256 --yes                   | --link & 0 to 255
        chap set 0 1 --secret                           | no terminal
        chap set 0 1 --secret-file=nothing --yes        | nothing & no such file
        stats show 0 --times 3                          | --times
        firmware update 0 missing.bin --yes             | missing.bin
        target load 0 absent.json                       | absent.json & no such file
        firmware restore 0                              | --yes
        firmware update 0 image.bin                     | --yes
        reset 0                                         | --yes
        stats reset 0                                   | --yes
        target logout 0 1                               | --yes
        import 0 all.json                               | --yes
        chap clear 0 1                                  | --yes""")
    void commandLines(String line, String says) throws IOException {
        tool.writeSampleFiles();
        tool.refused(line, says.split(SEPARATOR));
    }

    @ParameterizedTest
    @CsvSource(delimiter = '|', quoteCharacter = '`', textBlock = """
        [{                                              | x.json is not a JSON document & line 1 column
        {}                                              | an array is needed
        [5]                                             | targets[0]: an object is needed
        [{}]                                            | targets[0]: targetID is missing
        [{"targetID": 512}]                             | targets[0].targetID & 0 to 511
        [{"targetID": 1.5}]                             | targets[0].targetID & '1.5'
        [{"targetID": 8}, {"targetID": 8}]              | targets[1].targetID: & duplicate target ID 8
        [{"targetID": 8, "portNumbr": 1}]               | targets[0].portNumbr: there is no such field
        [{"targetID": 8, "deviceEntry": {"portNumber": 70000}}] | targets[0].deviceEntry.portNumber & 0 to 65535
        [{"targetID": 8, "deviceEntry": {"portNumber": true}}]  | deviceEntry.portNumber
        [{"targetID": 8, "nodeInfo": {"alias": 5}}]     | nodeInfo.alias & at most 32 bytes
        [{"targetID": 8, "nodeInfo": {"IPAddress": "here"}}]    | nodeInfo.IPAddress & 'here'
        [{"targetID": 8, "nodeInfo": []}]               | nodeInfo: an object is needed""")
    void targets(String document, String says) throws IOException {
        tool.write("x.json", document);
        tool.refused("target load 0 x.json", says.split(SEPARATOR));
        tool.write("x.json", "{\"format\": \"hba settings\", \"targets\": " + document + "}");
        tool.refused("import 0 x.json --yes", says.split(SEPARATOR));
    }

    // A fault in the last section keeps the first from being written, too.
    @ParameterizedTest
    @CsvSource(delimiter = '|', quoteCharacter = '`', textBlock = """
        []                                              | the document: an object is needed
        {"format": 'hba settings'}                      | x.json is not a JSON document & line 1 column
        {F, "iSNS": {}} {}                              | x.json is not a JSON document & line 1 column
        {F, "iSNS": {}, "iSNS": {}}                     | duplicate name iSNS
        {}                                              | format & hba settings
        {F, "target": []}                               | target: there is no such section
        {F, "firmware": {"initFW": {"FWOptions": -1}}}  | firmware.initFW.FWOptions & 0 to 65535
        {F, "iSNS": {"automaticDiscoveryFlag": 1}}      | iSNS.automaticDiscoveryFlag & yes or no
        {F, "CHAPTable": [{"chapName": "a"}]}           | CHAPTable[0] & entry 0 empty
        {F, "CHAPTable": [{}, {"chapSecretStr": "swordfish", "chapSecret": "00"}]} | CHAPTable[1] & exclude each other
        {F, "CHAPTable": [{}, {"chapSecret": "xx"}]}    | CHAPTable[1].chapSecret
        {F, "firmware": {"alias": "new"}, "iSNS": 1}    | iSNS: an object""")
    void documents(String document, String says) throws IOException {
        tool.write("x.json", document.replace("F,", "\"format\": \"hba settings\","));
        tool.refused("import 0 x.json --yes", says.split(SEPARATOR));
    }

    /** Files that are no documents are described in one short sentence. */
    @Test
    void noDocuments() throws IOException {
        Path file = tool.write("x.json", "[".repeat(100_000));
        tool.refused("target load 0 x.json", "x.json is nested too deeply");
        tool.write("x.json", "");
        tool.refused("target load 0 x.json", "x.json is not a JSON document: it is empty");
        Files.write(file, new byte[] {'[', '"', (byte) 0xE4, '"', ']'});
        tool.refused("target load 0 x.json", "it is not text in UTF-8");
        tool.write("x.json", "\u0001\u0002[}");
        String err = tool.run("import 0 x.json --yes").expect(2).err();
        assertTrue(err.length() < 100 && !err.contains("Reader"), err);
        tool.refused("target load 0 /dev/zero", "/dev/zero is too long");
    }

    /** Text is measured in the bytes that reach the adapter. */
    @Test
    void longText() throws IOException {
        String name = "n".repeat(256);
        String umlauts = "\u00e4".repeat(16);
        tool.run("target set 0 1 --yes --force --iscsi-name=" + name).expect(0);
        assertEquals(name, tool.json("target show 0 1").getAsJsonObject().getAsJsonObject("nodeInfo").get("iSCSIName")
            .getAsString());
        tool.refused("target set 0 1 --iscsi-name=" + name + "n", "--iscsi-name", "257 bytes", "at most 256");
        tool.refused("firmware set 0 --alias=" + umlauts + "a", "--alias", "33 bytes", "at most 32");
        tool.run("firmware set 0 --alias=" + umlauts).expect(0);
        tool.refused("target set 0 1 --target-address=" + "a".repeat(33), "--target-address", "at most 32");
        tool.refused("chap set 0 1 --name=" + name + "n --yes", "--name", "at most 256");
        tool.write("long", "swordfish" + "x".repeat(92));
        tool.refused("chap set 0 1 --secret-file=long --yes", "CHAP secret", "101 bytes", "at most 100");
    }

    /** An argument is what it says, and what it says does not steer a terminal. */
    @Test
    void oddText() {
        tool.run(null, "target", "set", "0", "1", "--alias", "@all.json", "--ip-options=0").expect(0);
        tool.run("target show 0 1").expect(0).shows("@all.json");
        tool.run(null, "target", "set", "0", "1", "--alias=a\u001b[2Jb").expect(0);
        tool.run("target show 0 1").expect(0).shows("a?[2Jb");
        assertEquals("a\u001b[2Jb", tool.json("target show 0 1").getAsJsonObject().getAsJsonObject("nodeInfo")
            .get("alias").getAsString());
    }
}
