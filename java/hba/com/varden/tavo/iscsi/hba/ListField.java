package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonElement;
import com.google.gson.stream.JsonWriter;
import java.io.IOException;
import java.util.List;

/** A list of objects with fields of their own. It is shown and never written back. */
final class ListField extends Field {
    final RecordTable table;

    ListField(String name, RecordTable table, String label) {
        super(name, label);
        this.table = table;
        readOnly();
    }

    List<?> elements(Object owner) {
        return (List<?>) getProperty(owner);
    }

    @Override
    void write(JsonWriter json, Object owner, boolean writableOnly) throws IOException {
        table.writeList(json, elements(owner), writableOnly);
    }

    @Override
    void read(JsonElement value, Object owner, String place) {
        throw new IllegalStateException(name + " cannot be set");
    }

    @Override
    void compare(Object wanted, Object found, String place, Differences differences) {
        throw new IllegalStateException(name + " cannot be set");
    }
}
