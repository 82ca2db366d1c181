package com.varden.tavo.iscsi.hba;

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
    static final String FORMAT = "hba settings";
    static final String FIRMWARE = "firmware";
    static final String TARGETS = "targets";
    static final String CHAP = "CHAPTable";
    static final String ISNS = "iSNS";

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
}
