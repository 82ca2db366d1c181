package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonObject;
import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.model.CHAPTableEntry;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.iSNSDiscoveryConfig;
import java.io.IOException;
import java.util.ArrayList;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.function.Consumer;
import picocli.CommandLine.Model.OptionSpec;
import picocli.CommandLine.Model.PositionalParamSpec;

/** hba import: writes the settings of a document to an adapter, or says what that would change. */
final class BackupImport extends WriteCommand {
    private final PositionalParamSpec file =
        parameter("FILE", "1", "A document of 'hba export', or - for the standard input.");
    private final OptionSpec dryRun = flag("--dry-run", "Write nothing, only say what would change and be lost.");
    private final OptionSpec compare =
        flag("--compare", "Write nothing, only say what differs; exit status 1 when something does.");
    private final OptionSpec prune = flag("--prune", "Remove the targets that the document does not name.");
    private final OptionSpec force = force();
    private JsonObject document;
    private Plan plan;
    private Differences differences;
    private final List<String> refusals = new ArrayList<>();

    BackupImport() {
        super("Writes the settings of a document to the adapter, reads them back and says what differs. Sections that "
            + "the document lacks are left alone, and what the adapter has already is not written again. Nothing is "
            + "written unless the whole document is in order. The CHAP table becomes that of the document; targets "
            + "that the document does not name stay without --prune.");
    }

    /** What the document makes of the adapter's settings; null for sections that it lacks. */
    private record Plan(HBA firmwareBefore, HBA firmware, DeviceDatabaseChanges targets,
        List<CHAPTableEntry> chapBefore, List<CHAPTableEntry> chap, iSNSDiscoveryConfig isnsBefore,
        iSNSDiscoveryConfig isns) {
        /** What a write costs; nothing when it changes nothing. */
        List<String> losses(int dev) {
            List<String> losses = new ArrayList<>();
            if (changesAnything()) {
                losses.add("overwrites the settings of adapter " + dev);
            }
            if (firmware != null) {
                losses.addAll(FirmwareConfiguration.losses(firmwareBefore, firmware));
            }
            if (chap != null) {
                losses.addAll(ChapTable.losses(chap, chapBefore));
            }
            if (targets != null) {
                losses.addAll(targets.losses(true));
            }
            if (isns != null) {
                losses.addAll(IsnsDiscovery.losses(isnsBefore, isns));
            }
            return losses;
        }

        /** What a write changes in each section of the document. */
        Map<String, Differences> changes() {
            Map<String, Differences> changes = new LinkedHashMap<>();
            if (firmware != null) {
                FirmwareConfiguration.TABLE.compare(
                    firmware, firmwareBefore, Backup.FIRMWARE, section(changes, Backup.FIRMWARE));
            }
            if (chap != null) {
                ChapTable.compare(chap, chapBefore, Backup.CHAP, section(changes, Backup.CHAP));
            }
            if (targets != null) {
                targets.plan(Backup.TARGETS, section(changes, Backup.TARGETS));
            }
            if (isns != null) {
                IsnsDiscovery.TABLE.compare(isns, isnsBefore, Backup.ISNS, section(changes, Backup.ISNS));
            }
            return changes;
        }

        boolean changesAnything() {
            return changes().values().stream().anyMatch(section -> !section.isEmpty());
        }

        private static Differences section(Map<String, Differences> changes, String name) {
            return changes.computeIfAbsent(name, section -> Differences.planned());
        }

        /** The sections and targets of the document that the adapter has already. */
        List<String> unchanged() {
            List<String> unchanged = new ArrayList<>();
            changes().forEach((name, section) -> {
                if (section.isEmpty() && !name.equals(Backup.TARGETS)) {
                    unchanged.add(name);
                }
            });
            if (targets != null && !targets.unchanged().isEmpty()) {
                unchanged.add(Backup.TARGETS + " " + DeviceDatabaseEntry.ranges(targets.unchanged()));
            }
            return unchanged;
        }

        void forgetSecrets() {
            if (chap != null) {
                ChapTable.forget(chap);
                ChapTable.forget(chapBefore);
            }
        }
    }

