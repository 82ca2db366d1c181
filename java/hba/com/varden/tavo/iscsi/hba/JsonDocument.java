package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonArray;
import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import com.google.gson.JsonParser;
import com.google.gson.stream.JsonReader;
import com.google.gson.stream.JsonToken;
import java.io.IOException;
import java.io.InputStream;
import java.io.StringReader;
import java.nio.ByteBuffer;
import java.nio.charset.CharacterCodingException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.util.ArrayDeque;
import java.util.Deque;
import java.util.HashSet;
import java.util.Set;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

/** JSON documents that the user gives. What is wrong in one is a BadInput that names the place. */
final class JsonDocument {
    /** All settings of an adapter are less than a tenth of this. */
    private static final int MAX_BYTES = 16 << 20;
    /** The tool's own documents have five levels. */
    private static final int MAX_DEPTH = 32;
    private static final Pattern PLACE = Pattern.compile("at (line \\d+ column \\d+)");

    private JsonDocument() {}

    /** The document in a file, or on the standard input for "-". */
    static JsonElement parse(String name) {
        String called = name.equals("-") ? "the standard input" : name;
        String text = read(name, called);
        try {
            check(text, called);
            return JsonParser.parseString(text);
        } catch (IOException | IllegalStateException | IllegalArgumentException e) {
            // Of the parser's own message only the place is for users.
            Matcher place = PLACE.matcher(String.valueOf(e.getMessage()));
            throw new BadInput(
                called + " is not a JSON document" + (place.find() ? ": it goes wrong at " + place.group(1) : ""));
        }
    }

    private static String read(String name, String called) {
        try (InputStream in =
                 name.equals("-") ? System.in : Files.newInputStream(UserInput.file(name).toPath())) {
            byte[] bytes = in.readNBytes(MAX_BYTES + 1);
            if (bytes.length > MAX_BYTES) {
                throw new BadInput(called + " is too long: at most " + (MAX_BYTES >> 20) + " MiB are read");
            }
            String text = StandardCharsets.UTF_8.newDecoder().decode(ByteBuffer.wrap(bytes)).toString();
            if (text.isBlank()) {
                throw new BadInput(called + " is not a JSON document: it is empty");
            }
            return text;
        } catch (CharacterCodingException e) {
            throw new BadInput(called + " is not a JSON document: it is not text in UTF-8");
        } catch (IOException e) {
            throw new BadInput(called + " cannot be read: " + UserInput.reason(e));
        }
    }

    // Strictly, as JsonParser does not read, and without calling itself: a document may be nested to any depth.
    private static void check(String text, String called) throws IOException {
        JsonReader reader = new JsonReader(new StringReader(text));
        Deque<Set<String>> open = new ArrayDeque<>();
        for (JsonToken token = reader.peek(); token != JsonToken.END_DOCUMENT; token = reader.peek()) {
            switch (token) {
                case BEGIN_ARRAY -> {
                    reader.beginArray();
                    open.push(Set.of());
                }
                case BEGIN_OBJECT -> {
                    reader.beginObject();
                    open.push(new HashSet<>());
                }
                case END_ARRAY -> {
                    reader.endArray();
                    open.pop();
                }
                case END_OBJECT -> {
                    reader.endObject();
                    open.pop();
                }
                case NAME -> {
                    String name = reader.nextName();
                    if (!open.peek().add(name)) {
                        throw new BadInput(called + ": duplicate name " + reader.getPath().substring("$.".length()));
                    }
                }
                default -> reader.skipValue();
            }
            if (open.size() > MAX_DEPTH) {
                throw new BadInput(called + " is nested too deeply: at most " + MAX_DEPTH + " levels are read");
            }
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
