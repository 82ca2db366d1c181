package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonPrimitive;
import java.util.StringJoiner;

/** Bytes in a short array, written as hexadecimal pairs with colons. */
final class BytesField extends SettingField<String> {
    private final int length;

    BytesField(String name, int length, String label) {
        super(name, label);
        this.length = length;
    }

    @Override
    String range() {
        return length + " hexadecimal bytes such as 00:1f:a0...";
    }

    @Override
    String valueLabel() {
        return "BYTES";
    }

    @Override
    String parse(String text) {
        return format(bytes(text));
    }

    /** The bytes of a text such as 1f:a0, one in each element. */
    short[] bytes(String text) {
        String[] pairs = text.split(":", -1);
        if (pairs.length != length) {
            throw wrong(text);
        }
        short[] bytes = new short[length];
        for (int i = 0; i < length; i++) {
            int high = pairs[i].length() == 2 ? Character.digit(pairs[i].charAt(0), 16) : -1;
            int low = pairs[i].length() == 2 ? Character.digit(pairs[i].charAt(1), 16) : -1;
            if (high < 0 || low < 0) {
                throw wrong(text);
            }
            bytes[i] = (short) (high << 4 | low);
        }
        return bytes;
    }

    static String format(short[] bytes) {
        StringJoiner text = new StringJoiner(":");
        for (short value : bytes) {
            text.add("" + Character.forDigit(value >> 4 & 0xF, 16) + Character.forDigit(value & 0xF, 16));
        }
        return text.toString();
    }

    @Override
    boolean accepts(JsonPrimitive value) {
        return value.isString();
    }

    @Override
    String get(Object owner) {
        return format((short[]) getProperty(owner));
    }

    @Override
    void set(Object owner, String value) {
        setProperty(owner, bytes(value));
    }
}
