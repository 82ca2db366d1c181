import com.google.gson.JsonArray;
import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import com.google.gson.JsonParser;
import java.io.IOException;
import java.util.List;

/** What the reading commands show of adapters fresh from the factory. */
public final class ShowTest {
    private final Tool tool = new Tool();

    public ShowTest() throws IOException {}

    private static JsonObject object(String text) {
        return JsonParser.parseString(text).getAsJsonObject();
    }

    private static JsonObject session(String address, int throttle) {
        return object("{targetAddress: '" + address + "', portNumber: 3260, deviceType: 1, iSCSIOptions: 33028, "
            + "TCPOptions: 35, IPOptions: 1040, executionThrottle: " + throttle + ", retryCount: 5, retryDelay: 2, "
            + "maxRxDataSegmentLen: 128, firstBurstSize: 256, maxBurstSize: 512, maxOutstandingR2T: 1, "
            + "defaultTime2Wait: 2, defaultTime2Retain: 20, keepAliveTO: 30, taskManagementTimeout: 10}");
    }

    // Entries of adapter 0: target ID, execution count, CHAP index, portal group, address, name, alias.
    private static final Object[][] TARGETS = {
        {0, 0, 0, 1, "10.20.0.11", "array1.boot", "boot disk"},
        {1, 1, 1, 2, "10.20.0.11", "array1.data", "data disks"},
        {5, 5, 2, 2, "10.20.0.12", "array2.many", "forty disks"},
        {6, 6, 0, 3, "10.20.0.12", "array2.sparse", "disks with flat addresses"},
        {17, 3, 2, 2, "10.20.0.12", "array2.farm", "three hundred disks"},
        {42, 0, 0, 3, "10.20.0.13", "array3.empty", "nothing behind it"},
        {100, 2, 0, 1, "10.20.0.14", "array4.offline", "switched off"},
        {511, 0, 3, 4, "10.20.0.13", null, "an alias of thirty-two character"},
    };

    private static JsonArray targets() {
        StringBuilder longName = new StringBuilder("array3.long-");
        for (char c = 'm'; longName.length() + "iqn.2004-07.com.varden.tavo:".length() < 223; c++) {
            longName.append((char) ('a' + (c - 'a') % 26));
        }
        JsonArray targets = new JsonArray();
        for (Object[] row : TARGETS) {
            int id = (Integer) row[0];
            String hex = Integer.toHexString(0x10000 | id);
            JsonObject target = object("{index: " + targets.size() + ", targetID: " + id
                + ", state: 2, options: 17, control: 2, exeCount: " + row[1] + ", targetSessionID: " + (256 + id)
                + ", initiatorSessionID: '80:00:01:17:" + hex.substring(1, 3) + ":" + hex.substring(3)
                + "', reservedFlags: 0, DDBLink: 0, chapIndex: " + row[2]
                + ", maxTxDataSegmentLen: 128, targetPortalGroupID: " + row[3] + ", nodeInfo: {iSCSIName: "
                + "'iqn.2004-07.com.varden.tavo:" + (row[5] == null ? longName : row[5]) + "', alias: '" + row[6]
                + "', IPAddress: '" + row[4] + "', portalCount: 1}}");
            target.add("deviceEntry", session((String) row[4], 128));
            targets.add(target);
        }
        return targets;
    }

    private static JsonObject initFW() {
        JsonObject initFW = object("{FWOptions: 33296, addFWOptions: 16390, reserved1: 0, wakeupThreshold: 16}");
        initFW.add("devEntry", session("", 128));
        return initFW;
    }

    public void snapshot() {
        JsonObject expected = object("{model: 'Tavo 2040 iSCSI host adapter, copper', manufacturer: 'Varden Systems', "
            + "serialNumberStr: 'TV2040A000117', MACAddress: '02:54:56:00:01:17', state: 1, type: 1, linkStatus: 1, "
            + "dhcpState: 0, reportedDiskTargets: 8, driverAttribute: 31, firmwareAttribute: 263, driverVersion: "
            + "'2.6.4-tavo', firmwareVersion: '3.0.1.27', optRomVersion: '1.14', IPAddress: '10.20.0.5', subnetMask: "
            + "'255.255.255.0', gateway: '10.20.0.1', primaryDNS: '10.20.0.2', slpDa: '10.20.0.4'}");
        expected.add("initFW", initFW());
        expected.add("deviceDataBaseEntries", targets());
        Check.equalJson("show 0", expected, tool.json("show 0"));
        Check.equalJson("target list 0", targets(), tool.json("target list 0"));
        Check.equalJson("target show 0 17", targets().get(4), tool.json("target show 0 17"));

        // Every value of the document stands in the words for people, too.
        String words = tool.run("show 0").expect(0).out.replaceAll("\\s+", "");
        for (JsonElement target : targets()) {
            JsonObject node = target.getAsJsonObject().getAsJsonObject("nodeInfo");
            Check.that("name in words", words.contains(node.get("iSCSIName").getAsString()));
            Check.that("alias in words", words.contains(node.get("alias").getAsString().replace(" ", "")));
        }
        for (String value : List.of("Firmwareoptions0x8210", "Additionaloptions0x4006", "iSCSIoptions0x8104",
                 "Keep-alivetimeout30s", "MACaddress02:54:56:00:01:17", "TargetID511", "Retries5")) {
            Check.that(value + " in words", words.contains(value));
        }
    }

