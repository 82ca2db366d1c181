import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.google.gson.JsonArray;
import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import java.util.List;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.ValueSource;

/** What the reading commands show of adapters fresh from the factory. */
final class ShowTest extends ToolTest {
    private static final String LONG_NAME = "array3.long-" + "mnopqrstuvwxyzabcdefghijkl".repeat(8).substring(0, 183);

    // Entries of adapter 0: target ID, execution count, CHAP index, portal group, end of the address, name, alias.
    private static final Object[][] TARGETS = {
        {0, 0, 0, 1, 11, "array1.boot", "boot disk"},
        {1, 1, 1, 2, 11, "array1.data", "data disks"},
        {5, 5, 2, 2, 12, "array2.many", "forty disks"},
        {6, 6, 0, 3, 12, "array2.sparse", "disks with flat addresses"},
        {17, 3, 2, 2, 12, "array2.farm", "three hundred disks"},
        {42, 0, 0, 3, 13, "array3.empty", "nothing behind it"},
        {100, 2, 0, 1, 14, "array4.offline", "switched off"},
        {511, 0, 1, 4, 13, LONG_NAME, "an alias of thirty-two character"},
    };

    private static JsonElement session(String address, int throttle) {
        return Tool.document("""
            {targetAddress: '%s', portNumber: 3260, deviceType: 1, iSCSIOptions: 33028, TCPOptions: 35,
             IPOptions: 1040, executionThrottle: %d, retryCount: 5, retryDelay: 2, maxRxDataSegmentLen: 128,
             firstBurstSize: 256, maxBurstSize: 512, maxOutstandingR2T: 1, defaultTime2Wait: 2,
             defaultTime2Retain: 20, keepAliveTO: 30, taskManagementTimeout: 10}""", address, throttle);
    }

    private static JsonElement initFW(int options, int additional, int throttle) {
        return Tool.document("{FWOptions: %d, addFWOptions: %d, reserved1: 0, wakeupThreshold: 16, devEntry: %s}",
            options, additional, session("", throttle));
    }

    private static JsonArray targets() {
        JsonArray targets = new JsonArray();
        for (Object[] row : TARGETS) {
            int id = (Integer) row[0];
            String address = "10.20.0." + row[4];
            boolean inSession = !row[6].equals("switched off");
            targets.add(Tool.document("""
                {index: %d, targetID: %d, state: %d, options: 17, control: 2, exeCount: %d, targetSessionID: %d,
                 initiatorSessionID: '80:00:01:17:%02x:%02x', reservedFlags: 0, DDBLink: 0, chapIndex: %d,
                 maxTxDataSegmentLen: 128, targetPortalGroupID: %d, nodeInfo: {iSCSIName:
                 'iqn.2004-07.com.varden.tavo:%s', alias: '%s', IPAddress: '%s', portalCount: 1}, deviceEntry: %s}""",
                targets.size(), id, inSession ? 2 : 1, row[1], inSession ? 256 + id : 0, id >> 8, id & 0xFF, row[2],
                row[3], row[5], row[6], address, session(address, 128)));
        }
        return targets;
    }

    @Test
    void snapshot() {
        assertEquals(Tool.document("""
            {model: 'Tavo 2040 iSCSI host adapter, copper', manufacturer: 'Varden Systems', serialNumberStr:
             'TV2040A000117', MACAddress: '02:54:56:00:01:17', state: 1, type: 1, linkStatus: 1, dhcpState: 0,
             reportedDiskTargets: 8, driverAttribute: 31, firmwareAttribute: 263, driverVersion: '2.6.4-tavo',
             firmwareVersion: '3.0.1.27', optRomVersion: '1.14', IPAddress: '10.20.0.5', subnetMask: '255.255.255.0',
             gateway: '10.20.0.1', primaryDNS: '10.20.0.2', slpDa: '10.20.0.4', initFW: %s, deviceDataBaseEntries: %s}
            """, initFW(33296, 16390, 128), targets()), tool.json("show 0"));
        assertEquals(targets(), tool.json("target list 0"));
        assertEquals(targets().get(4), tool.json("target show 0 17"));

        // Every value of the document stands in the words for people, too.
        String shown = tool.run("show 0").expect(0).shows("\nTarget 5:\n", "\nTarget 511:\n").out();
        String words = shown.replaceAll("\\s+", "");
        for (Object[] row : TARGETS) {
            assertTrue(words.contains((String) row[5]) && words.contains(((String) row[6]).replace(" ", "")), words);
        }
        for (String value : List.of("Firmwareoptions0x8210", "Additionaloptions0x4006", "iSCSIoptions0x8104",
                 "Keep-alivetimeout30s", "MACaddress02:54:56:00:01:17", "TargetID511", "Retries5")) {
            assertTrue(words.contains(value), value);
        }
    }

