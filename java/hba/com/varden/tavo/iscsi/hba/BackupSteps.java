package com.varden.tavo.iscsi.hba;

import java.util.ArrayList;
import java.util.List;
import java.util.Map;

/** Sections written one after the other; a failure or a signal in between tells which were and which were not. */
final class BackupSteps {
    private final List<String> names = new ArrayList<>();
    private final List<Runnable> writes = new ArrayList<>();
    private final Map<String, Differences> changes;

    BackupSteps(Map<String, Differences> changes) {
        this.changes = changes;
    }

    /** A section in which nothing changes is passed over. */
    void add(String name, Runnable write) {
        if (changes.containsKey(name) && !changes.get(name).isEmpty()) {
            names.add(name);
            writes.add(write);
        }
    }

    void run() {
        for (int done = 0; done < names.size(); done++) {
            try {
                if (Interruption.isRequested()) {
                    throw new OperationFailed("interrupted");
                }
                writes.get(done).run();
            } catch (OperationFailed e) {
                throw new OperationFailed(e.getMessage() + "\nSections written: " + list(names.subList(0, done))
                    + ". Not written, or not as a whole: " + list(names.subList(done, names.size())) + ".",
                    e.status);
            }
        }
    }

    private static String list(List<String> sections) {
        return sections.isEmpty() ? "nothing" : String.join(", ", sections);
    }
}
