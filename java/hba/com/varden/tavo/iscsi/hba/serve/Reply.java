package com.varden.tavo.iscsi.hba.serve;

import com.google.gson.stream.JsonWriter;
import java.io.IOException;
import java.io.StringWriter;
import java.io.UncheckedIOException;
import java.nio.charset.StandardCharsets;
import java.security.MessageDigest;
import java.security.NoSuchAlgorithmException;
import java.util.HexFormat;

/**
 * What is answered to a request.
 *
 * @param tag names this body and no other, so that a client that has it need not be sent it again; empty for none
 */
record Reply(int status, String mediaType, byte[] body, String tag) {
    static final String JSON = "application/json; charset=utf-8";
    static final String TEXT = "text/plain; charset=utf-8";

    static final int OK = 200;
    static final int NOT_MODIFIED = 304;
    static final int BAD_REQUEST = 400;
    static final int UNAUTHORIZED = 401;
    static final int FORBIDDEN = 403;
    static final int NOT_FOUND = 404;
    static final int METHOD_NOT_ALLOWED = 405;
    static final int FAILED = 500;
    static final int BAD_GATEWAY = 502;
    static final int BUSY = 503;
    static final int TIMEOUT = 504;

    private static final int TAG_BYTES = 16;

    /** Writes a document. */
    interface Document {
        void writeTo(JsonWriter json) throws IOException;
    }

    /** A body that a client may keep and ask about again. */
    static Reply tagged(String mediaType, byte[] body) {
        try {
            byte[] digest = MessageDigest.getInstance("SHA-256").digest(body);
            return new Reply(OK, mediaType, body, '"' + HexFormat.of().formatHex(digest, 0, TAG_BYTES) + '"');
        } catch (NoSuchAlgorithmException e) {
            throw new IllegalStateException(e);
        }
    }

    static Reply json(Document document) {
        StringWriter text = new StringWriter();
        try (JsonWriter json = new JsonWriter(text)) {
            document.writeTo(json);
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
        return tagged(JSON, text.toString().getBytes(StandardCharsets.UTF_8));
    }

    static Reply text(int status, String text) {
        return new Reply(status, TEXT, (text + "\n").getBytes(StandardCharsets.UTF_8), "");
    }

    /** Whether a client that says what it has, in the header If-None-Match, has this. */
    boolean isKnown(String tags) {
        if (tag.isEmpty() || tags == null) {
            return false;
        }
        for (String known : tags.split(",")) {
            String bare = known.trim();
            if (bare.equals("*") || (bare.startsWith("W/") ? bare.substring(2) : bare).equals(tag)) {
                return true;
            }
        }
        return false;
    }
}
