package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.codes.AdapterState;
import com.varden.tavo.iscsi.codes.DhcpState;
import com.varden.tavo.iscsi.codes.LinkState;
import com.varden.tavo.iscsi.model.HBA;
import java.io.IOException;
import java.util.ArrayList;
import java.util.List;

/** What adapters say of themselves. */
final class AdapterInformation {
    static final Field MODEL = new TextField("model", 128, "Model").readOnly();
    static final Field SERIAL_NUMBER = new TextField("serialNumberStr", 16, "Serial number").readOnly();
    private static final Field MANUFACTURER = new TextField("manufacturer", 128, "Manufacturer").readOnly();
    private static final Field PORTALS = new NumberField("portalCount", 16, "Portals").readOnly();
    private static final Field ISCSI_VERSION = new TextField("iSCSIVersion", 4, "iSCSI version").readOnly();
    private static final Field FIRMWARE_VERSION = new TextField("firmwareVersion", 128, "Firmware version").readOnly();
    private static final Field FIRMWARE_BITS = new BitsField("firmwareAttribute", 32, "Firmware attributes").readOnly();
    private static final Field OPTION_ROM = new TextField("optRomVersion", 128, "Option ROM version").readOnly();
    private static final Field DRIVER_VERSION = new TextField("driverVersion", 128, "Driver version").readOnly();
    private static final Field DRIVER_BITS = new BitsField("driverAttribute", 32, "Driver attributes").readOnly();
    private static final Field BOARD_TYPE = new TextField("boardType", 64, "Board type").readOnly();
    private static final Field CHIP_VERSION = new NumberField("chipVersion", 16, "Chip version").readOnly();
    static final Field STATE =
        new CodeField("state", 16, "State", AdapterState.MEANINGS).trouble(AdapterState.NO_LINK).readOnly();
    private static final Field DHCP_STATE =
        new CodeField("dhcpState", 16, "DHCP state", DhcpState.MEANINGS).readOnly();
    static final Field LINK_STATUS =
        new CodeField("linkStatus", 16, "Link status", LinkState.MEANINGS).trouble(LinkState.DOWN).heading("Link")
            .readOnly();

    private AdapterInformation() {}

    /** hba adapters. */
    static final class Adapters extends Command {
        Adapters() {
            super("Opens every adapter from 0 to 31 in turn and lists those that could be opened. One that could be "
                + "opened and not be read is named on the standard error.");
            listing(ENTRY, "dev", "model", "iSCSIName", "IPAddress");
        }

        @Override
        public Integer call() throws IOException {
            int status = DONE;
            List<Entry> entries = new ArrayList<>();
            for (int dev = 0; dev <= Adapter.LAST_INDEX; dev++) {
                try (Adapter adapter = Adapter.tryOpen(dev)) {
                    if (adapter == null) {
                        continue;
                    }
                    Entry entry = new Entry(dev);
                    adapter.check("reading the model", adapter.api.getiSCSIFWInfo(dev, entry.hba));
                    adapter.check("reading the identity", adapter.api.getiSCSIAdapterInfo(dev, entry.hba));
                    entries.add(entry);
                } catch (OperationFailed e) {
                    Terminal.message(e.getMessage());
                    status = FAILED;
                }
            }
            showList(entries, "No adapter could be opened.");
            return status;
        }
    }

    private static final RecordTable ENTRY = new RecordTable(
        new NumberField("dev", 16, "DEV").readOnly(),
        new RecordField("HBA", new RecordTable(MODEL, NodeInfo.NAME, NodeInfo.ALIAS,
            FirmwareConfiguration.ADDRESS), "Adapter"));

    /** One adapter of the list. */
    public static final class Entry {
        private final int dev;
        private final HBA hba = new HBA();

        Entry(int dev) {
            this.dev = dev;
        }

        public int getDev() {
            return dev;
        }

        public HBA getHBA() {
            return hba;
        }
    }

    /** hba show. */
    static final class Show extends DeviceCommand {
        Show() {
            super("Reads everything in one call: versions, state, addresses, firmware options, default session "
                + "parameters, and every configured target.");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            show(new RecordTable(MODEL, MANUFACTURER, SERIAL_NUMBER,
                new BytesField("MACAddress", 6, "MAC address"), STATE, new NumberField("type", 16, "Type"),
                LINK_STATUS, DHCP_STATE, new NumberField("reportedDiskTargets", 16, "Discovered targets"), DRIVER_BITS,
                FIRMWARE_BITS, DRIVER_VERSION, FIRMWARE_VERSION, OPTION_ROM, FirmwareConfiguration.ADDRESS,
                FirmwareConfiguration.SUBNET_MASK, FirmwareConfiguration.GATEWAY, FirmwareConfiguration.PRIMARY_DNS,
                FirmwareConfiguration.SLP_AGENT, FirmwareConfiguration.INIT_FW,
                new ListField("deviceDataBaseEntries", DeviceDatabaseEntry.TABLE,
                    DeviceDatabaseEntry.TARGET_ID, "Target")), snapshot(adapter));
            return DONE;
        }
    }

    /** The whole adapter. That the firmware's settings were read is checked by a call of its own. */
    static HBA snapshot(Adapter adapter) {
        HBA hba = new HBA();
        adapter.check("reading the adapter", adapter.api.getiSCSIHBAData(adapter.dev, hba));
        FirmwareConfiguration.read(adapter, hba);
        return hba;
    }

    /** hba info. */
    static final class Info extends DeviceCommand {
        Info() {
            super("Runs the five queries for identity, firmware, driver, chip and state one by one.");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            HBA hba = new HBA();
            adapter.check("reading the identity", adapter.api.getiSCSIAdapterInfo(adapter.dev, hba));
            adapter.check("reading the firmware's version", adapter.api.getiSCSIFWInfo(adapter.dev, hba));
            adapter.check("reading the driver's version", adapter.api.getiSCSIDriverInfo(adapter.dev, hba));
            adapter.check("reading the chip", adapter.api.getChipInfo(adapter.dev, hba));
            adapter.check("reading the state", adapter.api.getiSCSIHBAState(adapter.dev, hba));
            show(new RecordTable(NodeInfo.NAME, NodeInfo.ALIAS, FirmwareConfiguration.ADDRESS, PORTALS, MODEL,
                ISCSI_VERSION, FIRMWARE_VERSION, FIRMWARE_BITS, OPTION_ROM, DRIVER_VERSION, DRIVER_BITS, BOARD_TYPE,
                CHIP_VERSION, STATE, DHCP_STATE, LINK_STATUS), hba);
            return DONE;
        }
    }
}
