package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonObject;
import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.model.CHAPTableEntry;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.iSNSDiscoveryConfig;
import java.io.IOException;
import java.io.OutputStream;
import java.util.ArrayList;
import java.util.List;
import picocli.CommandLine.Model.OptionSpec;
import picocli.CommandLine.Model.PositionalParamSpec;

/**
 * All settings of an adapter as one document.
 *
 * The sections are firmware, targets, CHAPTable and iSNS; a section that is missing is left alone by the import. What
 * the adapter does not take back is not in the document.
 */
final class Backup {
    private static final String FORMAT = "hba settings";
    private static final String FIRMWARE = "firmware";
    private static final String TARGETS = "targets";
    private static final String CHAP = "CHAPTable";
    private static final String ISNS = "iSNS";

    private Backup() {}

    /** All settings, read before the first of them is written; no iSNS settings where iSNS is not supported. */
    private record Settings(
        HBA firmware, List<DevDBEntry> targets, List<CHAPTableEntry> chap, iSNSDiscoveryConfig isns) {
        static Settings read(Adapter adapter) {
            return new Settings(FirmwareConfiguration.readWithNames(adapter), DeviceDatabaseEntry.readAll(adapter),
                ChapTable.readAll(adapter), IsnsDiscovery.readIfSupported(adapter));
        }

        /** Writes the document; notes what an import could not write back and what therefore is not in it. */
        void write(OutputStream out, boolean reveal, List<String> leftOut) throws IOException {
            JsonWriter json = Terminal.json(out, "  ");
            json.beginObject().name("format").value(FORMAT);
            json.name(FIRMWARE);
            FirmwareConfiguration.TABLE.writeBack(json, firmware, FIRMWARE, leftOut);
            json.name(TARGETS);
            DeviceDatabaseEntry.writeBack(json, targets, TARGETS, leftOut);
            json.name(CHAP);
            ChapTable.writeBack(json, chap, reveal, CHAP, leftOut);
            if (isns != null) {
                json.name(ISNS);
                IsnsDiscovery.TABLE.writeBack(json, isns, ISNS, leftOut);
            }
            json.endObject();
            json.flush();
            out.write('\n');
        }
    }

    /** hba export. */
    static final class Export extends DeviceCommand {
        private final PositionalParamSpec file =
            parameter("FILE", "0..1", "The file to write; the standard output without it, or for -.");
        private final OptionSpec reveal =
            flag("--reveal", "Write the CHAP secrets too; only the owner can then read the file.");
        private OutputFile output;

        Export() {
            super("Writes everything that can be written back: firmware settings, targets, CHAP table, iSNS settings. "
                + "CHAP secrets are written as " + ChapSecret.HIDDEN + ", and an import then keeps those of the "
                + "adapter; with --reveal they are in the document. An existing file is replaced after a question.");
            needsConfirmation();
        }

        @Override
        void prepare() {
            String name = file.getValue();
            if (name != null && !name.equals("-")) {
                output = new OutputFile(name);
                if (output.exists()) {
                    confirm("replaces " + output.path());
                }
            }
        }

        @Override
        int run(Adapter adapter) throws IOException {
            Settings settings = Settings.read(adapter);
            List<String> leftOut = new ArrayList<>();
            if (output == null) {
                settings.write(System.out, isSet(reveal), leftOut);
            } else {
                output.replace(isSet(reveal), out -> settings.write(out, isSet(reveal), leftOut));
                done("The settings of adapter " + adapter.dev + " were written to " + output.path() + ".");
            }
            for (String line : leftOut) {
                Terminal.message(line + "; it is left out, and an import leaves the adapter's as it is");
            }
            return DONE;
        }
    }

    /** hba import. */
    static final class Import extends WriteCommand {
        private final PositionalParamSpec file =
            parameter("FILE", "1", "A document of 'hba export', or - for the standard input.");
        private final OptionSpec dryRun = flag("--compare", "Write nothing, only say what differs.");
        private final OptionSpec force = force();
        private JsonObject document;
        private Plan plan;
        private Differences differences;

