package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.codes.AddressType;
import com.varden.tavo.iscsi.codes.Status;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.iSNSDiscoveryConfig;
import com.varden.tavo.iscsi.model.iSNSTarget;
import java.io.IOException;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import picocli.CommandLine.Model.OptionSpec;
import picocli.CommandLine.Model.PositionalParamSpec;

/** Discovery by iSNS. */
final class IsnsDiscovery {
    private static final FlagField ENABLED = new FlagField("enableiSNSDiscoveryFlag", "Discovery enabled");

    static final RecordTable TABLE = new RecordTable(
        ENABLED,
        new FlagField("automaticDiscoveryFlag", "Automatic"),
        new AddressField("serverIPAddress", "Server"),
        new CodeField("serverIPAddressType", 16, "Server address type", AddressType.MEANINGS).readOnly(),
        new TextField("serverHostname", 256, "Server name").readOnly());

    private static final RecordTable TARGET = new RecordTable(
        NodeInfo.NAME,
        new TextField("iSCSIAlias", 32, "Alias"),
        new AddressField("IPAddress", "IP address"),
        new CodeField("IPAddressType", 16, "Address type", AddressType.MEANINGS),
        new NumberField("port", 16, "Port"));

    private IsnsDiscovery() {}

    static iSNSDiscoveryConfig read(Adapter adapter) {
        iSNSDiscoveryConfig config = new iSNSDiscoveryConfig();
        adapter.check("reading the iSNS settings", adapter.api.getiSNSDiscoveryConfig(adapter.dev, config));
        return config;
    }

    /** The settings, or null for an adapter that cannot discover by iSNS. */
    static iSNSDiscoveryConfig readIfSupported(Adapter adapter) {
        iSNSDiscoveryConfig config = new iSNSDiscoveryConfig();
        int status = adapter.api.getiSNSDiscoveryConfig(adapter.dev, config);
        if (Status.ERR_NOT_SUPPORTED.is(status) || Status.ERR_ISNS_NOT_SUPPORTED.is(status)) {
            return null;
        }
        adapter.check("reading the iSNS settings", status);
        return config;
    }

    /** Writes the settings; the adapter registers under the name given or else under its own. */
    static void write(Adapter adapter, iSNSDiscoveryConfig config, String name) {
        String registered = name;
        if (registered == null) {
            HBA hba = new HBA();
            adapter.check("reading the identity", adapter.api.getiSCSIAdapterInfo(adapter.dev, hba));
            registered = hba.getiSCSIName();
        }
        config.setHBAiSCSIName(registered);
        adapter.check("writing the iSNS settings", adapter.api.setiSNSDiscoveryConfig(adapter.dev, config));
    }

    /** hba isns show. */
    static final class Show extends DeviceCommand {
        Show() {
            super("Shows the settings. The adapter holds no name of the server.");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            show(TABLE, read(adapter));
            return DONE;
        }
    }

    /** What a change of the settings costs. */
    static List<String> losses(iSNSDiscoveryConfig present, iSNSDiscoveryConfig wanted) {
        return ENABLED.get(present) && !ENABLED.get(wanted)
            ? List.of("switches iSNS discovery off: the targets that only the server names are no longer found")
            : List.of();
    }

    /** hba isns set. */
    static final class SetSome extends WriteCommand {
        private final FieldOptions settings = new FieldOptions(this, TABLE);
        private final OptionSpec name = option("--hba-iscsi-name", NodeInfo.NAME,
            "iSCSI name under which the adapter registers, " + NodeInfo.NAME.range()
                + "; its own without this option.");
        private final OptionSpec force = force();

        SetSome() {
            super("Changes what the options name and keeps the rest.");
        }

        @Override
        void prepare() {
            if (name.getValue() == null) {
                FieldOptions.requireOne(settings);
            } else if (!isSet(force)) {
                IscsiName.require(name.getValue(), "--hba-iscsi-name");
            }
        }

        private iSNSDiscoveryConfig changed(Adapter adapter) {
            iSNSDiscoveryConfig config = read(adapter);
            settings.apply(config);
            return config;
        }

        @Override
        List<String> losses(Adapter adapter) {
            return IsnsDiscovery.losses(read(adapter), changed(adapter));
        }

        @Override
        void write(Adapter adapter) {
            iSNSDiscoveryConfig wanted = changed(adapter);
            IsnsDiscovery.write(adapter, wanted, name.getValue());
            Differences differences = new Differences("written");
            TABLE.compare(wanted, read(adapter), "iSNS", differences);
            verify("the iSNS settings of adapter " + adapter.dev + " were written", differences);
        }

