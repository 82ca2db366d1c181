package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.codes.TargetState;
import com.varden.tavo.iscsi.model.DevDBEntry;
import java.io.IOException;
import java.util.List;
import picocli.CommandLine.Model.OptionSpec;

/** A command that writes target entries: the logins that follow are part of what it says. */
abstract class WriteTargets extends WriteCommand {
    private final OptionSpec force = force();
    private DeviceDatabaseChanges written;
    private Differences differences;

    WriteTargets(String... description) {
        super(description);
    }

    /** The entries to be written, on the ground of what the adapter has now. */
    abstract DeviceDatabaseChanges changes(Adapter adapter);

    void send(Adapter adapter, DeviceDatabaseChanges changes) {
        changes.writeOne(adapter);
    }

    /** Whether each change of a target in session is asked for, or only one of what leads to the target. */
    boolean asksForEveryChange() {
        return false;
    }

    /** What was done with the entries, as a sentence. */
    String what(Adapter adapter, List<DevDBEntry> entries) {
        if (entries.size() != 1) {
            return entries.size() + " targets of adapter " + adapter.dev + " were written.";
        }
        return sentence(adapter, entries.get(0),
            entries.get(0).getState() == TargetState.FREE ? "was freed" : "was written");
    }

    static String sentence(Adapter adapter, DevDBEntry entry, String what) {
        return "Target " + entry.getTargetID() + " of adapter " + adapter.dev + " " + what + ".";
    }

    /** Whether what is unlikely to be meant is refused. */
    final boolean refuses() {
        return !isSet(force);
    }

    private DeviceDatabaseChanges checked(Adapter adapter) {
        DeviceDatabaseChanges changes = changes(adapter);
        if (refuses()) {
            changes.requireSense();
        }
        return changes;
    }

    @Override
    List<String> losses(Adapter adapter) {
        return checked(adapter).losses(asksForEveryChange());
    }

    @Override
    void write(Adapter adapter) {
        written = checked(adapter);
        send(adapter, written);
        differences = new Differences("written");
        written.compare(adapter, "targets", differences);
    }

    @Override
    int report(Adapter adapter) throws IOException {
        List<DevDBEntry> entries = written.wanted();
        return report(what(adapter, entries), entries, null, differences, Logins.await(adapter, entries));
    }
}
