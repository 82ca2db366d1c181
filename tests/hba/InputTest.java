import java.io.IOException;
import java.nio.file.Files;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

/** Wrong input is named with what is permitted, ends with status 2, and changes nothing. */
final class InputTest extends ToolTest {
    private static final String SEPARATOR = " & ";

    @ParameterizedTest
    @CsvSource(delimiter = '|', quoteCharacter = '`', textBlock = """
        show 32                                         | DEV & '32' & 0 to 31
        target                                          | command is missing
        target set 0 1 --port-number=65536              | --port-number & '65536' & 0 to 65535
        target set 0 1 --reserved-flags=0x100000000     | --reserved-flags & 0 to 4294967295
        target set 0 1 --keep-alive-to=+5               | --keep-alive-to & '+5' & 0 to 65535 s
        target set 0 1 --initiator-session-id=00:11:22  | --initiator-session-id & 6 hexadecimal bytes
        target set 0 1                                  | nothing to change
        isns set 0 --automatic-discovery-flag=perhaps   | --automatic-discovery-flag & yes or no
        lun show 0 1 16384                              | LUN & 0 to 16383
        chap set 0 128 --name=x --yes                   | INDEX & 1 to 127
        chap set 0 1 --link=256 --yes                   | --link & 0 to 255
        chap set 0 1 --secret                           | no terminal
        chap set 0 1 --secret-file=empty                | is empty & --no-secret
        chap set 0 1 --secret-file=latin1               | not text in UTF-8
        chap set 0 1 --secret-file=long                 | 101 bytes & at most 100
        chap set 0 1 --no-secret --secret               | exclude each other
        target list 0 --times 3                         | --times goes with --watch
        stats show 0 --watch=0.09 --times=1             | 0.1 to 65535
        target set 0 7 --ip-address=10.20.0.11          | no iSCSI name & --force
        target set 0 7 --iscsi-name=disk                | 'disk' is no iSCSI name & 'iqn.' & --force
        target set 0 7 --iscsi-name=iqn.2004-13.com.x   | is no iSCSI name
        target set 0 7 --iscsi-name=eui.02004567A425678 | 16 hexadecimal digits
        target set 0 7 --iscsi-name=naa.52004567BA64678X | 16 or 32 hexadecimal digits
        target set 0 7 --iscsi-name=iqn.2004-07.com.x:a_b | '_'
        target set 0 0 --yes --state=9                  | state 9 is not known & --force
        target set 0 0 --alias=\ud83d\ude00             | cannot cross to the adapter
        firmware set 0 --iscsi-name=me --yes            | --iscsi-name: 'me'
        isns set 0 --hba-iscsi-name=me                  | --hba-iscsi-name: 'me'""")
    void commandLines(String line, String says) throws IOException {
        tool.write("empty", "\nsecond line");
        Files.write(tool.directory.resolve("latin1"), new byte[] {(byte) 0xe4});
        tool.write("long", "swordfish" + "x".repeat(92));
        tool.refused(line, says.split(SEPARATOR));
    }

    // A fault in the last section keeps the first from being written, too. T stands for a list of targets.
    @ParameterizedTest
    @CsvSource(delimiter = '|', quoteCharacter = '`', textBlock = """
        []                                              | the document: an object is needed
        {"format": 'hba settings'}                      | x.json is not a JSON document & line 1 column
        {F, "iSNS": {}, "iSNS": {}}                     | duplicate name iSNS
        {}                                              | format & hba settings
        {F, "target": []}                               | target: there is no such section
        {F, "firmware": {"initFW": {"FWOptions": -1}}}  | firmware.initFW.FWOptions & 0 to 65535
        {F, "CHAPTable": [{"chapName": "a"}]}           | CHAPTable[0] & entry 0 empty
        {F, "CHAPTable": [{}, {"chapSecretStr": "swordfish", "chapSecret": "00"}]} | CHAPTable[1] & exclude each other
        {F, "CHAPTable": [{}, {"chapSecret": "xx"}]}    | CHAPTable[1].chapSecret
        {F, "firmware": {"alias": "new"}, "iSNS": 1}    | iSNS: an object
        {F, "targets": {}}                              | an array is needed
        {F, "targets": [{}]}                            | targets[0]: targetID is missing
        {F, "targets": [{"targetID": 1.5}]}             | targets[0].targetID & '1.5' & 0 to 511
        {F, "targets": [{"targetID": 8}, {"targetID": 8}]} | targets[1].targetID: duplicate target ID 8
        {F, "targets": [{"targetID": 8, "deviceEntry": {"portNumber": true}}]} | deviceEntry.portNumber & 0 to 65535
        {F, "targets": [{"targetID": 8, "nodeInfo": {"alias": 5}}]} | nodeInfo.alias & at most 32 bytes
        {F, "targets": [{"targetID": 8}]}               | targets[0]: the target has no iSCSI name""")
    void documents(String document, String says) throws IOException {
        tool.write("x.json", document.replace("F,", "\"format\": \"hba settings\","));
        tool.refused("import 0 x.json --yes", says.split(SEPARATOR));
    }

    /** Files that are no documents are described in one short sentence. */
    @Test
    void noDocuments() throws IOException {
        tool.write("x.json", "[".repeat(100_000));
        tool.refused("target load 0 x.json", "x.json is nested too deeply");
        tool.write("x.json", "");
        tool.refused("target load 0 x.json", "x.json is not a JSON document: it is empty");
        Files.write(tool.directory.resolve("x.json"), new byte[] {'[', '"', (byte) 0xE4, '"', ']'});
        tool.refused("target load 0 x.json", "it is not text in UTF-8");
        tool.write("x.json", "\u0001\u0002[}");
        String err = tool.run("import 0 x.json --yes").expect(2).err();
        assertTrue(err.length() < 100 && !err.contains("Reader"), err);
        tool.refused("target load 0 /dev/zero", "/dev/zero is too long");
    }

    /** What is odd is taken when it is meant, and text is measured in the bytes that reach the adapter. */
    @Test
    void meantAllTheSame() throws IOException {
        String name = "n".repeat(256);
        tool.run("target set 0 7 --force --iscsi-name=" + name).expect(0);
        // What is there already may stay.
        tool.run("target set 0 7 --alias=" + "\u00e4".repeat(16)).expect(0);
        assertEquals(name, Tool.values(object("target show 0 7"), "nodeInfo.iSCSIName"));
        tool.refused("target set 0 7 --iscsi-name=" + name + "n", "--iscsi-name", "257 bytes", "at most 256");
        tool.refused("firmware set 0 --alias=" + "\u00e4".repeat(16) + "a", "--alias", "33 bytes", "at most 32");
        tool.run("target set 0 8 --iscsi-name=eui.02004567A425678D --alias @all.json").expect(0);
        tool.run("target set 0 9 --iscsi-name=naa.52004567BA64678D").expect(0);
        tool.run("target show 0 8").expect(0).shows("@all.json");
        tool.run("chap set 1 1 --no-secret --yes").expect(0);
        tool.run("chap list 1").expect(0).shows("1      initiator-v6  -       0");
    }
}
