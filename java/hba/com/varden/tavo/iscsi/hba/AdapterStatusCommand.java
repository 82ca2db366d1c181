package com.varden.tavo.iscsi.hba;

import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.codes.TargetState;
import java.io.IOException;
import java.util.ArrayList;
import java.util.List;
import picocli.CommandLine.Model.PositionalParamSpec;

/** hba status: how the adapters are doing, and whether all is well. */
final class AdapterStatusCommand extends Command {
    private static final RecordTable TABLE = new RecordTable(
        Adapter.INDEX,
        new RecordField("HBA", new RecordTable(AdapterInformation.MODEL, FirmwareConfiguration.ADDRESS,
            AdapterInformation.STATE, AdapterInformation.LINK_STATUS), "Adapter"),
        new NumberField("targetCount", 16, "Targets"),
        new NumberField("sessionCount", 16, "Sessions") {
            @Override
            String show(Object owner) {
                AdapterStatus status = (AdapterStatus) owner;
                return status.failure() != null ? "-" : status.getSessionCount() + " of " + status.getTargetCount();
            }

            @Override
            boolean isTrouble(Object owner) {
                return !((AdapterStatus) owner).targets(TargetState.CONFIGURED).isEmpty();
            }
        },
        new QuantityField<Integer>("errorCount", "Errors 24 h") {
            @Override
            Integer get(Object owner) {
                return ((AdapterStatus) owner).errors();
            }
        },
        new FlagField("resetPending", "Reset"));

    private final PositionalParamSpec dev =
        parameter("DEV", "0..1", Adapter.INDEX, "Adapter, 0 to 31; all of them without it.");
    private final Watch watch = watch(false);

    AdapterStatusCommand() {
        super("Shows state, link and sessions of each adapter, the connection errors of the last 24 hours and whether "
            + "a reset is pending, and says whether all is well. The exit status is 1 when it is not: an adapter "
            + "cannot be read, has targets and no link, or has no session with a target that was not logged out of.");
        listing(TABLE, "dev", "model", "state", "linkStatus", "sessionCount", "errorCount", "resetPending");
    }

    @Override
    public Integer call() throws IOException {
        return watch.run(this::showOnce);
    }

    private int showOnce() throws IOException {
        List<AdapterStatus> adapters = dev.getValue() == null ? readAll() : List.of(readOne(number(dev)));
        boolean well = !adapters.isEmpty();
        for (AdapterStatus adapter : adapters) {
            well &= adapter.troubles().isEmpty();
        }
        if (wantsJson()) {
            write(adapters, well);
        } else {
            showList(adapters, "No adapter could be opened.");
            if (wantsWords() && !adapters.isEmpty()) {
                sayVerdict(adapters, well);
            }
        }
        return well ? DONE : FAILED;
    }

    private static AdapterStatus readOne(int dev) {
        try (Adapter adapter = Adapter.open(dev, null)) {
            return AdapterStatus.read(adapter);
        }
    }

    private static List<AdapterStatus> readAll() {
        List<AdapterStatus> adapters = new ArrayList<>();
        for (int dev = 0; dev <= Adapter.LAST_INDEX; dev++) {
            try (Adapter adapter = Adapter.tryOpen(dev)) {
                if (adapter != null) {
                    adapters.add(AdapterStatus.read(adapter));
                }
            }
        }
        return adapters;
    }

    private static void sayVerdict(List<AdapterStatus> adapters, boolean well) {
        System.out.println(well ? "All is well." : Terminal.highlighted("Not all is well:"));
        for (AdapterStatus adapter : adapters) {
            if (!adapter.troubles().isEmpty()) {
                System.out.println("  adapter " + adapter.dev() + ": "
                    + TerminalText.of(String.join("; ", adapter.troubles())));
            }
        }
    }

    private void write(List<AdapterStatus> adapters, boolean well) throws IOException {
        JsonWriter json = jsonWriter();
        json.beginObject().name("verdict").value(well ? "well" : "trouble").name("adapters").beginArray();
        for (AdapterStatus adapter : adapters) {
            json.beginObject();
            TABLE.writeMembers(json, adapter);
            json.name("troubles").beginArray();
            for (String trouble : adapter.troubles()) {
                json.value(trouble);
            }
            json.endArray().endObject();
        }
        json.endArray().endObject();
        finish(json);
    }
}
