package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.InitFW;
import java.io.IOException;

/** The firmware's settings: addresses, names, option words and default session parameters. */
final class FirmwareConfiguration {
    static final AddressField ADDRESS = new AddressField("IPAddress", "IP address");
    static final AddressField SUBNET_MASK = new AddressField("subnetMask", "Subnet mask");
    static final AddressField GATEWAY = new AddressField("gateway", "Gateway");
    static final AddressField PRIMARY_DNS = new AddressField("primaryDNS", "Primary DNS server");
    static final AddressField SLP_AGENT = new AddressField("slpDa", "SLP directory agent");

    static final RecordTable OPTIONS = new RecordTable(
        new BitsField("FWOptions", 16, "Firmware options"),
        new BitsField("addFWOptions", 16, "Additional options"),
        new BitsField("reserved1", 8, "Reserved byte").readOnly(),
        new NumberField("wakeupThreshold", 16, "Wakeup threshold").readOnly(),
        new RecordField("devEntry", DeviceParameters.TABLE, "Default session parameters"));
    static final RecordField INIT_FW = new RecordField("initFW", OPTIONS, "Firmware settings");

    static final RecordTable TABLE = new RecordTable(NodeInfo.NAME, NodeInfo.ALIAS, ADDRESS, SUBNET_MASK, GATEWAY,
        PRIMARY_DNS, SLP_AGENT, INIT_FW);

    private FirmwareConfiguration() {}

    /** Fills addresses, option words and default session parameters; names stay as they are. */
    static void read(Adapter adapter, HBA hba) {
        adapter.check("reading the firmware's settings", adapter.api.getFWData(adapter.dev, hba));
    }

    /** All that TABLE has; the names come from the adapter's identity. */
    static HBA readWithNames(Adapter adapter) {
        HBA hba = new HBA();
        adapter.check("reading the identity", adapter.api.getiSCSIAdapterInfo(adapter.dev, hba));
        read(adapter, hba);
        return hba;
    }

    static void write(Adapter adapter, HBA hba) {
        adapter.check("writing the firmware's settings", adapter.api.setFWData(adapter.dev, hba));
    }

    /** hba firmware show. */
    static final class Show extends DeviceCommand {
        Show() {
            super("Shows the settings in force.");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            show(TABLE, readWithNames(adapter));
            return DONE;
        }
    }

    /** hba firmware defaults. */
    static final class Defaults extends DeviceCommand {
        Defaults() {
            super("Shows the option words and session parameters that 'hba firmware restore' brings back.");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            InitFW initFW = new InitFW();
            adapter.check("reading the defaults", adapter.api.getISCSIFWDefaults(adapter.dev, initFW));
            show(OPTIONS, initFW);
            return DONE;
        }
    }

    /** hba firmware set. */
    static final class SetSome extends DeviceCommand {
        private final FieldOptions names = new FieldOptions(this, new RecordTable(NodeInfo.NAME, NodeInfo.ALIAS,
            ADDRESS, SUBNET_MASK, GATEWAY, PRIMARY_DNS, SLP_AGENT));
        private final FieldOptions words = new FieldOptions(this, OPTIONS);
        private final FieldOptions session = new FieldOptions(this, DeviceParameters.TABLE);

        SetSome() {
            super("Changes what the options name and keeps the rest.");
        }

        @Override
        void prepare() {
            FieldOptions.requireOne(names, words, session);
        }

        @Override
        int run(Adapter adapter) throws IOException {
            // Names that are not given stay null, and the adapter keeps its own.
            HBA hba = new HBA();
            read(adapter, hba);
            names.apply(hba);
            words.apply(hba.getInitFW());
            session.apply(hba.getInitFW().getDevEntry());
            write(adapter, hba);
            done("The firmware's settings of adapter " + adapter.dev + " were written.");
            return DONE;
        }
    }

    /** hba firmware restore. */
    static final class Restore extends DeviceCommand {
        Restore() {
            super("Gives up the settings in force for the firmware's defaults.");
            needsConfirmation();
        }

        @Override
        void prepare() {
            confirm("gives up the firmware's settings for its defaults");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            adapter.check("restoring the defaults", adapter.api.setISCSIDefaults(adapter.dev));
            done("The firmware's defaults of adapter " + adapter.dev + " were restored.");
            return DONE;
        }
    }
}