    @Override
    void prepare() {
        if (isSet(compare) && (isSet(dryRun) || isSet(prune))) {
            throw new BadInput("--compare goes with neither --dry-run nor --prune");
        }
        document = JsonDocument.object(JsonDocument.parse(file.getValue()), "");
        for (String name : document.keySet()) {
            if (!List.of("format", Backup.FIRMWARE, Backup.TARGETS, Backup.CHAP, Backup.ISNS).contains(name)) {
                throw new BadInput(name + ": there is no such section");
            }
        }
        if (!document.has("format") || !document.get("format").isJsonPrimitive()
            || !document.get("format").getAsString().equals(Backup.FORMAT)) {
            throw new BadInput("format: \"" + Backup.FORMAT + "\" is needed; this is no document of 'hba export'");
        }
        if (document.has(Backup.FIRMWARE)) {
            FirmwareConfiguration.TABLE.read(document.get(Backup.FIRMWARE), new HBA(), Backup.FIRMWARE);
        }
        if (document.has(Backup.TARGETS)) {
            DeviceDatabaseChanges.validate(JsonDocument.array(document.get(Backup.TARGETS), Backup.TARGETS),
                Backup.TARGETS);
        }
        if (document.has(Backup.CHAP)) {
            ChapTable.read(JsonDocument.array(document.get(Backup.CHAP), Backup.CHAP), Backup.CHAP, null, hidden -> {});
        }
        if (document.has(Backup.ISNS)) {
            IsnsDiscovery.TABLE.read(document.get(Backup.ISNS), new iSNSDiscoveryConfig(), Backup.ISNS);
        }
    }

    // All is read before anything is written.
    private Plan read(Adapter adapter) {
        HBA firmwareBefore = null;
        HBA firmware = null;
        if (document.has(Backup.FIRMWARE)) {
            firmwareBefore = FirmwareConfiguration.readWithNames(adapter);
            firmware = FirmwareConfiguration.readWithNames(adapter);
            FirmwareConfiguration.TABLE.read(document.get(Backup.FIRMWARE), firmware, Backup.FIRMWARE);
            if (refuses() && !NodeInfo.NAME.isSame(firmware.getiSCSIName(), firmwareBefore.getiSCSIName())) {
                IscsiName.require(firmware.getiSCSIName(), Backup.FIRMWARE + "." + NodeInfo.NAME.name);
            }
        }
        DeviceDatabaseChanges targets = null;
        if (document.has(Backup.TARGETS)) {
            targets = new DeviceDatabaseChanges(adapter, document.getAsJsonArray(Backup.TARGETS), Backup.TARGETS);
            if (isSet(prune)) {
                targets.prune();
            }
            if (refuses()) {
                targets.requireSense();
            }
        }
        List<CHAPTableEntry> chapBefore = null;
        List<CHAPTableEntry> chap = null;
        if (document.has(Backup.CHAP)) {
            chapBefore = ChapTable.readAll(adapter);
            chap = ChapTable.read(document.getAsJsonArray(Backup.CHAP), Backup.CHAP, chapBefore, hiddenSecret());
            if (!isSet(compare)) {
                ChapTable.requireWritable(chap, chapBefore, Backup.CHAP);
            }
        }
        iSNSDiscoveryConfig isnsBefore = null;
        iSNSDiscoveryConfig isns = null;
        if (document.has(Backup.ISNS)) {
            isnsBefore = IsnsDiscovery.read(adapter);
            isns = IsnsDiscovery.read(adapter);
            IsnsDiscovery.TABLE.read(document.get(Backup.ISNS), isns, Backup.ISNS);
        }
        return new Plan(firmwareBefore, firmware, targets, chapBefore, chap, isnsBefore, isns);
    }

    // What is unlikely to be meant is not written.
    private boolean refuses() {
        return !isSet(compare) && !isSet(force);
    }

    // A secret that is not known cannot be written. All the rest can be compared.
    private Consumer<String> hiddenSecret() {
        return message -> {
            if (writes()) {
                throw new BadInput(message);
            }
            refusals.add(message);
        };
    }

    @Override
    boolean writes() {
        return !isSet(compare) && !isSet(dryRun);
    }

    @Override
    List<String> losses(Adapter adapter) {
        Plan asked = read(adapter);
        List<String> losses = asked.losses(adapter.dev);
        asked.forgetSecrets();
        return losses;
    }

