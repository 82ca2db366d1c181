package com.varden.tavo.iscsi.hba;

import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.codes.Units;
import java.io.IOException;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

/** A segment or burst size. It crosses in units of 512 bytes; people see bytes, and may write either. */
final class SizeField extends NumberField {
    private static final Pattern SIZE = Pattern.compile("(\\d{1,9})(B|KiB|MiB)");

    SizeField(String name, String label) {
        super(name, 16, label);
    }

    @Override
    String range() {
        return super.range() + " units of " + Units.SEGMENT_UNIT + " bytes, or a multiple with B, KiB or MiB such as "
            + "64KiB";
    }

    @Override
    String valueLabel() {
        return "SIZE";
    }

    @Override
    Long parse(String text) {
        Matcher size = SIZE.matcher(text);
        if (!size.matches()) {
            return super.parse(text);
        }
        int shift = switch (size.group(2)) {
            case "MiB" -> 20;
            case "KiB" -> 10;
            default -> 0;
        };
        long bytes = Long.parseLong(size.group(1)) << shift;
        if (bytes % Units.SEGMENT_UNIT != 0) {
            throw wrong(text);
        }
        return permitted(bytes / Units.SEGMENT_UNIT, text);
    }

    @Override
    String format(Long value) {
        return Units.describeBytes(Units.segmentBytes(value.intValue()));
    }

    @Override
    String plain(Object owner) {
        return String.valueOf(Units.segmentBytes(get(owner).intValue()));
    }

    @Override
    String asideName() {
        return name + "Bytes";
    }

    @Override
    void writeAside(JsonWriter json, Object owner) throws IOException {
        json.value(Units.segmentBytes(get(owner).intValue()));
    }
}
