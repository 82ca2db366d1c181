import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertSame;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.varden.tavo.iscsi.jni.ApiWrapper;
import com.varden.tavo.iscsi.jni.BridgeNotLoadedException;
import com.varden.tavo.iscsi.model.ArpEntry;
import com.varden.tavo.iscsi.model.CHAPTableEntry;
import com.varden.tavo.iscsi.model.ConnectionError;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.DevEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.IPAddr;
import com.varden.tavo.iscsi.model.InitFW;
import com.varden.tavo.iscsi.model.Lun;
import com.varden.tavo.iscsi.model.NodeInfo;
import com.varden.tavo.iscsi.model.PortStatistics;
import com.varden.tavo.iscsi.model.Target;
import com.varden.tavo.iscsi.model.iSNSDiscoveryConfig;
import com.varden.tavo.iscsi.model.iSNSTarget;
import java.math.BigInteger;
import java.util.Arrays;
import java.util.Map;
import java.util.function.Consumer;
import java.util.function.Supplier;
import java.util.stream.LongStream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.ValueSource;

/** The model classes as an application uses them. */
final class ModelTest {
    @ParameterizedTest
    @CsvSource({"10.0.0.1, 10.0.0.1", "255.255.255.255, 255.255.255.255", "::, 0.0.0.0", "::1, ::1",
        "fe80::1, fe80::1", "FE80:0:0:0:0:0:0:1, fe80::1", "1::8, 1::8", "2001:db8:0:0:1:0:0:1, 2001:db8::1:0:0:1",
        "1:2:3:4:5:6:7:8, 1:2:3:4:5:6:7:8", "1:0:3:4:5:6:7:8, 1:0:3:4:5:6:7:8", "::ffff:1.2.3.4, ::ffff:102:304",
        "0:0:1::, 0:0:1::"})
    void addresses(String text, String shortest) {
        assertEquals(shortest, IPAddr.parse(text).toString());
        assertEquals(IPAddr.parse(text), IPAddr.parse(shortest));
    }

    @ParameterizedTest
    @ValueSource(strings = {"", "1.2.3", "1.2.3.4.5", "1.2.3.256", "01.2.3.4", "1..3.4", "1.2.3.4 ", ":1", "1:", "::1:",
        "1::2::3", "1:2:3:4:5:6:7", "1:2:3:4:5:6:7:8:9", "1::2:3:4:5:6:7:8", "12345::1", "g::1", "1.2.3.4::1",
        "::1.2.3", "2001:db8::", "localhost"})
    void wrongAddresses(String text) {
        String message = assertThrows(IllegalArgumentException.class, () -> IPAddr.parse(text)).getMessage();
        assertTrue(message.contains("'" + text + "'"), message);
    }

    @Test
    void arraysAreCopied() {
        short[] bytes = new short[IPAddr.LENGTH];
        bytes[0] = 0x0140;
        IPAddr address = new IPAddr();
        address.setAddress(bytes);
        bytes[0] = 0;
        assertEquals(0x0140, address.getAddressElement((short) 0));
        assertEquals("64.0.0.0", address.toString());
        assertTrue(assertThrows(IllegalArgumentException.class, () -> new HBA().setMACAddress(new short[5]))
            .getMessage().contains("expected 6"));
    }

    @Test
    void unsignedNumbers() {
        DevEntry session = new DevEntry();
        session.setiSCSIOptions((short) 0x8001);
        session.setMaxBurstSize((short) -1);
        session.setTaskManagementTimeout((short) 0x9000);
        assertEquals(0x8001, session.getiSCSIOptionsUnsigned());
        assertEquals(65535, session.getMaxBurstSizeUnsigned());
        assertEquals(0x9000, session.getTaskManagementTimeoutUnsigned());
        DevDBEntry entry = new DevDBEntry();
        entry.setOptions((byte) 0x80);
        entry.setReservedFlags(0x80000000);
        assertEquals(128, entry.getOptionsUnsigned());
        assertEquals(2147483648L, entry.getReservedFlagsUnsigned());
        InitFW firmware = new InitFW();
        firmware.setFWOptions((short) 0x8001);
        firmware.setReserved1((byte) -1);
        assertEquals(0x8001, firmware.getFWOptionsUnsigned());
        assertEquals(255, firmware.getReserved1Unsigned());
        byte[] counter = {0, 8, 7, 6, 5, 4, 3, 2, 1};
        assertEquals(BigInteger.valueOf(0x0102030405060708L), PortStatistics.toBigInteger(counter));
        byte[] ones = {0, -1, -1, -1, -1, -1, -1, -1, -1};
        assertEquals("18446744073709551615", PortStatistics.toBigInteger(ones).toString());
        assertEquals("18446744073709551615", Long.toUnsignedString(PortStatistics.toUnsignedLong(ones)));
        Lun lun = new Lun();
        lun.setLogicalBlockAddress(-1);
        lun.setBytesPerBlock(-1);
        assertEquals("18446744069414584320", Long.toUnsignedString(lun.getCapacity()));
        assertTrue(lun.isCapacityMinimum());
        assertEquals(0x105, Lun.unitNumber(Lun.firstLevel(0x105)));
        assertEquals(0xC8, Lun.unitNumber(0xC8));
    }

