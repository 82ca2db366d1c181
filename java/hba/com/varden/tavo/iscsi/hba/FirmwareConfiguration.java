package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.codes.FirmwareOptions;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.InitFW;
import java.io.IOException;
import java.util.ArrayList;
import java.util.List;
import picocli.CommandLine.Model.OptionSpec;

/** The firmware's settings: addresses, names, option words and default session parameters. */
final class FirmwareConfiguration {
    static final AddressField ADDRESS = new AddressField("IPAddress", "IP address");
    static final AddressField SUBNET_MASK = new AddressField("subnetMask", "Subnet mask");
    static final AddressField GATEWAY = new AddressField("gateway", "Gateway");
    static final AddressField PRIMARY_DNS = new AddressField("primaryDNS", "Primary DNS server");
    static final AddressField SLP_AGENT = new AddressField("slpDa", "SLP directory agent");

    static final RecordTable OPTIONS = new RecordTable(
        new BitsField("FWOptions", 16, "Firmware options", FirmwareOptions.MEANINGS),
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

    /** What a change of the adapter's own addresses and name costs. */
    static List<String> losses(HBA present, HBA wanted) {
        List<String> losses = new ArrayList<>();
        for (AddressField field : List.of(ADDRESS, SUBNET_MASK, GATEWAY)) {
            if (!field.get(present).equals(field.get(wanted))) {
                losses.add("changes the adapter's own " + inSentence(field.label) + " from " + field.show(present)
                    + " to " + field.show(wanted) + ", which ends its sessions");
            }
        }
        String name = wanted.getiSCSIName();
        if (name != null && !name.equals(present.getiSCSIName())) {
            losses.add("changes the adapter's own name from " + NodeInfo.NAME.show(present) + " to "
                + NodeInfo.NAME.show(wanted) + ", under which targets may not let it in");
        }
        return losses;
    }

    // "IP address" and "subnet mask".
    private static String inSentence(String label) {
        return Character.isUpperCase(label.charAt(1)) ? label
            : Character.toLowerCase(label.charAt(0)) + label.substring(1);
    }

    /** hba firmware set. */
    static final class SetSome extends WriteCommand {
        private final FieldOptions names = new FieldOptions(this, new RecordTable(NodeInfo.NAME, NodeInfo.ALIAS,
            ADDRESS, SUBNET_MASK, GATEWAY, PRIMARY_DNS, SLP_AGENT));
        private final FieldOptions words = new FieldOptions(this, OPTIONS);
        private final FieldOptions session = new FieldOptions(this, DeviceParameters.TABLE);
        private final OptionSpec force = force();

        SetSome() {
            super("Changes what the options name and keeps the rest.");
        }

        @Override
        void prepare() {
            FieldOptions.requireOne(names, words, session);
            HBA given = new HBA();
            names.apply(given);
            if (given.getiSCSIName() != null && !isSet(force)) {
                IscsiName.require(given.getiSCSIName(), NodeInfo.NAME.option());
            }
        }

        private HBA changed(Adapter adapter) {
            HBA hba = readWithNames(adapter);
            names.apply(hba);
            words.apply(hba.getInitFW());
            session.apply(hba.getInitFW().getDevEntry());
            return hba;
        }

        @Override
        List<String> losses(Adapter adapter) {
            return FirmwareConfiguration.losses(readWithNames(adapter), changed(adapter));
        }

        @Override
        void write(Adapter adapter) {
            HBA wanted = changed(adapter);
            FirmwareConfiguration.write(adapter, wanted);
            Differences differences = new Differences("written");
            TABLE.compare(wanted, readWithNames(adapter), "firmware", differences);
            verify("the firmware's settings of adapter " + adapter.dev + " were written", differences);
        }

        @Override
        int report(Adapter adapter) throws IOException {
            done("The firmware's settings of adapter " + adapter.dev + " were written.");
            return DONE;
        }
    }

    /** hba firmware restore. */
    static final class Restore extends WriteCommand {
        Restore() {
            super("Gives up the settings in force for the firmware's defaults.");
        }

        @Override
        List<String> losses(Adapter adapter) {
            HBA present = readWithNames(adapter);
            return List.of("replaces the settings of adapter " + adapter.dev + " by the firmware's defaults: name "
                + NodeInfo.NAME.show(present) + ", address " + ADDRESS.show(present)
                + " and all options and session parameters");
        }

        @Override
        void write(Adapter adapter) {
            InitFW defaults = new InitFW();
            adapter.check("reading the defaults", adapter.api.getISCSIFWDefaults(adapter.dev, defaults));
            adapter.check("restoring the defaults", adapter.api.setISCSIDefaults(adapter.dev));
            HBA restored = new HBA();
            read(adapter, restored);
            Differences differences = new Differences("by default");
            OPTIONS.compare(defaults, restored.getInitFW(), "firmware", differences);
            verify("the firmware's defaults of adapter " + adapter.dev + " were restored", differences);
        }

        @Override
        int report(Adapter adapter) throws IOException {
            done("The firmware's defaults of adapter " + adapter.dev + " were restored.");
            return DONE;
        }
    }
}
