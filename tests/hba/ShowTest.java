import com.google.gson.JsonArray;
import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import java.time.Duration;
import java.time.Instant;
import java.util.List;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

/** What the reading commands show of adapters fresh from the factory. */
final class ShowTest extends ToolTest {
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

    @Test
    void snapshot() {
        JsonArray targets = array("target list 0");
        assertEquals(Tool.document("""
            {model: 'Tavo 2040 iSCSI host adapter, copper', manufacturer: 'Varden Systems', serialNumberStr:
             'TV2040A000117', MACAddress: '02:54:56:00:01:17', state: 1, type: 1, linkStatus: 1, dhcpState: 0,
             reportedDiskTargets: 8, driverAttribute: 31, firmwareAttribute: 263, driverVersion: '2.6.4-tavo',
             firmwareVersion: '3.0.1.27', optRomVersion: '1.14', IPAddress: '10.20.0.5', subnetMask: '255.255.255.0',
             gateway: '10.20.0.1', primaryDNS: '10.20.0.2', slpDa: '10.20.0.4', initFW: %s, deviceDataBaseEntries: %s}
            """, initFW(33296, 16390, 128), targets), tool.json("show 0"));
        assertEquals(8, targets.size());
        assertEquals(Tool.document("""
            {index: 4, targetID: 17, state: 2, options: 17, control: 2, exeCount: 3, targetSessionID: 273,
             initiatorSessionID: '80:00:01:17:00:11', reservedFlags: 0, DDBLink: 0, chapIndex: 2,
             maxTxDataSegmentLen: 128, targetPortalGroupID: 2, nodeInfo: {iSCSIName:
             'iqn.2004-07.com.varden.tavo:array2.farm', alias: 'three hundred disks', IPAddress: '10.20.0.12',
             portalCount: 1}, deviceEntry: %s}""", session("10.20.0.12", 128)), targets.get(4));
        assertEquals(targets.get(4), tool.json("target show 0 17"));
        String words = tool.run("show 0").expect(0).shows("\nTarget 5:\n", "\nTarget 511:\n").out()
            .replaceAll("\\s+", "");
        for (String value : List.of("Firmwareoptions0x8210", "Keep-alivetimeout30s", "MACaddress02:54:56:00:01:17",
                 "TargetID511", "Retries5", "threehundreddisks")) {
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
        JsonArray adapters = array("adapters");
        assertEquals(4, adapters.size());
        assertEquals("fd00:20::5", Tool.values(adapters, "1.HBA.IPAddress"));
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
        assertEquals(initFW(33296, 16390, 128), object("firmware show 0").get("initFW"));
        assertEquals("300 80:00:01:17:01:2c",
            Tool.values(object("target initial 0 300"), "targetID", "initiatorSessionID"));
        assertEquals("1", Tool.values(object("target default 0"), "state"));
    }

    @Test
    void targetsAndUnits() {
        assertEquals(Tool.document("""
            {instance: 4, hostName: 'array2.san.example', IPAddress: '10.20.0.12', TCPPortNumber: 3260, nodeCount: 3,
             sessionID: 273, connectionID: 1, portalGroup: 2, targetInfo: {bus: 0, targetID: 17, LUN: 0}, nodeInfo:
             {iSCSIName: 'iqn.2004-07.com.varden.tavo:array2.farm', alias: 'three hundred disks', IPAddress:
             '10.20.0.12', portalCount: 1}}"""), tool.json("target portal 0 17"));
        assertEquals("299 16383", Tool.values(object("lun list 0 6"), "LUNs.159", "LUNs.160"));
        // A target without units is given one.
        assertEquals("[0]", Tool.values(object("lun list 0 42"), "LUNs"));
        assertEquals(Tool.document("""
            {vendorID: 'VARDEN  ', productID: 'TAVO DISK 512   ', revision: '0104', serialNumber: '',
             inquiryHeader: '', extraData: ''}"""), tool.json("lun inquiry 0 1 0"));
        assertEquals(Tool.document("""
            {logicalBlockAddress: 268435455, bytesPerBlock: 4096, capacity: 1099511627776, capacityMinimum: false}"""),
            tool.json("lun capacity 0 1 1"));
        tool.run("lun show 0 1 5").expect(0).shows("Last block              4294967295",
            "2.0 TiB (2199023255552 bytes)", "minimum   yes");
        // A unit is shown by the number that was asked for, not by the code that crosses.
        tool.run("lun show 0 6 16383").expect(0).shows("TAVO DISK", "LUN                     16383");
        assertEquals("299", Tool.values(object("lun show 0 6 299"), "targetInfo.LUN"));
        tool.run("lun show 0 1 2").expect(1).says("logical unit 2 of target 1", "0x20000105 ERR_SCSI_CHECK_CONDITION");
        tool.run("lun list 0 17").expect(1).says("0x20000075 ERR_BAD_DATA", "more than 256 logical units");
        tool.run("target portal 0 8").expect(1).says("0x20000104 ERR_NO_SUCH_TARGET");
    }

    @Test
    void isns() {
        JsonArray targets = array("isns targets 1");
        assertEquals(36, targets.size());
        assertEquals(Tool.document("""
            {iSCSIName: 'iqn.2004-07.com.varden.tavo:shelf.disk0035', iSCSIAlias: 'shelf disk 35', IPAddress:
             'fd00:24::24', IPAddressType: 2, port: 3260}"""), targets.get(35));
        tool.run("isns show 3").expect(1).says("0x2000002d ERR_ISNS_NOT_SUPPORTED");
        tool.run("isns targets 0").expect(1).says("iSNS discovery is switched off", "--enable-isns-discovery-flag=yes");
    }

    /** Numbers have their words, units and times; a document with them can be loaded again. */
    @Test
    void wordsAndUnits() throws Exception {
        tool.run("target set 0 5 --chap-index=0 --iscsi-options=0xa001 --max-burst-size=64KiB --yes").expect(0);
        tool.run("firmware set 0 --fw-options=0x8211 --first-burst-size=1024B").expect(0);
        tool.run("firmware show 0").expect(0).shows("0x8211 (addresses by DHCP, 0x8210)", "1.0 KiB (1024 bytes)",
            "64.0 KiB (65536 bytes)");
        tool.run("target show 0 5").expect(0).shows("configured (1)", "0xa001 (header digest, 0x8001)");
        tool.run("info 3").expect(0).shows("no link (2)", "on (1)", "down (0)");
        JsonElement entry = tool.run("target show 0 5 --json").json();
        assertEquals("configured header digest, 0x8001 128 65536", Tool.values(entry, "stateText",
            "deviceEntry.iSCSIOptionsText", "deviceEntry.maxBurstSize", "deviceEntry.maxBurstSizeBytes"));
        tool.write("again.json", "[" + entry + "]");
        tool.run("target load 1 again.json").expect(0).shows("Nothing differs.");
        tool.refused("target set 0 5 --max-burst-size=1000B", "1000B", "multiple");
        tool.refused("target set 0 5 --max-burst-size=64MiB", "64MiB");

        tool.environment.put("TZ", "Asia/Kolkata");
        JsonElement error = tool.run("log errors 0 --json").json().getAsJsonArray().get(0);
        Instant time = Instant.parse(Tool.values(error, "time"));
        assertEquals(time.getEpochSecond() + " " + time.toEpochMilli() % 1000
            + " login failed 0201h authentication failed",
            Tool.values(error, "seconds", "milliseconds", "entryTypeText", "errorDetailText"));
        tool.run("log errors 0").expect(0).shows("refused (2)", "0201h authentication failed",
            time.plus(Duration.ofMinutes(330)).toString().substring(0, 19).replace('T', ' '));
        tool.run("ping 0 10.20.0.11").expect(0);
        tool.run("log arp 0").expect(0).shows("IPv4 (1)", "valid (1)", "0 min");
    }
}