        Import() {
            super("Writes the settings of a document to the adapter, reads them back and says what differs. Sections "
                + "that the document lacks are left alone. Nothing is written unless the whole document is in order.");
        }

        /** What the document makes of the adapter's settings; null for sections that it lacks. */
        private record Plan(HBA firmwareBefore, HBA firmware, DeviceDatabaseChanges targets, List<CHAPTableEntry> chap,
            boolean chapDiffers, iSNSDiscoveryConfig isnsBefore, iSNSDiscoveryConfig isns) {
            List<String> losses() {
                List<String> losses = new ArrayList<>();
                if (firmware != null) {
                    losses.addAll(FirmwareConfiguration.losses(firmwareBefore, firmware));
                }
                if (chapDiffers) {
                    losses.add("replaces the CHAP table");
                }
                if (targets != null) {
                    losses.addAll(targets.losses(true));
                }
                if (isns != null) {
                    losses.addAll(IsnsDiscovery.losses(isnsBefore, isns));
                }
                return losses;
            }
        }

        @Override
        void prepare() {
            document = JsonDocument.object(JsonDocument.parse(file.getValue()), "");
            for (String name : document.keySet()) {
                if (!List.of("format", FIRMWARE, TARGETS, CHAP, ISNS).contains(name)) {
                    throw new BadInput(name + ": there is no such section");
                }
            }
            if (!document.has("format") || !document.get("format").isJsonPrimitive()
                || !document.get("format").getAsString().equals(FORMAT)) {
                throw new BadInput("format: \"" + FORMAT + "\" is needed; this is no document of 'hba export'");
            }
            if (document.has(FIRMWARE)) {
                FirmwareConfiguration.TABLE.read(document.get(FIRMWARE), new HBA(), FIRMWARE);
            }
            if (document.has(TARGETS)) {
                DeviceDatabaseChanges.validate(JsonDocument.array(document.get(TARGETS), TARGETS), TARGETS);
            }
            if (document.has(CHAP)) {
                ChapTable.read(JsonDocument.array(document.get(CHAP), CHAP), CHAP, null);
            }
            if (document.has(ISNS)) {
                IsnsDiscovery.TABLE.read(document.get(ISNS), new iSNSDiscoveryConfig(), ISNS);
            }
        }

        // All is read before anything is written.
        private Plan read(Adapter adapter) {
            HBA firmwareBefore = null;
            HBA firmware = null;
            if (document.has(FIRMWARE)) {
                firmwareBefore = FirmwareConfiguration.readWithNames(adapter);
                firmware = FirmwareConfiguration.readWithNames(adapter);
                FirmwareConfiguration.TABLE.read(document.get(FIRMWARE), firmware, FIRMWARE);
                if (refuses() && !NodeInfo.NAME.isSame(firmware.getiSCSIName(), firmwareBefore.getiSCSIName())) {
                    IscsiName.require(firmware.getiSCSIName(), FIRMWARE + "." + NodeInfo.NAME.name);
                }
            }
            DeviceDatabaseChanges targets = null;
            if (document.has(TARGETS)) {
                targets = new DeviceDatabaseChanges(adapter, document.getAsJsonArray(TARGETS), TARGETS);
                if (refuses()) {
                    targets.requireSense();
                }
            }
            List<CHAPTableEntry> chap = null;
            boolean chapDiffers = false;
            if (document.has(CHAP)) {
                List<CHAPTableEntry> present = ChapTable.readAll(adapter);
                chap = ChapTable.read(document.getAsJsonArray(CHAP), CHAP, present);
                // The table as it is need not be written, and perhaps cannot be.
                chapDiffers = writes() && ChapTable.differs(chap, present, CHAP);
            }
            iSNSDiscoveryConfig isnsBefore = null;
            iSNSDiscoveryConfig isns = null;
            if (document.has(ISNS)) {
                isnsBefore = IsnsDiscovery.read(adapter);
                isns = IsnsDiscovery.read(adapter);
                IsnsDiscovery.TABLE.read(document.get(ISNS), isns, ISNS);
            }
            return new Plan(firmwareBefore, firmware, targets, chap, chapDiffers, isnsBefore, isns);
        }

