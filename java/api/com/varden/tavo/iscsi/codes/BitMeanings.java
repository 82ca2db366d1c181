package com.varden.tavo.iscsi.codes;

import java.util.LinkedHashMap;
import java.util.Map;
import java.util.StringJoiner;

/** The words for the bits of one option word. The word is handed over as an unsigned number. */
public final class BitMeanings {
    private final int digits;
    private final Map<Integer, String> words = new LinkedHashMap<>();

    private BitMeanings(int digits) {
        this.digits = digits;
    }

    /** A table for words of so many hexadecimal digits. */
    static BitMeanings ofDigits(int digits) {
        return new BitMeanings(digits);
    }

    // While a table is made; nobody else has it yet.
    BitMeanings and(int bit, String meaning) {
        words.put(bit, meaning);
        return this;
    }

    /**
     * The meanings of the bits that are set, and after them the bits that have none: "addresses by DHCP, 0x8210". Empty
     * when no bit is set.
     */
    public String text(int word) {
        StringJoiner text = new StringJoiner(", ");
        int rest = word;
        for (Map.Entry<Integer, String> bit : words.entrySet()) {
            if ((word & bit.getKey()) != 0) {
                text.add(bit.getValue());
                rest &= ~bit.getKey();
            }
        }
        if (rest != 0) {
            text.add(hexadecimal(rest));
        }
        return text.toString();
    }

    /** The word with its meanings: "0x8211 (addresses by DHCP, 0x8210)", or "0x8210" when no bit has one. */
    public String describe(int word) {
        String whole = hexadecimal(word);
        String text = text(word);
        return text.isEmpty() || text.equals(whole) ? whole : whole + " (" + text + ")";
    }

    private String hexadecimal(int word) {
        String text = Integer.toHexString(word);
        return "0x" + "0".repeat(Math.max(0, digits - text.length())) + text;
    }
}