    public void inventory() {
        Check.equalJson("info 0", object("{iSCSIName: 'iqn.2004-07.com.varden.adapter:TV2040A000117', alias: "
            + "'tavo adapter a', IPAddress: '10.20.0.5', portalCount: 1, model: 'Tavo 2040 iSCSI host adapter, copper',"
            + " iSCSIVersion: '1.0', firmwareVersion: '3.0.1.27', firmwareAttribute: 263, optRomVersion: '1.14', "
            + "driverVersion: '2.6.4-tavo', driverAttribute: 31, boardType: '2040-C', chipVersion: 259, state: 1, "
            + "dhcpState: 0, linkStatus: 1}"), tool.json("info 0"));
        JsonArray adapters = tool.json("adapters").getAsJsonArray();
        Check.equal("number of adapters", 4, adapters.size());
        Check.equalJson("adapters[1]", object("{dev: 1, HBA: {model: 'Tavo 2060 iSCSI host adapter, fibre, IPv6', "
            + "iSCSIName: 'iqn.2004-07.com.varden.adapter:TV2060B000342', alias: 'tavo adapter b', IPAddress: "
            + "'fd00:20::5'}}"), adapters.get(1));
        tool.run("version").expect(0).shows("hba 1.0.0", "management library Tavo software adapter 1.0.0");
    }

    public void largeAndEmptyTables() {
        JsonObject all = tool.json("show 2").getAsJsonObject();
        JsonArray entries = all.getAsJsonArray("deviceDataBaseEntries");
        Check.equal("entries of adapter 2", 512, entries.size());
        for (int i = 0; i < 512; i++) {
            JsonObject entry = entries.get(i).getAsJsonObject();
            Check.equal("targetID of entry " + i, i, entry.get("targetID").getAsInt());
            Check.that("name of entry " + i, entry.getAsJsonObject("nodeInfo").get("iSCSIName").getAsString()
                .endsWith(":pool.disk" + String.format("%04d", i)));
        }
        // An empty list is a success, and an empty document an array.
        for (String[] empty : new String[][] {{"target list 3", "No target is configured."},
                 {"chap list 3", "The CHAP table is empty."}, {"log errors 3", "No connection error is logged."},
                 {"log arp 3", "The ARP table is empty."}}) {
            tool.run(empty[0]).expect(0).shows(empty[1]);
            Check.equal(empty[0] + " --json", new JsonArray(), tool.json(empty[0]));
        }
    }

    public void firmwareAndProposals() {
        JsonObject defaults = object("{FWOptions: 1, addFWOptions: 2, reserved1: 0, wakeupThreshold: 16}");
        defaults.add("devEntry", session("", 64));
        Check.equalJson("firmware defaults", defaults, tool.json("firmware defaults 0"));
        JsonObject settings = tool.json("firmware show 0").getAsJsonObject();
        Check.equalJson("firmware show", initFW(), settings.get("initFW"));
        Check.equal("name", "iqn.2004-07.com.varden.adapter:TV2040A000117", settings.get("iSCSIName").getAsString());
        tool.run("firmware show 1").expect(0).shows("ffff:ffff:ffff:ffff::", "fd00:20::4", "0x8310");
        JsonObject initial = tool.json("target initial 0 300").getAsJsonObject();
        Check.equal("proposed target ID", 300, initial.get("targetID").getAsInt());
        Check.equal("proposed session", "80:00:01:17:01:2c", initial.get("initiatorSessionID").getAsString());
        Check.equal("default state", 1, tool.json("target default 0").getAsJsonObject().get("state").getAsInt());
    }

