package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonElement;
import com.google.gson.stream.JsonWriter;
import java.io.IOException;
import java.util.List;

/** A list of objects with fields of their own. It is shown and never written back. */
final class ListField extends Field {
    final RecordTable table;
    private final ScalarField<?> key;

    /** The key tells the elements apart for people: "Target 5". */
    ListField(String name, RecordTable table, ScalarField<?> key, String label) {
        super(name, label);
        this.table = table;
        this.key = key;
        readOnly();
    }

    List<?> elements(Object owner) {
        return (List<?>) getProperty(owner);
    }

    String heading(Object element) {
        return label + " " + key.show(element);
    }

    @Override
    void write(JsonWriter json, Object owner) throws IOException {
        table.writeList(json, elements(owner));
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
    void compare(Object wanted, Object found, String place, Differences differences) {
        throw new IllegalStateException(name + " cannot be set");
    }
}