    @Test
    void inventory() {
        assertEquals(Tool.document("""
            {iSCSIName: 'iqn.2004-07.com.varden.adapter:TV2040A000117', alias: 'tavo adapter a', IPAddress: '10.20.0.5',
             portalCount: 1, model: 'Tavo 2040 iSCSI host adapter, copper', iSCSIVersion: '1.0', firmwareVersion:
             '3.0.1.27', firmwareAttribute: 263, optRomVersion: '1.14', driverVersion: '2.6.4-tavo',
             driverAttribute: 31, boardType: '2040-C', chipVersion: 259, state: 1, dhcpState: 0, linkStatus: 1}"""),
            tool.json("info 0"));
        JsonArray adapters = tool.json("adapters").getAsJsonArray();
        assertEquals(4, adapters.size());
        assertEquals(Tool.document("""
            {dev: 1, HBA: {model: 'Tavo 2060 iSCSI host adapter, fibre, IPv6', iSCSIName:
             'iqn.2004-07.com.varden.adapter:TV2060B000342', alias: 'tavo adapter b', IPAddress: 'fd00:20::5'}}"""),
            adapters.get(1));
        tool.run("version").expect(0).shows("hba 1.0.0", "management library Tavo software adapter 1.0.0");
    }

    @Test
    void largestTable() {
        JsonArray entries = tool.json("show 2").getAsJsonObject().getAsJsonArray("deviceDataBaseEntries");
        assertEquals(512, entries.size());
        for (int i = 0; i < 512; i++) {
            JsonObject entry = entries.get(i).getAsJsonObject();
            assertEquals(i, entry.get("targetID").getAsInt());
            String name = entry.getAsJsonObject("nodeInfo").get("iSCSIName").getAsString();
            assertTrue(name.endsWith(String.format(":pool.disk%04d", i)), name);
        }
    }

    /** An empty list is a success, and an empty document an array. */
    @ParameterizedTest
    @CsvSource({"target list 3, No target is configured.", "chap list 3, The CHAP table is empty.",
        "log errors 3, No connection error is logged.", "log arp 3, The ARP table is empty."})
    void emptyTables(String line, String shows) {
        tool.run(line).expect(0).shows(shows);
        assertEquals(new JsonArray(), tool.json(line));
    }

    @Test
    void firmwareAndProposals() {
        assertEquals(initFW(1, 2, 64), tool.json("firmware defaults 0"));
        JsonObject settings = tool.json("firmware show 0").getAsJsonObject();
        assertEquals(initFW(33296, 16390, 128), settings.get("initFW"));
        assertEquals("iqn.2004-07.com.varden.adapter:TV2040A000117", settings.get("iSCSIName").getAsString());
        tool.run("firmware show 1").expect(0).shows("ffff:ffff:ffff:ffff::", "fd00:20::4", "0x8310");
        JsonObject initial = tool.json("target initial 0 300").getAsJsonObject();
        assertEquals(300, initial.get("targetID").getAsInt());
        assertEquals("80:00:01:17:01:2c", initial.get("initiatorSessionID").getAsString());
        assertEquals(1, tool.json("target default 0").getAsJsonObject().get("state").getAsInt());
    }

