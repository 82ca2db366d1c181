package com.varden.tavo.iscsi.hba;

import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.codes.Status;
import com.varden.tavo.iscsi.codes.TargetState;
import com.varden.tavo.iscsi.codes.Units;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.Lun;
import com.varden.tavo.iscsi.model.SCSIInqInfo;
import com.varden.tavo.iscsi.model.Target;
import com.varden.tavo.iscsi.model.TargetInfo;
import java.io.IOException;
import java.math.BigInteger;
import java.util.ArrayList;
import java.util.List;
import picocli.CommandLine.Model.OptionSpec;
import picocli.CommandLine.Model.PositionalParamSpec;

/**
 * hba lun list: the logical units of a target, each with what it says of itself. REPORT LUNS is sent anew each time,
 * nothing is kept; what --rescan adds is a new session, without which some targets do not show units that came later.
 */
final class ScsiPassThroughUnits extends WriteCommand {
    private static final RecordTable TABLE = new RecordTable(
        new RecordField("targetInfo", ScsiPassThrough.ADDRESS, "Address"),
        new RecordField("SCSIInqInfo", ScsiPassThrough.INQUIRY, "Identity"),
        ofCapacity(ScsiPassThrough.LAST_BLOCK),
        ofCapacity(ScsiPassThrough.BLOCK_LENGTH),
        new SizeOfUnit(),
        ofCapacity(ScsiPassThrough.CAPACITY_MINIMUM),
        new ScalarField<String>("failure", "Failure") {
            @Override
            String get(Object row) {
                return ((Row) row).failure;
            }
        });

    private final PositionalParamSpec target =
        parameter("TARGET", DeviceDatabaseEntry.TARGET_ID, "Target ID, 0 to 511.");
    private final OptionSpec bus = ScsiPassThrough.Unit.bus(this);
    private final OptionSpec rescan = flag("--rescan", "Log out of the target and in again before it is asked.");
    private String failure;

    /** A unit; of one that refuses a command identity or capacity are null. */
    record Row(TargetInfo address, SCSIInqInfo identity, Lun capacity, String failure) {
        public TargetInfo getTargetInfo() {
            return address;
        }

        public SCSIInqInfo getSCSIInqInfo() {
            return identity;
        }
    }

    /** The capacity in short, and nothing for a unit that does not tell it. */
    private static final class SizeOfUnit extends QuantityField<BigInteger> {
        SizeOfUnit() {
            super(ScsiPassThrough.CAPACITY.name, "Size");
        }

        @Override
        BigInteger get(Object row) {
            Lun unit = ((Row) row).capacity;
            return unit == null ? null : ScsiPassThrough.CAPACITY.get(unit);
        }

        @Override
        String show(Object row) {
            Lun unit = ((Row) row).capacity;
            return unit == null ? format(null)
                : Units.shortBytes(unit.getCapacity()) + (unit.isCapacityMinimum() ? " or more" : "");
        }
    }

    private static <T> ScalarField<T> ofCapacity(ScalarField<T> field) {
        return new ScalarField<>(field.name, field.label) {
            @Override
            T get(Object row) {
                Lun unit = ((Row) row).capacity;
                return unit == null ? null : field.get(unit);
            }
        };
    }

    ScsiPassThroughUnits() {
        super("Asks a target for its logical units, and each unit for vendor, product and size. A target that reports "
            + "no unit is given LUN 0. A dash stands for what a unit does not tell.");
        listing(TABLE, "LUN", "vendorID", "productID", "capacity");
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
        List<Row> rows = new ArrayList<>();
        for (int firstLevel : found.getLUNs()) {
            rows.add(ask(adapter, found.getTargetInfo(), firstLevel));
            Progress.show("asking units", rows.size(), found.getLUNs().size());
        }
        Progress.end();
        if (wantsJson()) {
            write(found, rows);
        } else {
            showList(rows, "Target " + number(target) + " has no logical unit.");
        }
        if (failure != null) {
            Terminal.message(failure);
        }
        return failure == null ? DONE : FAILED;
    }

    private Row ask(Adapter adapter, TargetInfo node, int firstLevel) {
        Lun unit = new Lun();
        TargetInfo address = unit.getTargetInfo();
        address.setBus(node.getBus());
        address.setTargetID(node.getTargetID());
        address.setLUN(firstLevel);
        // When the target itself no longer answers, each further unit would wait for a deadline.
        if (failure != null) {
            return new Row(address, null, null, "not asked");
        }
        int inquiry = adapter.api.getScsiInquiryData(adapter.dev, address, unit.getSCSIInqInfo());
        int capacity =
            ScsiPassThrough.isAnswer(inquiry) ? adapter.api.getScsiReadCapacityData(adapter.dev, unit) : inquiry;
        if (!ScsiPassThrough.isAnswer(capacity)) {
            failure = "adapter " + adapter.dev + ": asking logical unit " + Lun.unitNumber(firstLevel) + " of target "
                + number(target) + " failed, those behind it were not asked: " + Cure.describe(capacity);
        }
        return new Row(address, inquiry == 0 ? unit.getSCSIInqInfo() : null, capacity == 0 ? unit : null,
            capacity == 0 ? null : Status.describe(capacity));
    }

    private void write(Target found, List<Row> rows) throws IOException {
        JsonWriter json = jsonWriter();
        json.beginObject().name("targetInfo");
        ScsiPassThrough.ADDRESS.without(ScsiPassThrough.UNIT).write(json, found.getTargetInfo());
        json.name("LUNs").beginArray();
        for (Row row : rows) {
            json.value(Lun.unitNumber(row.address.getLUN()));
        }
        json.endArray().name("units");
        TABLE.writeList(json, rows);
        json.endObject();
        finish(json);
    }
}
