package com.varden.tavo.iscsi.hba;

import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.codes.Status;
import com.varden.tavo.iscsi.codes.TargetState;
import com.varden.tavo.iscsi.codes.Units;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.Lun;
import com.varden.tavo.iscsi.model.Target;
import java.io.IOException;
import java.util.ArrayList;
import java.util.List;
import picocli.CommandLine.Model.OptionSpec;
import picocli.CommandLine.Model.PositionalParamSpec;

/**
 * hba lun list: the logical units of a target, each with what it says of itself. REPORT LUNS is sent anew each time,
 * nothing is kept; what --rescan adds is a new session, without which some targets do not show units that came later.
 */
final class ScsiPassThroughUnits extends WriteCommand {
    private final PositionalParamSpec target =
        parameter("TARGET", DeviceDatabaseEntry.TARGET_ID, "Target ID, 0 to 511.");
    private final OptionSpec bus = ScsiPassThrough.Unit.bus(this);
    private final OptionSpec rescan = flag("--rescan", "Log out of the target and in again before it is asked.");
    private final List<Row> rows = new ArrayList<>();
    private String failure;

    /** A unit, and the statuses with which it answered. */
    private record Row(Lun unit, int inquiry, int capacity) {}

    ScsiPassThroughUnits() {
        super("Asks a target for its logical units, and each unit for vendor, product and size. A target that reports "
            + "no unit is given LUN 0. A dash stands for what a unit does not tell.");
    }

    @Override
    boolean writes() {
        return isSet(rescan);
    }

    @Override
    List<String> losses(Adapter adapter) {
        DevDBEntry entry = DeviceDatabaseEntry.read(adapter, number(target));
        return entry.getState() == TargetState.LOGGED_IN
            ? List.of("interrupts the session with " + DeviceDatabaseEntry.describe(entry)) : List.of();
    }

    @Override
    void write(Adapter adapter) {
        if (isSet(rescan)) {
            DevDBEntry entry = DeviceDatabaseEntry.read(adapter, number(target));
            if (entry.getState() == TargetState.LOGGED_IN) {
                Logins.logOut(adapter, number(target), 0, 0);
            }
            Logins.logIn(adapter, entry);
        }
    }

    @Override
    int report(Adapter adapter) throws IOException {
        Target found = new Target();
        found.getTargetInfo().setTargetID(number(target));
        found.getTargetInfo().setBus(bus.getValue() == null ? 0 : number(bus));
        adapter.check("asking target " + number(target) + " for its logical units",
            adapter.api.getScsiReportLUNsData(adapter.dev, new HBA(), found));
        for (int i = 0; i < found.getLUNs().size() && failure == null; i++) {
            ask(adapter, found, found.getLUNs().get(i));
            Terminal.progress("units asked", i + 1, found.getLUNs().size());
        }
        Terminal.endProgress();
        if (wantsJson()) {
            write(found);
        } else {
            print(found);
        }
        if (failure != null) {
            Terminal.message(failure);
            if (rows.size() < found.getLUNs().size()) {
                Terminal.message("the units behind it were not asked");
            }
            return FAILED;
        }
        return DONE;
    }

    private void ask(Adapter adapter, Target found, int firstLevel) {
        Lun unit = new Lun();
        unit.getTargetInfo().setBus(found.getTargetInfo().getBus());
        unit.getTargetInfo().setTargetID(number(target));
        unit.getTargetInfo().setLUN(firstLevel);
        int inquiry = adapter.api.getScsiInquiryData(adapter.dev, unit.getTargetInfo(), unit.getSCSIInqInfo());
        int capacity =
            ScsiPassThrough.isAnswer(inquiry) ? adapter.api.getScsiReadCapacityData(adapter.dev, unit) : inquiry;
        rows.add(new Row(unit, inquiry, capacity));
        // A unit may refuse; when the target itself no longer answers, each further unit would wait for a deadline.
        if (!ScsiPassThrough.isAnswer(capacity)) {
            failure = "adapter " + adapter.dev + ": asking logical unit " + Lun.unitNumber(firstLevel) + " of target "
                + number(target) + " failed: " + Cure.describe(capacity);
        }
    }

    private void print(Target found) {
        TextOutput.Columns columns = new TextOutput.Columns("LUN", "Vendor", "Product", "Size");
        for (Row row : rows) {
            boolean known = row.inquiry == 0;
            columns.row(Lun.unitNumber(row.unit.getTargetInfo().getLUN()),
                known ? row.unit.getSCSIInqInfo().getVendorID().trim() : null,
                known ? row.unit.getSCSIInqInfo().getProductID().trim() : null,
                row.capacity == 0 ? size(row.unit) : null);
        }
        for (int firstLevel : found.getLUNs().subList(rows.size(), found.getLUNs().size())) {
            columns.row(Lun.unitNumber(firstLevel), null, null, null);
        }
        columns.print(System.out);
    }

    private static String size(Lun unit) {
        return Units.shortBytes(unit.getCapacity()) + (unit.isCapacityMinimum() ? " or more" : "");
    }

    private void write(Target found) throws IOException {
        JsonWriter json = jsonWriter();
        json.beginObject().name("targetInfo");
        ScsiPassThrough.ADDRESS.without(ScsiPassThrough.UNIT).write(json, found.getTargetInfo());
        json.name("LUNs").beginArray();
        for (int firstLevel : found.getLUNs()) {
            json.value(Lun.unitNumber(firstLevel));
        }
        json.endArray().name("units").beginArray();
        for (Row row : rows) {
            json.beginObject();
            new RecordTable(ScsiPassThrough.UNIT).writeMembers(json, row.unit.getTargetInfo());
            if (row.inquiry == 0) {
                ScsiPassThrough.INQUIRY.writeMembers(json, row.unit.getSCSIInqInfo());
            }
            if (row.capacity == 0) {
                ScsiPassThrough.CAPACITIES.writeMembers(json, row.unit);
            } else {
                json.name("failure").value(Status.describe(row.capacity));
            }
            json.endObject();
        }
        json.endArray().endObject();
        finish(json);
    }
}
