package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.model.IPAddr;
import java.io.FilterWriter;
import java.io.IOException;
import java.io.OutputStream;
import java.io.OutputStreamWriter;
import java.nio.charset.StandardCharsets;

/**
 * Text as it may go to a terminal. What comes from adapters, targets, libraries and documents does not steer it: no
 * control characters, no separators of lines and paragraphs, no marks that turn the direction of writing.
 */
final class TerminalText {
    private static final String NOTHING = "-";

    private TerminalText() {}

    /** A value's text on one line, a dash for nothing. */
    static String of(Object value) {
        if (value == null || value instanceof IPAddr address && address.isUnspecified()) {
            return NOTHING;
        }
        String text = replaced(value.toString().stripTrailing(), false);
        return text.isEmpty() ? NOTHING : text;
    }

    /** Text of the tool's own that may have lines and tabs and hold texts of others. */
    static String lines(String text) {
        return replaced(text, true);
    }

    private static String replaced(String text, boolean keepLines) {
        StringBuilder clean = null;
        for (int i = 0; i < text.length(); i++) {
            char c = text.charAt(i);
            if (steers(c) && !(keepLines && (c == '\n' || c == '\t'))) {
                clean = clean == null ? new StringBuilder(text) : clean;
                clean.setCharAt(i, '?');
            }
        }
        return clean == null ? text : clean.toString();
    }

    private static boolean steers(char c) {
        return Character.isISOControl(c) || c == '\u061C' || c == '\u200E' || c == '\u200F'
            || c >= '\u2028' && c <= '\u202E' || c >= '\u2066' && c <= '\u2069';
    }

    /** Writes JSON in UTF-8, with such characters as escapes; they can only stand in strings. */
    static final class JsonEscapes extends FilterWriter {
        JsonEscapes(OutputStream out) {
            super(new OutputStreamWriter(out, StandardCharsets.UTF_8));
        }

        @Override
        public void write(int c) throws IOException {
            write(new char[] {(char) c}, 0, 1);
        }

        @Override
        public void write(String text, int offset, int length) throws IOException {
            write(text.substring(offset, offset + length).toCharArray(), 0, length);
        }

        @Override
        public void write(char[] characters, int offset, int length) throws IOException {
            int start = offset;
            for (int i = offset; i < offset + length; i++) {
                if (steers(characters[i]) && characters[i] != '\n') {
                    out.write(characters, start, i - start);
                    out.write("\\u" + Integer.toHexString(0x10000 | characters[i]).substring(1));
                    start = i + 1;
                }
            }
            out.write(characters, start, offset + length - start);
        }
    }
}
