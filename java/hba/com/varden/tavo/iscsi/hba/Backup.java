package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonObject;
import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.model.CHAPTableEntry;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.iSNSDiscoveryConfig;
import java.io.File;
import java.io.IOException;
import java.io.OutputStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.nio.file.attribute.PosixFilePermission;
import java.util.EnumSet;
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

    private static void write(JsonWriter json, Adapter adapter, boolean reveal) throws IOException {
        HBA hba = FirmwareConfiguration.readWithNames(adapter);
        List<DevDBEntry> targets = DeviceDatabaseEntry.readAll(adapter);
        List<CHAPTableEntry> chap = ChapTable.readAll(adapter);
        iSNSDiscoveryConfig isns = IsnsDiscovery.readIfSupported(adapter);
        json.beginObject().name("format").value(FORMAT);
        json.name(FIRMWARE);
        FirmwareConfiguration.TABLE.write(json, hba, true);
        json.name(TARGETS);
        DeviceDatabaseEntry.TABLE.writeList(json, targets, true);
        json.name(CHAP);
        ChapTable.write(json, chap, reveal);
        if (isns != null) {
            json.name(ISNS);
            IsnsDiscovery.TABLE.write(json, isns, true);
        }
        json.endObject();
    }

    /** hba export. */
    static final class Export extends DeviceCommand {
        private final PositionalParamSpec file =
            parameter("FILE", "0..1", "The file to write, an old one is replaced; the standard output without it.");
        private final OptionSpec reveal = flag("--reveal", "Write the CHAP secrets too.");

        Export() {
            super("Writes everything that can be written back: firmware settings, targets, CHAP table, iSNS settings. "
                + "CHAP secrets are written as " + ChapSecret.HIDDEN + ", and an import then keeps those of the "
                + "adapter; with --reveal they are in the document.");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            if (file.getValue() == null) {
                JsonWriter json = jsonWriter();
                write(json, adapter, isSet(reveal));
                finish(json);
                return DONE;
            }
            File target = UserInput.file(file.getValue());
            // Never half a document in the place of a whole one, and for the owner's eyes alone.
            Path draft = Files.createTempFile(target.getParentFile().toPath(), ".hba", null);
            try {
                try (OutputStream out = Files.newOutputStream(draft)) {
                    JsonWriter json = jsonWriter(out);
                    write(json, adapter, isSet(reveal));
                    json.flush();
                    out.write('\n');
                }
                if (!isSet(reveal)) {
                    Files.setPosixFilePermissions(draft, EnumSet.of(PosixFilePermission.OWNER_READ,
                        PosixFilePermission.OWNER_WRITE, PosixFilePermission.GROUP_READ,
                        PosixFilePermission.OTHERS_READ));
                }
                Files.move(draft, target.toPath(), StandardCopyOption.REPLACE_EXISTING);
            } finally {
                Files.deleteIfExists(draft);
            }
            done("The settings of adapter " + adapter.dev + " were written to " + target + ".");
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
