package com.varden.tavo.iscsi.hba.serve;

import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.hba.Adapter;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.Lun;
import com.varden.tavo.iscsi.model.Target;
import java.io.IOException;
import java.util.ArrayList;
import java.util.List;

/** Asks a target for its logical units, and each of them what it is. */
final class Units {
    /** Units that have not been asked by then are named without vendor and size. */
    private static final long PATIENCE_NANOSECONDS = 5_000_000_000L;

    /** @param lun the number; details is null when the unit did not say what it is */
    private record Unit(int lun, Lun details) {}

    private Units() {}

    /** The units of a target; throws OperationFailed when the target does not tell. */
    static Reply ask(int dev, int targetID) {
        long start = System.nanoTime();
        List<Unit> units = new ArrayList<>();
        try (Adapter adapter = Adapter.open(dev, null)) {
            Target target = new Target();
            target.getTargetInfo().setTargetID(targetID);
            adapter.check("asking target " + targetID + " for its logical units",
                adapter.api.getScsiReportLUNsData(dev, new HBA(), target));
            for (int firstLevel : target.getLUNs()) {
                boolean inTime = System.nanoTime() - start < PATIENCE_NANOSECONDS;
                units.add(new Unit(Lun.unitNumber(firstLevel), inTime ? details(adapter, targetID, firstLevel) : null));
            }
        }
        return Reply.json(json -> write(json, units));
    }

    private static Lun details(Adapter adapter, int targetID, int firstLevel) {
        Lun lun = new Lun();
        lun.getTargetInfo().setTargetID(targetID);
        lun.getTargetInfo().setLUN(firstLevel);
        return adapter.api.getiSCSILunData(adapter.dev, lun) == 0 ? lun : null;
    }

    private static void write(JsonWriter json, List<Unit> units) throws IOException {
        json.beginArray();
        for (Unit unit : units) {
            json.beginObject().name("lun").value(unit.lun);
            if (unit.details != null) {
                json.name("vendor").value(unit.details.getSCSIInqInfo().getVendorID().trim());
                json.name("product").value(unit.details.getSCSIInqInfo().getProductID().trim());
                json.name("bytes").value(Long.toUnsignedString(unit.details.getCapacity()));
                json.name("isMinimum").value(unit.details.isCapacityMinimum());
            }
            json.endObject();
        }
        json.endArray();
    }
}
