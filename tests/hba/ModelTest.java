import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNull;
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
import com.varden.tavo.iscsi.model.Lun;
import com.varden.tavo.iscsi.model.NodeInfo;
import com.varden.tavo.iscsi.model.PortStatistics;
import com.varden.tavo.iscsi.model.Target;
import com.varden.tavo.iscsi.model.iSNSDiscoveryConfig;
import com.varden.tavo.iscsi.model.iSNSTarget;
import java.lang.reflect.Method;
import java.util.Arrays;
import java.util.List;
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

    /** One number of each kind that a Java type holds as a negative one. */
    @Test
    void unsignedNumbers() {
        DevEntry session = new DevEntry();
        session.setiSCSIOptions((short) 0x8001);
        assertEquals(0x8001, session.getiSCSIOptionsUnsigned());
        DevDBEntry entry = new DevDBEntry();
        entry.setOptions((byte) 0x80);
        entry.setReservedFlags(0x80000000);
        assertEquals(128, entry.getOptionsUnsigned());
        assertEquals(2147483648L, entry.getReservedFlagsUnsigned());
        byte[] ones = {0, -2, -1, -1, -1, -1, -1, -1, -1};
        assertEquals("18446744073709551614", PortStatistics.toBigInteger(ones).toString());
        assertEquals(-2, PortStatistics.toUnsignedLong(ones));
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
        // What is no whole entry at the end is passed over.
        hba.setConnectErrorLogEntries(LongStream.range(0, 2 * ConnectionError.STRIDE + 3).toArray());
        assertEquals(2, hba.getConnectErrorLog().size());
        assertEquals(18, hba.getConnectErrorLog().get(1).getDupErrorCnt());
        hba.setARPLogEntries(LongStream.range(0, 2 * ArpEntry.STRIDE).toArray());
        ArpEntry second = hba.getARPLog().get(1);
        assertEquals("1a1b:1c1d:1e1f:2021:2223:2425:2627:2829", second.getIPAddress().toString());
        assertEquals("49 50 51", second.getMACAddress()[5] + " " + second.getValid() + " " + second.getTimeIn());

        hba.setNumberDiskTargets(7);
        hba.addDeviceDataBaseEntry(new DevDBEntry());
        assertEquals("1 7", hba.getNumberDiskTargets() + " " + hba.getReportedDiskTargets());
        assertNull(hba.getDeviceDataBaseEntry(1));
        assertNull(hba.getDeviceDataBaseEntry(-1));
    }

    /** Each setter of an address keeps a copy, and what a read stores is an object of its own. */
    @Test
    void addressesAreNotShared() throws ReflectiveOperationException {
        int setters = 0;
        for (Class<?> owner : List.of(HBA.class, NodeInfo.class, Target.class, iSNSDiscoveryConfig.class)) {
            for (Method setter : owner.getMethods()) {
                if (List.of(setter.getParameterTypes()).equals(List.of(IPAddr.class))) {
                    Object object = owner.getConstructor().newInstance();
                    IPAddr given = IPAddr.parse("10.0.0.1");
                    setter.invoke(object, given);
                    given.setAddress(IPAddr.parse("10.0.0.2").getAddress());
                    Method getter = owner.getMethod(setter.getName().replaceFirst("set", "get"));
                    assertEquals("10.0.0.1", getter.invoke(object).toString(), setter::toString);
                    setters++;
                }
            }
        }
        assertEquals(9, setters);
        iSNSDiscoveryConfig config = new iSNSDiscoveryConfig();
        iSNSTarget found = new iSNSTarget();
        IPAddr server = config.getServerIPAddress();
        IPAddr portal = found.getIPAddress();
        config.setServerIPAddress(IPAddr.parse("10.0.0.3").getAddress(), 1);
        found.setIPAddress(IPAddr.parse("10.0.0.3").getAddress(), 1);
        assertEquals("0.0.0.0 0.0.0.0", server + " " + portal);
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
