import com.varden.tavo.iscsi.jni.ApiWrapper;
import com.varden.tavo.iscsi.jni.BridgeNotLoadedException;
import com.varden.tavo.iscsi.model.ArpEntry;
import com.varden.tavo.iscsi.model.ConnectionError;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.DevEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.IPAddr;
import com.varden.tavo.iscsi.model.InitFW;
import com.varden.tavo.iscsi.model.Lun;
import com.varden.tavo.iscsi.model.PortStatistics;
import java.math.BigInteger;

/** The model classes as an application uses them. */
public final class ModelTest {
    public void addresses() {
        String[][] good = {{"10.0.0.1", "10.0.0.1"}, {"255.255.255.255", "255.255.255.255"}, {"::", "0.0.0.0"},
            {"::1", "::1"}, {"fe80::1", "fe80::1"}, {"FE80:0:0:0:0:0:0:1", "fe80::1"}, {"1::8", "1::8"},
            {"2001:db8:0:0:1:0:0:1", "2001:db8::1:0:0:1"}, {"1:2:3:4:5:6:7:8", "1:2:3:4:5:6:7:8"},
            {"1:0:3:4:5:6:7:8", "1:0:3:4:5:6:7:8"}, {"::ffff:1.2.3.4", "::ffff:102:304"}, {"0:0:1::", "0:0:1::"}};
        for (String[] pair : good) {
            Check.equal(pair[0], pair[1], IPAddr.parse(pair[0]).toString());
            Check.equal(pair[1], IPAddr.parse(pair[0]), IPAddr.parse(pair[1]));
        }
        for (String bad : new String[] {"", "1.2.3", "1.2.3.4.5", "1.2.3.256", "01.2.3.4", "1..3.4", "1.2.3.4 ", ":1",
                 "1:", "::1:", "1::2::3", "1:2:3:4:5:6:7", "1:2:3:4:5:6:7:8:9", "1::2:3:4:5:6:7:8", "12345::1", "g::1",
                 "1.2.3.4::1", "::1.2.3", "2001:db8::", "localhost"}) {
            try {
                Check.that("'" + bad + "' is refused, not " + IPAddr.parse(bad), false);
            } catch (IllegalArgumentException e) {
                Check.that("the message quotes '" + bad + "'", e.getMessage().contains("'" + bad + "'"));
            }
        }
        short[] bytes = new short[IPAddr.LENGTH];
        bytes[0] = 0x0140;
        IPAddr address = new IPAddr();
        address.setAddress(bytes);
        bytes[0] = 0;
        Check.equal("a copy is kept", (short) 0x0140, address.getAddressElement((short) 0));
        Check.equal("low bits are shown", "64.0.0.0", address.toString());
    }

    public void unsignedNumbers() {
        DevEntry session = new DevEntry();
        session.setiSCSIOptions((short) 0x8001);
        session.setMaxBurstSize((short) -1);
        session.setTaskManagementTimeout((short) 0x9000);
        Check.equal("option word", 0x8001, session.getiSCSIOptionsUnsigned());
        Check.equal("burst", 65535, session.getMaxBurstSizeUnsigned());
        Check.equal("timeout", 0x9000, session.getTaskManagementTimeoutUnsigned());
        DevDBEntry entry = new DevDBEntry();
        entry.setOptions((byte) 0x80);
        entry.setReservedFlags(0x80000000);
        Check.equal("options", 128, entry.getOptionsUnsigned());
        Check.equal("flags", 2147483648L, entry.getReservedFlagsUnsigned());
        InitFW firmware = new InitFW();
        firmware.setFWOptions((short) 0x8001);
        firmware.setReserved1((byte) -1);
        Check.equal("firmware options", 0x8001, firmware.getFWOptionsUnsigned());
        Check.equal("reserved byte", 255, firmware.getReserved1Unsigned());
        byte[] counter = {0, 8, 7, 6, 5, 4, 3, 2, 1};
        Check.equal("counter", BigInteger.valueOf(0x0102030405060708L), PortStatistics.toBigInteger(counter));
        byte[] ones = {0, -1, -1, -1, -1, -1, -1, -1, -1};
        Check.equal("largest", "18446744073709551615", PortStatistics.toBigInteger(ones).toString());
        Check.equal("as long", "18446744073709551615", Long.toUnsignedString(PortStatistics.toUnsignedLong(ones)));
        Lun lun = new Lun();
        lun.setLogicalBlockAddress(-1);
        lun.setBytesPerBlock(-1);
        Check.equal("capacity", "18446744069414584320", Long.toUnsignedString(lun.getCapacity()));
        Check.that("a minimum", lun.isCapacityMinimum());
        Check.equal("flat address", 0x105, Lun.unitNumber(Lun.firstLevel(0x105)));
        Check.equal("peripheral address", 0xC8, Lun.unitNumber(0xC8));
    }

    public void logsAndLists() {
        HBA hba = new HBA();
        long[] log = new long[2 * ConnectionError.STRIDE + 3];
        for (int i = 0; i < log.length; i++) {
            log[i] = i == 0 ? 0xFFFFFFFFL : i;
        }
        hba.setConnectErrorLogEntries(log);
        Check.equal("entries", 2, hba.getConnectErrorLog().size());
        Check.equal("seconds", 4294967295L, hba.getConnectErrorLog().get(0).getSeconds());
        Check.equal("detail of the second", 17, hba.getConnectErrorLog().get(1).getErrorDetail());
        Check.equal("repeated", 18, hba.getConnectErrorLog().get(1).getDupErrorCnt());
        long[] arp = new long[2 * ArpEntry.STRIDE];
        for (int i = 0; i < arp.length; i++) {
            arp[i] = i;
        }
        hba.setARPLogEntries(arp);
        ArpEntry second = hba.getARPLog().get(1);
        Check.equal("address", "1a1b:1c1d:1e1f:2021:2223:2425:2627:2829", second.getIPAddress().toString());
        Check.equal("type", 42, second.getIPAddressType());
        Check.equal("MAC address", (short) 49, second.getMACAddress()[5]);
        Check.equal("valid, time", "50 51", second.getValid() + " " + second.getTimeIn());

        hba.setNumberDiskTargets(7);
        Check.equal("targets held", 0, hba.getNumberDiskTargets());
        Check.equal("targets reported", 7, hba.getReportedDiskTargets());
        DevDBEntry entry = new DevDBEntry();
        hba.addDeviceDataBaseEntry(entry);
        Check.equal("targets held", 1, hba.getNumberDiskTargets());
        Check.that("entry 0", hba.getDeviceDataBaseEntry(0) == entry);
        Check.that("no entry 1", hba.getDeviceDataBaseEntry(1) == null && hba.getDeviceDataBaseEntry(-1) == null);
        hba.setiSCSIName("name");
        Check.equal("the node's name is the adapter's", "name", hba.getNodeInfo().getiSCSIName());
        try {
            hba.setMACAddress(new short[5]);
            Check.that("five bytes are refused", false);
        } catch (IllegalArgumentException e) {
            Check.that(e.getMessage(), e.getMessage().contains("expected 6"));
        }
    }

    /** An application meets the exception, whatever it does first. */
    public void missingBridge() {
        try {
            new ApiWrapper();
            Check.that("the bridge is not on this VM's path", false);
        } catch (BridgeNotLoadedException e) {
            Check.equal("reason", BridgeNotLoadedException.Reason.BRIDGE_MISSING, e.getReason());
            Check.that(e.getMessage(), e.getMessage().contains("java.library.path"));
        }
    }
}
