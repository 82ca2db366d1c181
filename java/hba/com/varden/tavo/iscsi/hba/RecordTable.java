package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonElement;
import com.google.gson.stream.JsonWriter;
import java.io.IOException;
import java.util.List;
import java.util.Map;

/** The fields of a model class, and what can be done with all of them alike. */
final class RecordTable {
    private final Field[] fields;

    RecordTable(Field... fields) {
        this.fields = fields;
    }

    Field[] fields() {
        return fields;
    }

    /** The same without one field. */
    RecordTable without(Field left) {
        Field[] others = new Field[fields.length - 1];
        int count = 0;
        for (Field field : fields) {
            if (field != left) {
                others[count++] = field;
            }
        }
        return new RecordTable(others);
    }

    private Field field(String name) {
        for (Field field : fields) {
            if (field.name.equals(name)) {
                return field;
            }
        }
        return null;
    }

    /** Writes the object; a table for writing back leaves out what the adapter does not take. */
    void write(JsonWriter json, Object owner, boolean writableOnly) throws IOException {
        json.beginObject();
        for (Field field : fields) {
            if (!writableOnly || !field.isReadOnly()) {
                json.name(field.name);
                field.write(json, owner, writableOnly);
            }
        }
        json.endObject();
    }

    void writeList(JsonWriter json, List<?> owners, boolean writableOnly) throws IOException {
        json.beginArray();
        for (Object owner : owners) {
            write(json, owner, writableOnly);
        }
        json.endArray();
    }

    /**
     * Sets the fields that the document names; those that the adapter does not take back are passed over.
     *
     * @throws BadInput when a name is unknown or a value not permitted; the message names the place
     */
    void read(JsonElement document, Object owner, String place) {
        for (Map.Entry<String, JsonElement> member : JsonDocument.object(document, place).entrySet()) {
            String memberPlace = place.isEmpty() ? member.getKey() : place + "." + member.getKey();
            Field field = field(member.getKey());
            if (field == null) {
                throw new BadInput(memberPlace + ": there is no such field");
            }
            if (!field.isReadOnly()) {
                field.read(member.getValue(), owner, memberPlace);
            }
        }
    }

    /** Notes each field that the adapter takes back and that differs. */
    void compare(Object wanted, Object found, String place, Differences differences) {
        for (Field field : fields) {
            if (!field.isReadOnly()) {
                field.compare(wanted, found, place + "." + field.name, differences);
            }
        }
    }
}
