package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonPrimitive;

/** An unsigned number of 1 to 32 bits, whatever its Java type: a short of -32768 in a 16-bit field is 32768. */
public class NumberField extends SettingField<Long> {
    /** Width in bits. */
    final int width;
    private long minimum;
    private long maximum;
    private String unit = "";
    private String heading;

    public NumberField(String name, int width, String label) {
        super(name, label);
        this.width = width;
        this.maximum = (1L << width) - 1;
    }

    public final NumberField min(long value) {
        minimum = value;
        return this;
    }

    public final NumberField max(long value) {
        maximum = value;
        return this;
    }

    public final NumberField unit(String text) {
        unit = " " + text;
        return this;
    }

    /** A word for the label that is short enough for the heading of a column. */
    final NumberField heading(String text) {
        heading = text;
        return this;
    }

    @Override
    final String heading() {
        return heading == null ? label : heading;
    }

    @Override
    String range() {
        return minimum + " to " + maximum + unit;
    }

    @Override
    String valueLabel() {
        return "N";
    }

    @Override
    Long parse(String text) {
        try {
            return permitted(
                Long.decode(text.startsWith("0x") || text.startsWith("0X") ? text : decimal(text)), text);
        } catch (NumberFormatException e) {
            throw wrong(text);
        }
    }

    final Long permitted(long value, String text) {
        if (value < minimum || value > maximum) {
            throw wrong(text);
        }
        return value;
    }

    // Long.decode would read a leading zero as octal.
    private static String decimal(String text) {
        int start = 0;
        while (start < text.length() - 1 && text.charAt(start) == '0') {
            start++;
        }
        return text.startsWith("+") ? "" : text.substring(start);
    }

    @Override
    final boolean accepts(JsonPrimitive value) {
        return !value.isBoolean();
    }

    @Override
    Long get(Object owner) {
        return ((Number) getProperty(owner)).longValue() & (1L << width) - 1;
    }

    @Override
    final void set(Object owner, Long value) {
        Class<?> type = propertyType(owner);
        Object argument = type == byte.class ? (Object) value.byteValue()
            : type == short.class ? (Object) value.shortValue()
            : (Object) value.intValue();
        setProperty(owner, argument);
    }

    @Override
    String format(Long value) {
        return value + unit;
    }
}
