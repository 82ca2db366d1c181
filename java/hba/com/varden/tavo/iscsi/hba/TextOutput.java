package com.varden.tavo.iscsi.hba;

import java.io.PrintStream;
import java.util.ArrayList;
import java.util.List;

/** Lays records and lists out for people, in 80 columns. */
final class TextOutput {
    static final int WIDTH = 80;
    private static final int LABEL = 24;
    private static final int INDENT = 2;

    private TextOutput() {}

    /** Short values stand in two columns, long ones on lines of their own, records and lists below. */
    static void record(PrintStream out, RecordTable table, Object owner, int indent) {
        int cell = (WIDTH - indent) / 2;
        StringBuilder line = new StringBuilder();
        for (Field field : table.fields()) {
            if (!(field instanceof ScalarField<?> scalar)) {
                continue;
            }
            String value = scalar.show(owner);
            boolean half = value.length() <= cell - LABEL - 1;
            if (line.length() > 0 && half) {
                pad(line, indent + cell);
                line.append(field.label);
                pad(line, indent + cell + LABEL);
                out.println(line.append(value));
                line.setLength(0);
                continue;
            }
            flush(out, line);
            pad(line, indent);
            line.append(field.label);
            pad(line, indent + LABEL);
            if (half) {
                line.append(value);
            } else {
                wrap(out, line, value, indent + LABEL);
            }
        }
        flush(out, line);
        for (Field field : table.fields()) {
            if (field instanceof RecordField record) {
                heading(out, field.label, indent);
                record(out, record.table, record.getProperty(owner), indent + INDENT);
            } else if (field instanceof ListField list) {
                for (Object element : list.elements(owner)) {
                    heading(out, list.heading(element), indent);
                    record(out, list.table, element, indent + INDENT);
                }
            }
        }
    }

    static void heading(PrintStream out, String text, int indent) {
        StringBuilder line = new StringBuilder();
        pad(line, indent);
        out.println(line.append(text).append(':'));
    }

    private static void flush(PrintStream out, StringBuilder line) {
        if (line.length() > 0) {
            out.println(line);
            line.setLength(0);
        }
    }

    private static void wrap(PrintStream out, StringBuilder line, String value, int from) {
        int room = WIDTH - from;
        for (int start = 0; start < value.length(); start += room) {
            pad(line, from);
            line.append(value, start, Math.min(value.length(), start + room));
            flush(out, line);
        }
    }

    private static void pad(StringBuilder line, int width) {
        while (line.length() < width) {
            line.append(' ');
        }
    }

    /** Rows under headings. The widest columns give way when a row would be wider than 80 columns. */
    static final class Columns {
        private static final String GAP = "  ";
        private static final String CUT = "...";

        private final String[] headings;
        private final List<String[]> rows = new ArrayList<>();

        Columns(String... headings) {
            this.headings = headings;
        }

        Columns row(Object... values) {
            String[] row = new String[headings.length];
            for (int i = 0; i < row.length; i++) {
                row[i] = TerminalText.of(values[i]);
            }
            rows.add(row);
            return this;
        }

        void print(PrintStream out) {
            int[] widths = new int[headings.length];
            measure(widths, headings);
            for (String[] row : rows) {
                measure(widths, row);
            }
            int excess = GAP.length() * (widths.length - 1) - WIDTH;
            for (int width : widths) {
                excess += width;
            }
            for (; excess > 0; excess--) {
                widths[widest(widths)]--;
            }
            line(out, widths, headings);
            for (String[] row : rows) {
                line(out, widths, row);
            }
        }

        private static void measure(int[] widths, String[] row) {
            for (int i = 0; i < widths.length; i++) {
                widths[i] = Math.max(widths[i], row[i].length());
            }
        }

        private static int widest(int[] widths) {
            int widest = 0;
            for (int i = 1; i < widths.length; i++) {
                if (widths[i] > widths[widest]) {
                    widest = i;
                }
            }
            return widest;
        }

        // iSCSI names differ at their ends.
        private static String cut(String value, int width) {
            if (value.length() <= width) {
                return value;
            }
            int tail = (width - CUT.length()) / 2;
            return value.substring(0, width - CUT.length() - tail) + CUT + value.substring(value.length() - tail);
        }

        private static void line(PrintStream out, int[] widths, String[] row) {
            StringBuilder line = new StringBuilder();
            int end = 0;
            for (int i = 0; i < widths.length; i++) {
                pad(line, end);
                line.append(cut(row[i], widths[i]));
                end += widths[i] + GAP.length();
            }
            out.println(line);
        }
    }
}