        // What is unlikely to be meant is not written.
        private boolean refuses() {
            return writes() && !isSet(force);
        }

        @Override
        boolean writes() {
            return !isSet(dryRun);
        }

        @Override
        List<String> losses(Adapter adapter) {
            List<String> losses = new ArrayList<>(List.of("overwrites the settings of adapter " + adapter.dev));
            losses.addAll(read(adapter).losses());
            return losses;
        }

        @Override
        void write(Adapter adapter) {
            plan = read(adapter);
            if (writes()) {
                Interruption.watch();
                Steps steps = new Steps();
                steps.add(FIRMWARE, plan.firmware, () -> FirmwareConfiguration.write(adapter, plan.firmware));
                steps.add(CHAP, plan.chapDiffers ? plan.chap : null, () -> ChapTable.write(adapter, plan.chap));
                steps.add(TARGETS, plan.targets, () -> plan.targets.write(adapter));
                steps.add(ISNS, plan.isns, () -> IsnsDiscovery.write(adapter, plan.isns, null));
                steps.run();
            }
            differences = compare(adapter);
        }

        @Override
        int report(Adapter adapter) throws IOException {
            String name = "adapter " + adapter.dev;
            return writes()
                ? report("The settings of " + name + " were written.", differences,
                    plan.targets == null ? null : Logins.await(adapter, plan.targets.wanted()))
                : report("The document was compared with " + name + ".", differences, null);
        }

        private Differences compare(Adapter adapter) {
            Differences found = new Differences("in the file");
            if (plan.firmware != null) {
                FirmwareConfiguration.TABLE.compare(
                    plan.firmware, FirmwareConfiguration.readWithNames(adapter), FIRMWARE, found);
            }
            if (plan.targets != null) {
                plan.targets.compare(adapter, TARGETS, found);
                for (DevDBEntry entry : DeviceDatabaseEntry.readAll(adapter)) {
                    if (DeviceDatabaseEntry.find(plan.targets.wanted(), entry.getTargetID()) == null) {
                        found.add(TARGETS + "[targetID " + entry.getTargetID() + "]: only on the adapter");
                    }
                }
            }
            if (plan.chap != null) {
                ChapTable.compare(plan.chap, ChapTable.readAll(adapter), CHAP, found);
            }
            if (plan.isns != null) {
                IsnsDiscovery.TABLE.compare(plan.isns, IsnsDiscovery.read(adapter), ISNS, found);
            }
            return found;
        }
    }

    /** Sections written one after the other; a failure or a signal in between tells which were and which were not. */
    private static final class Steps {
        private final List<String> names = new ArrayList<>();
        private final List<Runnable> writes = new ArrayList<>();

        /** A section that is null is passed over. */
        void add(String name, Object section, Runnable write) {
            if (section != null) {
                names.add(name);
                writes.add(write);
            }
        }

        void run() {
            for (int done = 0; done < names.size(); done++) {
                try {
                    if (Interruption.isRequested()) {
                        throw new OperationFailed("interrupted");
                    }
                    writes.get(done).run();
                } catch (OperationFailed e) {
                    throw new OperationFailed(e.getMessage() + "\nSections written: " + list(names.subList(0, done))
                        + ". Not written, or not as a whole: " + list(names.subList(done, names.size())) + ".",
                        e.status);
                }
            }
        }

        private static String list(List<String> sections) {
            return sections.isEmpty() ? "nothing" : String.join(", ", sections);
        }
    }
}