    @Override
    void write(Adapter adapter) {
        plan = read(adapter);
        if (writes()) {
            Interruption.watch();
            BackupSteps steps = new BackupSteps(plan.changes());
            steps.add(Backup.FIRMWARE, () -> FirmwareConfiguration.write(adapter, plan.firmware));
            steps.add(Backup.CHAP, () -> ChapTable.write(adapter, plan.chap));
            steps.add(Backup.TARGETS, () -> plan.targets.writeChanged(adapter));
            steps.add(Backup.ISNS, () -> IsnsDiscovery.write(adapter, plan.isns, null));
            steps.run();
        }
        differences = isSet(dryRun) ? null : compare(adapter);
    }

    @Override
    int report(Adapter adapter) throws IOException {
        int status;
        if (isSet(dryRun)) {
            status = reportPlan(adapter.dev);
        } else if (isSet(compare)) {
            status = report("The document was compared with adapter " + adapter.dev + ".", List.of(), null, differences,
                null);
        } else {
            List<DevDBEntry> targets = plan.targets == null ? List.of() : plan.targets.changed();
            String done = plan.changesAnything() ? "The settings of adapter %d were written."
                                                 : "Nothing was written to adapter %d.";
            status = report(done.formatted(adapter.dev), targets, plan.unchanged(), differences,
                plan.targets == null ? null : Logins.await(adapter, targets));
        }
        plan.forgetSecrets();
        return status;
    }

    private int reportPlan(int dev) throws IOException {
        List<Integer> staying = plan.targets == null ? List.of() : plan.targets.notNamed();
        List<String> losses = plan.losses(dev);
        List<String> changes = plan.changes().values().stream().flatMap(section -> section.lines().stream()).toList();
        if (wantsJson()) {
            JsonWriter json = jsonWriter();
            json.beginObject().name("done").value("Nothing was written.");
            writeLines(json, "changes", changes);
            writeLines(json, "unchanged", plan.unchanged());
            writeLines(json, "losses", losses);
            writeLines(json, "refusals", refusals);
            json.name("onlyOnAdapter").beginArray();
            for (int target : staying) {
                json.value(target);
            }
            json.endArray().endObject();
            finish(json);
        } else {
            printLines("An import would change nothing.", "An import would change:", changes);
            printLines("", "Unchanged:", plan.unchanged());
            printLines("", "It asks first, since it", losses);
            if (!staying.isEmpty()) {
                System.out.println("Only on the adapter, and staying there without --prune: target"
                    + (staying.size() == 1 ? " " : "s ") + DeviceDatabaseEntry.ranges(staying) + ".");
            }
            printLines("", "It is refused as long as", refusals);
            System.out.println("Nothing was written.");
        }
        return refusals.isEmpty() ? DONE : FAILED;
    }

    private static void printLines(String none, String heading, List<String> lines) {
        if (!lines.isEmpty() || !none.isEmpty()) {
            System.out.println(lines.isEmpty() ? none : heading);
        }
        for (String line : lines) {
            System.out.println("  " + TerminalText.of(line));
        }
    }

    private Differences compare(Adapter adapter) {
        Differences found = new Differences("in the file");
        if (plan.firmware != null) {
            FirmwareConfiguration.TABLE.compare(
                plan.firmware, FirmwareConfiguration.readWithNames(adapter), Backup.FIRMWARE, found);
        }
        if (plan.targets != null) {
            plan.targets.compare(adapter, Backup.TARGETS, found);
            for (DevDBEntry entry : DeviceDatabaseEntry.readAll(adapter)) {
                if (DeviceDatabaseEntry.find(plan.targets.wanted(), entry.getTargetID()) == null) {
                    found.add(Backup.TARGETS + "[targetID " + entry.getTargetID()
                        + "]: only on the adapter; --prune removes it");
                }
            }
        }
        if (plan.chap != null) {
            ChapTable.compare(plan.chap, ChapTable.readAll(adapter), Backup.CHAP, found);
        }
        if (plan.isns != null) {
            IsnsDiscovery.TABLE.compare(plan.isns, IsnsDiscovery.read(adapter), Backup.ISNS, found);
        }
        return found;
    }
}
