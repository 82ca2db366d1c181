package com.varden.tavo.iscsi.codes;

import java.util.LinkedHashMap;
import java.util.Map;

/**
 * The words for one kind of number: {@code TargetState.MEANINGS.describe(entry.getState())} gives "logged in (2)", or
 * "0x7" for a number that stands in no table. Numbers count as unsigned.
 */
public final class Meanings {
    private final Map<Integer, String> words = new LinkedHashMap<>();

    private Meanings() {}

    static Meanings of(int number, String meaning) {
        return new Meanings().and(number, meaning);
    }

    // While a table is made; nobody else has it yet.
    Meanings and(int number, String meaning) {
        words.put(number, meaning);
        return this;
    }

    /** Whether the number stands in the table. */
    public boolean knows(int number) {
        return words.containsKey(number);
    }

    /** The meaning alone: "logged in", or "0x7". */
    public String text(int number) {
        String meaning = words.get(number);
        return meaning != null ? meaning : "0x" + Integer.toHexString(number);
    }

    /** The meaning with the number: "logged in (2)", or "0x7". */
    public String describe(int number) {
        return knows(number) ? text(number) + " (" + Integer.toUnsignedString(number) + ")" : text(number);
    }
}
