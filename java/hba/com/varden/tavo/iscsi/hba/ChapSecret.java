package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonElement;
import com.google.gson.JsonPrimitive;
import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.model.CHAPTableEntry;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.CharBuffer;
import java.nio.charset.CharacterCodingException;
import java.nio.charset.StandardCharsets;
import java.util.Arrays;

/**
 * The secret of a CHAP entry: at most 100 bytes, without the zeros behind it. Closing wipes it.
 *
 * In documents it is the text chapSecretStr or, when it is no text, the bytes chapSecret. Unless secrets are to be
 * revealed, chapSecretStr is "********", which stands for the secret that the adapter has already.
 */
final class ChapSecret implements AutoCloseable {
    static final String HIDDEN = "********";
    static final String TEXT_NAME = "chapSecretStr";
    static final String BYTES_NAME = "chapSecret";
    private static final TextField TEXT = new TextField(TEXT_NAME, CHAPTableEntry.SECRET_LENGTH, "CHAP secret");

    private final byte[] bytes;

    private ChapSecret(byte[] bytes) {
        this.bytes = bytes;
    }

    /** The secret of an entry. */
    static ChapSecret of(CHAPTableEntry entry) {
        short[] elements = entry.getChapSecret();
        int length = elements.length;
        while (length > 0 && elements[length - 1] == 0) {
            length--;
        }
        byte[] bytes = new byte[length];
        for (int i = 0; i < length; i++) {
            bytes[i] = (byte) elements[i];
        }
        Arrays.fill(elements, (short) 0);
        return new ChapSecret(bytes);
    }

    /**
     * A secret that a user gave as text. Takes the bytes over.
     *
     * @throws BadInput when it is not permitted
     */
    static ChapSecret given(byte[] text) {
        ChapSecret secret = new ChapSecret(text);
        String fault = null;
        if (text.length == 0) {
            fault = "it is empty; --no-secret removes a secret";
        } else if (text.length > CHAPTableEntry.SECRET_LENGTH) {
            fault = "the text has " + text.length + " bytes in UTF-8, at most " + CHAPTableEntry.SECRET_LENGTH
                + " are permitted";
        } else if (secret.contains((byte) 0)) {
            fault = "the text holds a zero character";
        } else if (!isText(text)) {
            fault = "it is not text in UTF-8";
        }
        if (fault != null) {
            secret.close();
            throw new BadInput("the CHAP secret is not permitted: " + fault);
        }
        return secret;
    }

    /** No secret. */
    static ChapSecret none() {
        return new ChapSecret(new byte[0]);
    }

    private boolean contains(byte wanted) {
        for (byte each : bytes) {
            if (each == wanted) {
                return true;
            }
        }
        return false;
    }

    /** Reads chapSecretStr of a document, which is not the hidden one. */
    static ChapSecret readText(JsonElement value, String place) {
        if (!(value instanceof JsonPrimitive primitive)) {
            throw new BadInput(place + ": " + TEXT.range() + " is needed");
        }
        try {
            return new ChapSecret(TEXT.parse(primitive.getAsString()).getBytes(StandardCharsets.UTF_8));
        } catch (IllegalArgumentException e) {
            throw new BadInput(place + ": " + e.getMessage());
        }
    }

    /** Reads chapSecret of a document. */
    static ChapSecret readBytes(JsonElement value, String place) {
        String text = value instanceof JsonPrimitive primitive ? primitive.getAsString() : "";
        int length = (text.length() + 1) / 3;
        if (length > CHAPTableEntry.SECRET_LENGTH) {
            throw new BadInput(place + ": at most " + CHAPTableEntry.SECRET_LENGTH + " bytes are permitted");
        }
        try {
            short[] elements = new BytesField(BYTES_NAME, length, "").bytes(text);
            byte[] bytes = new byte[length];
            for (int i = 0; i < length; i++) {
                bytes[i] = (byte) elements[i];
            }
            Arrays.fill(elements, (short) 0);
            return new ChapSecret(bytes);
        } catch (IllegalArgumentException e) {
            throw new BadInput(place + ": hexadecimal bytes such as 1f:a0 are needed");
        }
    }

    static boolean isHidden(JsonElement value) {
        return value instanceof JsonPrimitive primitive && primitive.getAsString().equals(HIDDEN);
    }

    boolean isEmpty() {
        return bytes.length == 0;
    }

    int length() {
        return bytes.length;
    }

    boolean isSame(ChapSecret other) {
        return Arrays.equals(bytes, other.bytes);
    }

    /** Stores the secret in an entry and wipes it here. */
    void moveTo(CHAPTableEntry entry) {
        short[] elements = elements(CHAPTableEntry.SECRET_LENGTH);
        entry.setChapSecret(elements);
        Arrays.fill(elements, (short) 0);
        close();
    }

    private short[] elements(int size) {
        short[] elements = new short[size];
        for (int i = 0; i < bytes.length; i++) {
            elements[i] = (short) (bytes[i] & 0xFF);
        }
        return elements;
    }

    void write(JsonWriter json, boolean reveal) throws IOException {
        String text = text();
        if (bytes.length > 0 && !reveal) {
            json.name(TEXT_NAME).value(HIDDEN);
        } else if (text != null) {
            json.name(TEXT_NAME).value(text);
        } else {
            json.name(BYTES_NAME).value(BytesField.format(elements(bytes.length)));
        }
    }

    /** The secret for people, a hint that there is one unless it is to be revealed. */
    String show(boolean reveal) {
        if (bytes.length == 0) {
            return "";
        }
        if (!reveal) {
            return HIDDEN;
        }
        String text = text();
        return text != null ? text : "bytes " + BytesField.format(elements(bytes.length));
    }

    private static boolean isText(byte[] bytes) {
        try {
            CharBuffer decoded = StandardCharsets.UTF_8.newDecoder().decode(ByteBuffer.wrap(bytes));
            Arrays.fill(decoded.array(), '\0');
            return true;
        } catch (CharacterCodingException e) {
            return false;
        }
    }

    // The secret as text, or null when it is not printable text.
    private String text() {
        try {
            String text = StandardCharsets.UTF_8.newDecoder().decode(ByteBuffer.wrap(bytes)).toString();
            return text.chars().anyMatch(Character::isISOControl) || text.equals(HIDDEN) ? null : text;
        } catch (CharacterCodingException e) {
            return null;
        }
    }

    @Override
    public void close() {
        Arrays.fill(bytes, (byte) 0);
    }
}