    @Test
    void logsAndLists() {
        HBA hba = new HBA();
        long[] log = LongStream.range(0, 2 * ConnectionError.STRIDE + 3).toArray();
        log[0] = 0xFFFFFFFFL;
        hba.setConnectErrorLogEntries(log);
        assertEquals(2, hba.getConnectErrorLog().size());
        assertEquals(4294967295L, hba.getConnectErrorLog().get(0).getSeconds());
        assertEquals(17, hba.getConnectErrorLog().get(1).getErrorDetail());
        assertEquals(18, hba.getConnectErrorLog().get(1).getDupErrorCnt());
        hba.setARPLogEntries(LongStream.range(0, 2 * ArpEntry.STRIDE).toArray());
        ArpEntry second = hba.getARPLog().get(1);
        assertEquals("1a1b:1c1d:1e1f:2021:2223:2425:2627:2829", second.getIPAddress().toString());
        assertEquals(42, second.getIPAddressType());
        assertEquals(49, second.getMACAddress()[5]);
        assertEquals("50 51", second.getValid() + " " + second.getTimeIn());

        hba.setNumberDiskTargets(7);
        assertEquals(0, hba.getNumberDiskTargets());
        assertEquals(7, hba.getReportedDiskTargets());
        DevDBEntry entry = new DevDBEntry();
        hba.addDeviceDataBaseEntry(entry);
        assertEquals(1, hba.getNumberDiskTargets());
        assertSame(entry, hba.getDeviceDataBaseEntry(0));
        assertNull(hba.getDeviceDataBaseEntry(1));
        assertNull(hba.getDeviceDataBaseEntry(-1));
        hba.setiSCSIName("name");
        assertEquals("name", hba.getNodeInfo().getiSCSIName());
    }

    /** Each setter of an address keeps a copy, and what a read stores is an object of its own. */
    @Test
    void addressesAreNotShared() {
        HBA hba = new HBA();
        NodeInfo node = new NodeInfo();
        Target target = new Target();
        iSNSDiscoveryConfig config = new iSNSDiscoveryConfig();
        iSNSTarget found = new iSNSTarget();
        Map<Consumer<IPAddr>, Supplier<IPAddr>> properties = Map.of(hba::setIPAddress, hba::getIPAddress,
            hba::setGateway, hba::getGateway, hba::setSubnetMask, hba::getSubnetMask, hba::setPrimaryDNS,
            hba::getPrimaryDNS, hba::setSecondaryDNS, hba::getSecondaryDNS, hba::setSlpDa, hba::getSlpDa,
            node::setIPAddress, node::getIPAddress, target::setIPAddress, target::getIPAddress,
            config::setServerIPAddress, config::getServerIPAddress);
        properties.forEach((set, get) -> {
            IPAddr given = IPAddr.parse("10.0.0.1");
            set.accept(given);
            given.setAddress(IPAddr.parse("10.0.0.2").getAddress());
            assertEquals("10.0.0.1", get.get().toString());
        });
        IPAddr server = config.getServerIPAddress();
        IPAddr portal = found.getIPAddress();
        config.setServerIPAddress(IPAddr.parse("10.0.0.3").getAddress(), 1);
        found.setIPAddress(IPAddr.parse("10.0.0.3").getAddress(), 1);
        assertEquals("10.0.0.1 0.0.0.0", server + " " + portal);
        assertEquals("10.0.0.3 10.0.0.3", config.getServerIPAddress() + " " + found.getIPAddress());
    }

    /** The array of a secret always has the length that the adapter's record needs; the text is beside it. */
    @Test
    void secretsOfAnyLength() {
        CHAPTableEntry entry = new CHAPTableEntry();
        entry.setChapSecretStr("swordfish");
        entry.setChapSecret(new short[] {1, 2});
        assertArrayEquals(Arrays.copyOf(new short[] {1, 2}, CHAPTableEntry.SECRET_LENGTH), entry.getChapSecret());
        entry.setChapSecret(null);
        assertArrayEquals(new short[CHAPTableEntry.SECRET_LENGTH], entry.getChapSecret());
        assertEquals("swordfish", entry.getChapSecretStr());
        assertThrows(IllegalArgumentException.class, () -> entry.setChapSecret(new short[101]));
    }

    /** An application meets the exception, whatever it does first. */
    @Test
    void missingBridge() {
        BridgeNotLoadedException e = assertThrows(BridgeNotLoadedException.class, ApiWrapper::new);
        assertEquals(BridgeNotLoadedException.Reason.BRIDGE_MISSING, e.getReason());
        assertTrue(e.getMessage().contains("java.library.path"), e.getMessage());
    }
}
