package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonElement;
import com.google.gson.JsonPrimitive;

/** Text with a limit in bytes; null when nobody has supplied it. */
final class TextField extends SettingField<String> {
    private final int limit;

    TextField(String name, int limit, String label) {
        super(name, label);
        this.limit = limit;
    }

    @Override
    boolean canBeCut() {
        return true;
    }

    @Override
    String range() {
        return "text of at most " + limit + " bytes";
    }

    @Override
    String valueLabel() {
        return "TEXT";
    }

    @Override
    String parse(String text) {
        int length = encodedLength(text);
        if (length > limit) {
            throw new IllegalArgumentException(
                "the text has " + length + " bytes in UTF-8, at most " + limit + " are permitted");
        }
        if (text.indexOf('\0') >= 0) {
            throw new IllegalArgumentException("the text holds a zero character");
        }
        if (text.chars().anyMatch(c -> Character.isSurrogate((char) c))) {
            throw new IllegalArgumentException("the text holds a character that cannot cross to the adapter: only "
                + "those up to U+FFFF can");
        }
        return text;
    }

    /** Whether the text is not longer than the field. */
    boolean fits(String text) {
        return encodedLength(text) <= limit;
    }

    // Bytes that the text takes when it crosses to the adapter.
    private static int encodedLength(String text) {
        int length = 0;
        for (int i = 0; i < text.length(); i++) {
            char c = text.charAt(i);
            length += c < 0x80 ? 1 : c < 0x800 ? 2 : 3;
        }
        return length;
    }

    @Override
    boolean accepts(JsonPrimitive value) {
        return value.isString();
    }

    @Override
    void read(JsonElement value, Object owner, String place) {
        if (value.isJsonNull()) {
            set(owner, null);
        } else {
            super.read(value, owner, place);
        }
    }

    @Override
    String get(Object owner) {
        return (String) getProperty(owner);
    }

    @Override
    void set(Object owner, String value) {
        setProperty(owner, value);
    }
}