    public void targetsAndUnits() {
        Check.equalJson("portal", object("{instance: 4, hostName: 'array2.san.example', IPAddress: '10.20.0.12', "
            + "TCPPortNumber: 3260, nodeCount: 3, sessionID: 273, connectionID: 1, portalGroup: 2, targetInfo: {bus: "
            + "0, targetID: 17, LUN: 0}, nodeInfo: {iSCSIName: 'iqn.2004-07.com.varden.tavo:array2.farm', alias: "
            + "'three hundred disks', IPAddress: '10.20.0.12', portalCount: 1}}"), tool.json("target portal 0 17"));
        JsonArray units = tool.json("lun list 0 6").getAsJsonObject().getAsJsonArray("LUNs");
        Check.equal("units", 161, units.size());
        Check.equal("a unit with a flat address", 299, units.get(159).getAsInt());
        Check.equal("the last unit", 16383, units.get(160).getAsInt());
        Check.equal("a target without units is given one", "[0]",
            tool.json("lun list 0 42").getAsJsonObject().get("LUNs").toString());
        Check.equalJson("identity", object("{vendorID: 'VARDEN  ', productID: 'TAVO DISK 512   ', revision: '0104', "
            + "serialNumber: '', inquiryHeader: '', extraData: ''}"), tool.json("lun inquiry 0 1 0"));
        Check.equalJson("capacity", object("{logicalBlockAddress: 268435455, bytesPerBlock: 4096, capacity: "
            + "1099511627776, capacityMinimum: false}"), tool.json("lun capacity 0 1 1"));
        tool.run("lun show 0 1 5").expect(0).shows("Last block              4294967295",
            "2.0 TiB (2199023255552 bytes)", "minimum   yes");
        tool.run("lun show 0 1 9").expect(0).shows("512 bytes");
        tool.run("lun show 0 6 299").expect(0).shows("TAVO DISK");
        tool.run("lun show 0 1 2").expect(1).says("logical unit 2 of target 1", "0x20000105 ERR_SCSI_CHECK_CONDITION");
        tool.run("lun list 0 100").expect(1).says("target 100", "0x2000010b ERR_UNREACHABLE");
        tool.run("lun list 0 17").expect(1).says("0x20000075 ERR_BAD_DATA");
        tool.run("target portal 0 8").expect(1).says("0x20000104 ERR_NO_SUCH_TARGET");
        tool.run("target show 0 8").expect(1).says("adapter 0 has no target 8");
    }

    public void countersToTheirEnd() {
        JsonObject counters = tool.json("stats show 1").getAsJsonObject();
        Check.equal("number of counters", 33, counters.size());
        Check.equal("largest", "18446744073709551615", counters.get("MACRxBytesCount").toString());
        Check.equal("middle", "9223372036854775808", counters.get("IPRxBytesCount").toString());
        Check.equal("next to the end", "18446744073709551360", counters.get("iSCSISeqErrorCount").toString());
        tool.run("stats show 1").expect(0).shows("MAC bytes received     18446744073709551615");
        Tool.Result watched = tool.run("stats show 0 --watch 0 --times 3").expect(0).shows("Added");
        Check.equal("tables", 3, watched.out.split("MAC frames sent", -1).length - 1);
    }

    public void isns() {
        JsonArray targets = tool.json("isns targets 1").getAsJsonArray();
        Check.equal("iSNS targets", 36, targets.size());
        Check.equalJson("last iSNS target", object("{iSCSIName: 'iqn.2004-07.com.varden.tavo:shelf.disk0035', "
            + "iSCSIAlias: 'shelf disk 35', IPAddress: 'fd00:24::24', IPAddressType: 2, port: 3260}"), targets.get(35));
        Check.equalJson("settings", object("{enableiSNSDiscoveryFlag: false, automaticDiscoveryFlag: false, "
            + "serverIPAddress: '10.20.0.53', serverIPAddressType: 1, serverHostname: ' '}"), tool.json("isns show 0"));
        tool.run("isns show 3").expect(1).says("0x2000002d ERR_ISNS_NOT_SUPPORTED");
        tool.run("isns targets 0").expect(1).says("0x2000001c ERR_NOT_SUPPORTED");
    }

    /** Output and help fit a terminal of 80 columns. */
    public void eightyColumns() throws IOException {
        for (String line : List.of("adapters", "show 0", "show 1", "info 1", "target list 0", "target list 1",
                 "target show 0 511", "target portal 0 511", "lun show 0 1 5", "firmware show 1", "stats show 1",
                 "stats show 1 --watch 0 --times 2", "log errors 0", "log arp 1", "chap list 0",
                 "chap list 0 --reveal", "isns show 1", "isns targets 1", "--help", "target --help",
                 "target set --help", "firmware set --help", "chap set --help", "help import")) {
            Tool.Result result = tool.run(line).expect(0);
            Check.that("'" + line + "' prints something", !result.out.isEmpty());
            result.out.lines().forEach(
                text -> Check.that("80 columns of '" + line + "': " + text, text.length() <= 80));
        }
    }
}