    @Test
    void targetsAndUnits() {
        assertEquals(Tool.document("""
            {instance: 4, hostName: 'array2.san.example', IPAddress: '10.20.0.12', TCPPortNumber: 3260, nodeCount: 3,
             sessionID: 273, connectionID: 1, portalGroup: 2, targetInfo: {bus: 0, targetID: 17, LUN: 0}, nodeInfo:
             {iSCSIName: 'iqn.2004-07.com.varden.tavo:array2.farm', alias: 'three hundred disks', IPAddress:
             '10.20.0.12', portalCount: 1}}"""), tool.json("target portal 0 17"));
        JsonArray units = tool.json("lun list 0 6").getAsJsonObject().getAsJsonArray("LUNs");
        assertEquals(161, units.size());
        assertEquals(299, units.get(159).getAsInt());
        assertEquals(16383, units.get(160).getAsInt());
        // A target without units is given one.
        assertEquals("[0]", tool.json("lun list 0 42").getAsJsonObject().get("LUNs").toString());
        assertEquals(Tool.document("""
            {vendorID: 'VARDEN  ', productID: 'TAVO DISK 512   ', revision: '0104', serialNumber: '',
             inquiryHeader: '', extraData: ''}"""), tool.json("lun inquiry 0 1 0"));
        assertEquals(Tool.document("""
            {logicalBlockAddress: 268435455, bytesPerBlock: 4096, capacity: 1099511627776, capacityMinimum: false}"""),
            tool.json("lun capacity 0 1 1"));
        tool.run("lun show 0 1 5").expect(0).shows("Last block              4294967295",
            "2.0 TiB (2199023255552 bytes)", "minimum   yes");
        tool.run("lun show 0 1 9").expect(0).shows("512 bytes");
        // A unit is shown by the number that was asked for, not by the code that crosses.
        tool.run("lun show 0 6 16383").expect(0).shows("TAVO DISK", "LUN                     16383");
        JsonObject unit = tool.json("lun show 0 6 299").getAsJsonObject();
        assertEquals(299, unit.getAsJsonObject("targetInfo").get("LUN").getAsInt());
        tool.run("lun show 0 1 2").expect(1).says("logical unit 2 of target 1", "0x20000105 ERR_SCSI_CHECK_CONDITION");
        tool.run("lun list 0 100").expect(1).says("target 100", "0x2000010b ERR_UNREACHABLE");
        tool.run("lun list 0 17").expect(1).says("0x20000075 ERR_BAD_DATA", "more than 256 logical units");
        tool.run("target portal 0 8").expect(1).says("0x20000104 ERR_NO_SUCH_TARGET");
        tool.run("target show 0 8").expect(1).says("adapter 0 has no target 8");
    }

    @Test
    void countersToTheirEnd() {
        JsonObject counters = tool.json("stats show 1").getAsJsonObject();
        assertEquals(33, counters.size());
        assertEquals("18446744073709551615", counters.get("MACRxBytesCount").toString());
        assertEquals("9223372036854775808", counters.get("IPRxBytesCount").toString());
        assertEquals("18446744073709551360", counters.get("iSCSISeqErrorCount").toString());
        tool.run("stats show 1").expect(0).shows("MAC bytes received     18446744073709551615");
        Tool.Result watched = tool.run("stats show 0 --watch 0.1 --times 3").expect(0).shows("Added");
        assertEquals(3, watched.out().split("MAC frames sent", -1).length - 1);
    }

    @Test
    void isns() {
        JsonArray targets = tool.json("isns targets 1").getAsJsonArray();
        assertEquals(36, targets.size());
        assertEquals(Tool.document("""
            {iSCSIName: 'iqn.2004-07.com.varden.tavo:shelf.disk0035', iSCSIAlias: 'shelf disk 35', IPAddress:
             'fd00:24::24', IPAddressType: 2, port: 3260}"""), targets.get(35));
        assertEquals(Tool.document("""
            {enableiSNSDiscoveryFlag: false, automaticDiscoveryFlag: false, serverIPAddress: '10.20.0.53',
             serverIPAddressType: 1, serverHostname: ' '}"""), tool.json("isns show 0"));
        tool.run("isns show 3").expect(1).says("0x2000002d ERR_ISNS_NOT_SUPPORTED");
        tool.run("isns targets 0").expect(1).says("iSNS discovery is switched off", "--enable-isns-discovery-flag=yes");
    }

    /** Output and help fit a terminal of 80 columns. */
    @ParameterizedTest
    @ValueSource(strings = {"adapters", "show 0", "show 1", "info 1", "target list 0", "target list 1",
        "target show 0 511", "target portal 0 511", "lun show 0 1 5", "firmware show 1", "stats show 1",
        "stats show 1 --watch 0.1 --times 2", "log errors 0", "log arp 1", "chap list 0", "chap list 0 --reveal",
        "isns show 1", "isns targets 1", "--help", "target --help", "target set --help", "firmware set --help",
        "chap set --help", "help import"})
    void eightyColumns(String line) {
        Tool.Result result = tool.run(line).expect(0);
        assertFalse(result.out().isEmpty(), line);
        result.out().lines().forEach(text -> assertTrue(text.length() <= 80, text));
    }
}
