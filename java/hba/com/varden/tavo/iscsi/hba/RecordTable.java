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

    private boolean standsAside(String name) {
        for (Field field : fields) {
            if (name.equals(field.asideName())) {
                return true;
            }
        }
        return false;
    }

    void write(JsonWriter json, Object owner) throws IOException {
        json.beginObject();
        writeMembers(json, owner);
        json.endObject();
    }

    /** The fields alone, for an object that has more than them. */
    void writeMembers(JsonWriter json, Object owner) throws IOException {
        for (Field field : fields) {
            json.name(field.name);
            field.write(json, owner);
            if (field.asideName() != null) {
                json.name(field.asideName());
                field.writeAside(json, owner);
            }
        }
    }

    void writeList(JsonWriter json, List<?> owners) throws IOException {
        json.beginArray();
        for (Object owner : owners) {
            write(json, owner);
        }
        json.endArray();
    }

    /** Writes the object so that it can be read again: what the adapter does not take back stays out of it. */
    void writeBack(JsonWriter json, Object owner, String place, List<String> leftOut) throws IOException {
        json.beginObject();
        writeMembersBack(json, owner, place, leftOut);
        json.endObject();
    }

    /** The fields alone, for an object that has more than them. */
    void writeMembersBack(JsonWriter json, Object owner, String place, List<String> leftOut) throws IOException {
        for (Field field : fields) {
            if (!field.isReadOnly()) {
                field.writeBack(json, owner, place + "." + field.name, leftOut);
            }
        }
    }

    /**
     * Sets the fields that the document names; those that the adapter does not take back are passed over, and what
     * stands beside a value for readers.
     *
     * @throws BadInput when a name is unknown or a value not permitted; the message names the place
     */
    void read(JsonElement document, Object owner, String place) {
        for (Map.Entry<String, JsonElement> member : JsonDocument.object(document, place).entrySet()) {
            String memberPlace = place.isEmpty() ? member.getKey() : place + "." + member.getKey();
            Field field = field(member.getKey());
            if (field == null && standsAside(member.getKey())) {
                continue;
            }
            if (field == null) {
                throw new BadInput(memberPlace + ": there is no such field");
            }
            if (!field.isReadOnly()) {
                field.read(member.getValue(), owner, memberPlace);
            }
        }
    }

    /** Gives one object the values of another in all fields that the adapter takes back. */
    void copy(Object from, Object to) {
        for (Field field : fields) {
            if (!field.isReadOnly()) {
                field.copy(from, to);
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
