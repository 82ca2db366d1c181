package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonElement;
import com.google.gson.stream.JsonWriter;
import java.io.IOException;
import java.util.List;

/** An object with fields of its own, which its owner never replaces. */
final class RecordField extends Field {
    final RecordTable table;

    RecordField(String name, RecordTable table, String label) {
        super(name, label);
        this.table = table;
    }

    @Override
    void write(JsonWriter json, Object owner) throws IOException {
        Object value = getProperty(owner);
        if (value == null) {
            json.nullValue();
        } else {
            table.write(json, value);
        }
    }

    @Override
    void writeBack(JsonWriter json, Object owner, String place, List<String> leftOut) throws IOException {
        json.name(name);
        table.writeBack(json, getProperty(owner), place, leftOut);
    }

    @Override
    void read(JsonElement value, Object owner, String place) {
        table.read(value, getProperty(owner), place);
    }

    @Override
    void copy(Object from, Object to) {
        table.copy(getProperty(from), getProperty(to));
    }

    @Override
    void compare(Object wanted, Object found, String place, Differences differences) {
        table.compare(getProperty(wanted), getProperty(found), place, differences);
    }
}
