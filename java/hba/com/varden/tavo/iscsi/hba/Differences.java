package com.varden.tavo.iscsi.hba;

import java.util.ArrayList;
import java.util.List;

/** Where the adapter differs from what it should hold: one line for each place. */
final class Differences {
    /** What is said when a write will bring the adapter to the wanted value. */
    private static final String PLANNED = "becomes";

    private final String source;
    private final List<String> lines = new ArrayList<>();

    /** Says of a wanted value where it comes from: "in the file". */
    Differences(String source) {
        this.source = source;
    }

    /** Differences that a write will do away with. */
    static Differences planned() {
        return new Differences(PLANNED);
    }

    void add(String place, String wanted, String found) {
        lines.add(place + ": " + (source.equals(PLANNED) ? found + " " + PLANNED + " " + wanted
            : wanted + " " + source + ", " + found + " on the adapter"));
    }

    void add(String line) {
        lines.add(line);
    }

    boolean isEmpty() {
        return lines.isEmpty();
    }

    List<String> lines() {
        return lines;
    }
}
