package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import com.google.gson.JsonPrimitive;
import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.hba.Field.Kind;
import java.io.IOException;
import java.util.List;
import java.util.Map;
import java.util.Objects;

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

    /** The field of this name, or null. */
    Field field(String name) {
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
            if (writableOnly && field.isReadOnly()) {
                continue;
            }
            json.name(field.name);
            switch (field.kind) {
                case RECORD:
                    field.table.write(json, field.get(owner), writableOnly);
                    break;
                case LIST:
                    field.table.writeList(json, field.elements(owner), writableOnly);
                    break;
                default:
                    writeScalar(json, field, field.get(owner));
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

    private static void writeScalar(JsonWriter json, Field field, Object value) throws IOException {
        if (value == null) {
            json.nullValue();
        } else if (value instanceof Number) {
            json.value((Number) value);
        } else if (value instanceof Boolean) {
            json.value((Boolean) value);
        } else {
            json.value(value.toString());
        }
    }

    /**
     * Sets the fields that the document names; those that the adapter does not take back are passed over.
     *
     * @throws BadInput when a name is unknown or a value not permitted; the message names the place
     */
    void read(JsonElement document, Object owner, String place) {
        for (Map.Entry<String, JsonElement> member : object(document, place).entrySet()) {
            String memberPlace = place.isEmpty() ? member.getKey() : place + "." + member.getKey();
            Field field = field(member.getKey());
            if (field == null) {
                throw new BadInput(memberPlace + ": there is no such field");
            }
            if (field.isReadOnly()) {
                continue;
            }
            if (field.kind == Kind.RECORD) {
                field.table.read(member.getValue(), field.get(owner), memberPlace);
            } else {
                field.set(owner, scalar(field, member.getValue(), memberPlace));
            }
        }
    }

    static JsonObject object(JsonElement document, String place) {
        if (!document.isJsonObject()) {
            throw new BadInput((place.isEmpty() ? "the document" : place) + ": an object is needed");
        }
        return document.getAsJsonObject();
    }

    private static Object scalar(Field field, JsonElement value, String place) {
        if (value.isJsonNull() && field.kind == Kind.TEXT) {
            return null;
        }
        if (value.isJsonPrimitive()) {
            JsonPrimitive primitive = value.getAsJsonPrimitive();
            boolean rightType = field.kind == Kind.NUMBER || field.kind == Kind.BITS
                ? !primitive.isBoolean()
                : field.kind == Kind.FLAG ? primitive.isBoolean() : primitive.isString();
            if (rightType) {
                try {
                    return field.parse(primitive.getAsString());
                } catch (IllegalArgumentException e) {
                    throw new BadInput(place + ": " + e.getMessage());
                }
            }
        }
        throw new BadInput(place + ": " + value + " is not permitted: " + field.range());
    }

    /** Adds a line for each field that the adapter takes back and that differs. */
    void compare(Object wanted, Object found, String place, List<String> differences) {
        for (Field field : fields) {
            if (field.isReadOnly()) {
                continue;
            }
            String fieldPlace = place + "." + field.name;
            if (field.kind == Kind.RECORD) {
                field.table.compare(field.get(wanted), field.get(found), fieldPlace, differences);
            } else if (!Objects.equals(emptyIfNull(field.get(wanted)), emptyIfNull(field.get(found)))) {
                differences.add(fieldPlace + ": " + field.format(field.get(wanted)) + " in the file, "
                    + field.format(field.get(found)) + " on the adapter");
            }
        }
    }

    // Text that was not supplied is written as empty text.
    private static Object emptyIfNull(Object value) {
        return value == null ? "" : value;
    }
}