        @Override
        int report(Adapter adapter) throws IOException {
            done("The iSNS settings of adapter " + adapter.dev + " were written.");
            return DONE;
        }
    }

    /** The targets that the server told of, each with its first portal. */
    static List<iSNSTarget> readTargets(Adapter adapter) {
        HBA hba = new HBA();
        int status = adapter.api.getiSNSTargets(adapter.dev, hba);
        if (Status.ERR_NOT_SUPPORTED.is(status) && !ENABLED.get(read(adapter))) {
            throw new OperationFailed("adapter " + adapter.dev + ": iSNS discovery is switched off. 'hba isns set "
                + adapter.dev + " " + ENABLED.option() + "=yes' switches it on.", status);
        }
        adapter.check("reading the iSNS targets", status);
        return hba.getiSNSTargets();
    }

    /** hba isns targets. */
    static final class Targets extends DeviceCommand {
        Targets() {
            super("Lists the targets that iSNS discovery found, each with its first portal.");
            listing(TARGET, "iSCSIName", "iSCSIAlias", "IPAddress", "port");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            showList(readTargets(adapter), "iSNS discovery found no target.");
            return DONE;
        }
    }

    /** hba isns add. */
    static final class Add extends WriteTargets {
        private final PositionalParamSpec names =
            parameters("NAME", NodeInfo.NAME, "iSCSI names of targets that 'hba isns targets' lists.");
        private final OptionSpec all = flag("--all", "Take all of them.");
        private final OptionSpec chapIndex = option("--chap-index", DeviceDatabaseEntry.CHAP_INDEX,
            "CHAP entry to log in with; none without this option.");
        private int known;

        Add() {
            super("Adds targets that iSNS discovery found to the configured ones, each under a free target ID, and "
                + "logs in. A target whose name is configured already stays as it is.");
        }

        @Override
        void prepare() {
            if (isSet(all) != names().isEmpty()) {
                throw new BadInput("name the targets to add, or give --all");
            }
        }

        private List<String> names() {
            List<String> given = names.getValue();
            return given == null ? List.of() : given;
        }

        // In the order in which they were found; each name once.
        private Map<String, iSNSTarget> chosen(Adapter adapter) {
            Map<String, iSNSTarget> found = new LinkedHashMap<>();
            for (iSNSTarget target : readTargets(adapter)) {
                found.putIfAbsent(target.getiSCSIName(), target);
            }
            for (String name : names()) {
                if (!found.containsKey(name)) {
                    throw new OperationFailed("adapter " + adapter.dev + ": iSNS discovery found no target "
                        + name + ". 'hba isns targets " + adapter.dev + "' lists what it found.");
                }
            }
            if (!isSet(all)) {
                found.keySet().retainAll(names());
            }
            return found;
        }

        @Override
        DeviceDatabaseChanges changes(Adapter adapter) {
            DeviceDatabaseChanges changes = new DeviceDatabaseChanges(adapter);
            Map<String, iSNSTarget> targets = chosen(adapter);
            known = targets.size();
            changes.present().forEach(there -> targets.remove(there.getNodeInfo().getiSCSIName()));
            known -= targets.size();
            changes.requireRoom(adapter, targets.size());
            for (iSNSTarget target : targets.values()) {
                DevDBEntry entry = changes.addNew(adapter, changes.firstFree(), target.getiSCSIName());
                DeviceDatabaseEntry.lead(entry, target.getiSCSIName(), target.getIPAddress(), target.getPort());
                NodeInfo.ALIAS.set(entry.getNodeInfo(), target.getiSCSIAlias());
                if (chapIndex.getValue() != null) {
                    entry.setChapIndex(number(chapIndex));
                }
            }
            if (refuses() && chapIndex.getValue() != null) {
                ChapTable.requireSecret(adapter, number(chapIndex), "--chap-index");
            }
            return changes;
        }

        @Override
        List<String> losses(Adapter adapter) {
            return List.of();
        }

        @Override
        void send(Adapter adapter, DeviceDatabaseChanges changes) {
            Interruption.watch();
            changes.write(adapter);
        }

        @Override
        String what(Adapter adapter, List<DevDBEntry> entries) {
            return entries.size() + (entries.size() == 1 ? " target was" : " targets were") + " added to adapter "
                + adapter.dev + ", " + known + (known == 1 ? " was" : " were") + " configured already.";
        }
    }
}
