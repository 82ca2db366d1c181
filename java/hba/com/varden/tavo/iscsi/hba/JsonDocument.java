package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonArray;
import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import com.google.gson.JsonParseException;
import com.google.gson.JsonParser;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;

/** JSON documents that the user gives. What is wrong in one is a BadInput that names the place. */
final class JsonDocument {
    private JsonDocument() {}

    /** The document in a file, or on the standard input for "-". */
    static JsonElement parse(String name) {
        try {
            byte[] bytes = name.equals("-") ? System.in.readAllBytes()
                                            : Files.readAllBytes(UserInput.file(name).toPath());
            return JsonParser.parseString(new String(bytes, StandardCharsets.UTF_8));
        } catch (IOException e) {
            throw new BadInput(name + " cannot be read: " + UserInput.reason(e));
        } catch (JsonParseException e) {
            // Gson's own message would name the Java class of the cause.
            Throwable cause = e.getCause() != null ? e.getCause() : e;
            throw new BadInput(name + " is not a JSON document: " + cause.getMessage());
        }
    }

    static JsonObject object(JsonElement element, String place) {
        if (!element.isJsonObject()) {
            throw new BadInput((place.isEmpty() ? "the document" : place) + ": an object is needed");
        }
        return element.getAsJsonObject();
    }

    static JsonArray array(JsonElement element, String place) {
        if (!element.isJsonArray()) {
            throw new BadInput(place + ": an array is needed");
        }
        return element.getAsJsonArray();
    }
}
