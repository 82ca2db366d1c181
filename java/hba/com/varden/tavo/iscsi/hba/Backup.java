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
            JsonWriter json = Command.jsonWriter(out);
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
    static final class Import extends DeviceCommand {
        private final PositionalParamSpec file =
            parameter("FILE", "1", "A document of 'hba export', or - for the standard input.");
        private final OptionSpec dryRun = flag("--compare", "Write nothing, only say what differs.");
        private JsonObject document;

        Import() {
            super("Writes the settings of a document to the adapter, reads them back and says what differs. Sections "
                + "that the document lacks are left alone. Nothing is written unless the whole document is in order.");
            needsConfirmation();
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
                DeviceDatabaseEntry.validate(JsonDocument.array(document.get(TARGETS), TARGETS), TARGETS);
            }
            if (document.has(CHAP)) {
                ChapTable.read(JsonDocument.array(document.get(CHAP), CHAP), CHAP, null);
            }
            if (document.has(ISNS)) {
                IsnsDiscovery.TABLE.read(document.get(ISNS), new iSNSDiscoveryConfig(), ISNS);
            }
            if (!isSet(dryRun)) {
                confirm("overwrites the adapter's settings");
            }
        }

        @Override
        int run(Adapter adapter) throws IOException {
            // All is read before anything is written.
            HBA firmware = null;
            List<DevDBEntry> targets = null;
            List<CHAPTableEntry> chap = null;
            boolean writeChap = false;
            iSNSDiscoveryConfig isns = null;
            if (document.has(FIRMWARE)) {
                firmware = FirmwareConfiguration.readWithNames(adapter);
                FirmwareConfiguration.TABLE.read(document.get(FIRMWARE), firmware, FIRMWARE);
            }
            if (document.has(TARGETS)) {
                targets = DeviceDatabaseEntry.read(adapter, document.getAsJsonArray(TARGETS), TARGETS);
            }
            if (document.has(CHAP)) {
                List<CHAPTableEntry> present = ChapTable.readAll(adapter);
                chap = ChapTable.read(document.getAsJsonArray(CHAP), CHAP, present);
                // The table as it is need not be written, and perhaps cannot be.
                writeChap = !isSet(dryRun) && ChapTable.differs(chap, present, CHAP);
            }
            if (document.has(ISNS)) {
                isns = IsnsDiscovery.read(adapter);
                IsnsDiscovery.TABLE.read(document.get(ISNS), isns, ISNS);
            }
            if (!isSet(dryRun)) {
                write(adapter, firmware, targets, writeChap ? chap : null, isns);
            }
            Differences differences = compare(adapter, firmware, targets, chap, isns);
            String name = "adapter " + adapter.dev;
            return report(isSet(dryRun) ? "The document was compared with " + name + "."
                              : "The settings of " + name + " were written.",
                differences);
        }

        private static void write(Adapter adapter, HBA firmware, List<DevDBEntry> targets, List<CHAPTableEntry> chap,
            iSNSDiscoveryConfig isns) {
            if (firmware != null) {
                FirmwareConfiguration.write(adapter, firmware);
            }
            if (chap != null) {
                ChapTable.write(adapter, chap);
            }
            if (targets != null) {
                DeviceDatabaseEntry.write(adapter, targets);
            }
            if (isns != null) {
                IsnsDiscovery.write(adapter, isns, null);
            }
        }

        private static Differences compare(Adapter adapter, HBA firmware, List<DevDBEntry> targets,
            List<CHAPTableEntry> chap, iSNSDiscoveryConfig isns) {
            Differences differences = new Differences("in the file");
            if (firmware != null) {
                FirmwareConfiguration.TABLE.compare(
                    firmware, FirmwareConfiguration.readWithNames(adapter), FIRMWARE, differences);
            }
            if (targets != null) {
                DeviceDatabaseEntry.compare(adapter, targets, TARGETS, differences);
                for (DevDBEntry entry : DeviceDatabaseEntry.readAll(adapter)) {
                    if (DeviceDatabaseEntry.find(targets, entry.getTargetID()) == null) {
                        differences.add(TARGETS + "[targetID " + entry.getTargetID() + "]: only on the adapter");
                    }
                }
            }
            if (chap != null) {
                ChapTable.compare(chap, ChapTable.readAll(adapter), CHAP, differences);
            }
            if (isns != null) {
                IsnsDiscovery.TABLE.compare(isns, IsnsDiscovery.read(adapter), ISNS, differences);
            }
            return differences;
        }
    }
}
