package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonElement;
import com.google.gson.JsonPrimitive;
import com.google.gson.stream.JsonWriter;
import java.io.IOException;
import java.util.List;
import picocli.CommandLine.ITypeConverter;
import picocli.CommandLine.TypeConversionException;

/** A field that can be set, by an option or from a document. */
public abstract class SettingField<T> extends ScalarField<T> implements ITypeConverter<T> {
    SettingField(String name, String label) {
        super(name, label);
    }

    /** What may be written, in words: "0 to 65535", "text of at most 32 bytes". */
    abstract String range();

    /** What stands for a value in the help. */
    abstract String valueLabel();

    /**
     * Reads a value in the form that people and documents write it.
     *
     * @throws IllegalArgumentException when it is not permitted; the message quotes it and names what is
     */
    abstract T parse(String text);

    /** Whether a document writes values of this kind so. */
    abstract boolean accepts(JsonPrimitive value);

    /** Sets a value that get or parse has returned. */
    abstract void set(Object owner, T value);

    /** The name in the spelling of options: iSCSIOptions becomes --iscsi-options. */
    final String option() {
        String words = name.replace("iSCSI", "Iscsi").replace("iSNS", "Isns");
        StringBuilder option = new StringBuilder("--");
        for (int i = 0; i < words.length(); i++) {
            char c = words.charAt(i);
            boolean startsWord = i > 0 && Character.isUpperCase(c)
                && (Character.isLowerCase(words.charAt(i - 1))
                    || Character.isUpperCase(words.charAt(i - 1)) && i + 1 < words.length()
                        && Character.isLowerCase(words.charAt(i + 1)));
            if (startsWord) {
                option.append('-');
            }
            option.append(Character.toLowerCase(c));
        }
        return option.toString();
    }

    /** Reads the value of an option or parameter; the message of a failure is put behind its name. */
    @Override
    public final T convert(String text) {
        try {
            return parse(text);
        } catch (IllegalArgumentException e) {
            throw new TypeConversionException(e.getMessage());
        }
    }

    @Override
    final void writeBack(JsonWriter json, Object owner, String place, List<String> leftOut) throws IOException {
        if (isPermitted(get(owner))) {
            json.name(name);
            write(json, owner);
        } else {
            leftOut.add(place + ": " + show(owner) + " cannot be written back (" + range() + ")");
        }
    }

    private boolean isPermitted(T value) {
        try {
            return value == null || value.equals(parse(value.toString()));
        } catch (IllegalArgumentException e) {
            return false;
        }
    }

    @Override
    void read(JsonElement value, Object owner, String place) {
        if (!(value instanceof JsonPrimitive primitive) || !accepts(primitive)) {
            throw new BadInput(place + ": " + value + " is not permitted: " + range());
        }
        try {
            set(owner, parse(primitive.getAsString()));
        } catch (IllegalArgumentException e) {
            throw new BadInput(place + ": " + e.getMessage());
        }
    }

    @Override
    final void copy(Object from, Object to) {
        set(to, get(from));
    }

    final IllegalArgumentException wrong(String text) {
        return new IllegalArgumentException("'" + text + "' is not permitted: " + range());
    }
}
