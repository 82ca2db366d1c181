package com.varden.tavo.iscsi.hba;

import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.codes.BitMeanings;
import java.io.IOException;

/** An option word: people see it in hexadecimal, with all its digits and with the meanings that are known. */
final class BitsField extends NumberField {
    private final BitMeanings meanings;

    BitsField(String name, int width, String label) {
        this(name, width, label, null);
    }

    BitsField(String name, int width, String label, BitMeanings meanings) {
        super(name, width, label);
        this.meanings = meanings;
    }

    @Override
    String format(Long value) {
        if (meanings != null) {
            return meanings.describe(value.intValue());
        }
        String digits = Long.toHexString(value);
        return "0x" + "0".repeat(Math.max(0, width / 4 - digits.length())) + digits;
    }

    @Override
    String plain(Object owner) {
        return show(owner);
    }

    @Override
    String asideName() {
        return meanings == null ? null : name + TEXT;
    }

    @Override
    void writeAside(JsonWriter json, Object owner) throws IOException {
        json.value(meanings.text(get(owner).intValue()));
    }
}
