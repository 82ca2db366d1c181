package com.varden.tavo.iscsi.hba;

import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.codes.Meanings;
import java.io.IOException;

/** A number that stands for something: people see the words with it, and JSON has them in a member of their own. */
class CodeField extends NumberField {
    private final Meanings meanings;
    private Integer trouble;

    CodeField(String name, int width, String label, Meanings meanings) {
        super(name, width, label);
        this.meanings = meanings;
    }

    /** Marks the number that tells of trouble. */
    final CodeField trouble(int number) {
        trouble = number;
        return this;
    }

    @Override
    final boolean isTrouble(Object owner) {
        return trouble != null && get(owner).intValue() == trouble;
    }

    @Override
    final String format(Long value) {
        return meanings.describe(value.intValue());
    }

    @Override
    final String plain(Object owner) {
        return meanings.text(get(owner).intValue());
    }

    @Override
    final String brief(Object owner) {
        return plain(owner);
    }

    @Override
    final String asideName() {
        return name + TEXT;
    }

    @Override
    final void writeAside(JsonWriter json, Object owner) throws IOException {
        json.value(plain(owner));
    }
}
