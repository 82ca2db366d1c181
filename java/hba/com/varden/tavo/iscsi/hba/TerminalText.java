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
    /** Below this every character takes one column. */
    private static final char FIRST_MARK = '\u0300';

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

    /** How many columns of a terminal the text takes: two for each wide character, none for a mark on another. */
    static int width(String text) {
        int width = 0;
        for (int i = 0; i < text.length(); i++) {
            width += width(text.charAt(i));
        }
        return width;
    }

    // The wide blocks of Unicode up to U+FFFF: Korean letters, Chinese and Japanese ones, their full-width Latin.
    private static int width(char c) {
        int type = c < FIRST_MARK ? Character.OTHER_LETTER : Character.getType(c);
        if (type == Character.NON_SPACING_MARK || type == Character.ENCLOSING_MARK) {
            return 0;
        }
        boolean wide = c >= '\u1100' && c <= '\u115F' || c >= '\u2E80' && c <= '\uA4CF'
            || c >= '\uAC00' && c <= '\uD7A3' || c >= '\uF900' && c <= '\uFAFF'
            || c >= '\uFE30' && c <= '\uFE6F' || c >= '\uFF00' && c <= '\uFF60';
        return wide ? 2 : 1;
    }

    /** As much of the text's beginning as this many columns hold. */
    static String head(String text, int columns) {
        int end = 0;
        for (int width = 0; end < text.length(); end++) {
            width += width(text.charAt(end));
            if (width > columns) {
                break;
            }
        }
        return text.substring(0, end);
    }

    /** As much of the text's end as this many columns hold. */
    static String tail(String text, int columns) {
        int start = text.length();
        for (int width = 0; start > 0; start--) {
            width += width(text.charAt(start - 1));
            if (width > columns) {
                break;
            }
        }
        return text.substring(start);
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
