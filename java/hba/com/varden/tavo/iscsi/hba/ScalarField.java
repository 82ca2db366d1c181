package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonElement;
import com.google.gson.stream.JsonWriter;
import java.io.IOException;
import java.util.Objects;

/** A field with one value, which can be shown. */
public abstract class ScalarField<T> extends Field {
    /** What the name of a member with words ends in, beside a number. */
    static final String TEXT = "Text";

    ScalarField(String name, String label) {
        super(name, label);
    }

    /** The value, in the form in which the tool works with it. */
    abstract T get(Object owner);

    /** A value for people, a dash for nothing. */
    String format(T value) {
        return TerminalText.of(value);
    }

    /** The owner's value for people. */
    String show(Object owner) {
        return format(get(owner));
    }

    /** The owner's value for other programs: no number beside words, no unit, nothing for nothing. */
    String plain(Object owner) {
        T value = get(owner);
        return value == null ? "" : value.toString();
    }

    /** What stands above the values in a list. */
    String heading() {
        return label;
    }

    /** What a list may show when a terminal is too narrow for all of the value. */
    String brief(Object owner) {
        return show(owner);
    }

    /** Whether a list may cut the value before it cuts others: a part of the text says something, too. */
    boolean canBeCut() {
        return false;
    }

    /** What lists are sorted by; null, for nothing, comes first. */
    Comparable<?> sortKey(Object owner) {
        T value = get(owner);
        return value instanceof Comparable<?> key ? key : null;
    }

    /** Whether the value is one that somebody should look into. */
    boolean isTrouble(Object owner) {
        return false;
    }

    @Override
    final void write(JsonWriter json, Object owner) throws IOException {
        T value = get(owner);
        if (value == null) {
            json.nullValue();
        } else if (value instanceof Number number) {
            json.value(number);
        } else if (value instanceof Boolean flag) {
            json.value(flag);
        } else {
            json.value(value.toString());
        }
    }

    @Override
    void read(JsonElement value, Object owner, String place) {
        throw new IllegalStateException(name + " cannot be set");
    }

    @Override
    void copy(Object from, Object to) {
        throw new IllegalStateException(name + " cannot be set");
    }

    @Override
    final void compare(Object wanted, Object found, String place, Differences differences) {
        if (!isSame(get(wanted), get(found))) {
            differences.add(place, show(wanted), show(found));
        }
    }

    /** Whether the adapter holds what was wanted. Text that was not supplied is written as empty text. */
    boolean isSame(T wanted, T found) {
        return Objects.equals(wanted == null ? "" : wanted, found == null ? "" : found);
    }
}
