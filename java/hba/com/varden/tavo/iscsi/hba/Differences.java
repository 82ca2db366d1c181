package com.varden.tavo.iscsi.hba;

import java.util.ArrayList;
import java.util.List;

/** Where the adapter differs from what it should hold: one line for each place. */
final class Differences {
    private final String source;
    private final List<String> lines = new ArrayList<>();

    /** Says of a wanted value where it comes from: "in the file". */
    Differences(String source) {
        this.source = source;
    }

    void add(String place, String wanted, String found) {
        lines.add(place + ": " + wanted + " " + source + ", " + found + " on the adapter");
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
