package com.varden.tavo.iscsi.hba;

import java.io.IOException;
import java.util.List;

/**
 * A command that changes an adapter. It asks before something is lost, and holds the adapter's lock from reading to
 * reading back, so that no other writer comes in between.
 */
abstract class WriteCommand extends DeviceCommand {
    WriteCommand(String... description) {
        super(description);
        needsConfirmation();
    }

    /** What the user has to agree to, each as a clause behind "this"; empty when nothing is lost. */
    abstract List<String> losses(Adapter adapter) throws IOException;

    /** Reads, changes, writes and reads back, under the adapter's lock. */
    abstract void write(Adapter adapter) throws IOException;

    /** Says what was done; returns the exit status. */
    abstract int report(Adapter adapter) throws IOException;

    /** Whether the command writes at all, as far as its options tell. */
    boolean writes() {
        return true;
    }

    @Override
    final int run(Adapter adapter) throws IOException {
        if (!writes()) {
            write(adapter);
            return report(adapter);
        }
        List<String> accepted = asks() ? losses(adapter) : List.of();
        confirm(accepted);
        AdapterLock lock = AdapterLock.take(adapter);
        try {
            // Nobody has agreed to what came about while the question stood there.
            if (asks() && !accepted.containsAll(losses(adapter))) {
                throw new OperationFailed("adapter " + adapter.dev + " was changed by another process in the "
                    + "meantime; nothing was written. Run the command again.");
            }
            write(adapter);
        } finally {
            lock.close();
        }
        return report(adapter);
    }

    /** Ends the command with status 1 when what was read back differs. */
    static void verify(String what, Differences differences) {
        if (!differences.isEmpty()) {
            throw new OperationFailed(what + ", but what was read back differs:\n  "
                + String.join("\n  ", differences.lines()));
        }
    }
}
