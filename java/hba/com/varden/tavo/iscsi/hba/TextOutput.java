package com.varden.tavo.iscsi.hba;

import java.io.PrintStream;
import java.util.ArrayList;
import java.util.List;

/** Lays records and lists out for people: as wide as the terminal, and elsewhere so that no value is cut or broken. */
final class TextOutput {
    /** The width of help, and of records in two columns. */
    static final int WIDTH = 80;
    private static final int LABEL = 24;
    private static final int INDENT = 2;

    private TextOutput() {}

    /** Short values stand in two columns, long ones on lines of their own, records and lists below. */
    static void record(PrintStream out, RecordTable table, Object owner, int indent) {
        int cell = (Math.min(WIDTH, Terminal.columns(WIDTH)) - indent) / 2;
        StringBuilder line = new StringBuilder();
        for (Field field : table.fields()) {
            if (!(field instanceof ScalarField<?> scalar)) {
                continue;
            }
            String value = scalar.show(owner);
            boolean half = value.length() <= cell - LABEL - 1 && !scalar.isTrouble(owner);
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
            if (scalar.isTrouble(owner)) {
                out.println(line.append(Terminal.highlighted(value)));
                line.setLength(0);
            } else if (half) {
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
        int room = Math.max(LABEL, Terminal.columns(Integer.MAX_VALUE) - from);
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

    /** Rows under headings. The widest columns give way when a row would be wider than the terminal. */
    static final class Columns {
        private static final String GAP = "  ";
        private static final String CUT = "...";
        /** No column is cut below this, so that something of each value is left. */
        private static final int NARROWEST = 5;

        private final String[] headings;
        private final boolean[] right;
        private final List<String[]> rows = new ArrayList<>();
        private final List<boolean[]> troubles = new ArrayList<>();

        Columns(String... headings) {
            this.headings = headings;
            right = new boolean[headings.length];
        }

        Columns row(Object... values) {
            return row(new boolean[headings.length], values);
        }

        /** A row, and which of its values are to catch the eye. */
        Columns row(boolean[] trouble, Object[] values) {
            String[] row = new String[headings.length];
            for (int i = 0; i < row.length; i++) {
                row[i] = TerminalText.of(values[i]);
            }
            rows.add(row);
            troubles.add(trouble);
            return this;
        }

        void alignRight(int column) {
            right[column] = true;
        }

        void print(PrintStream out) {
            print(out, true);
        }

        void print(PrintStream out, boolean withHeadings) {
            int[] widths = new int[headings.length];
            if (withHeadings) {
                measure(widths, headings);
            }
            for (String[] row : rows) {
                measure(widths, row);
            }
            int excess = GAP.length() * (widths.length - 1) - Terminal.columns(Integer.MAX_VALUE / 2);
            for (int width : widths) {
                excess += width;
            }
            for (int widest = widest(widths); excess > 0 && widths[widest] > NARROWEST; widest = widest(widths)) {
                widths[widest]--;
                excess--;
            }
            if (withHeadings) {
                line(out, widths, headings, new boolean[headings.length]);
            }
            for (int i = 0; i < rows.size(); i++) {
                line(out, widths, rows.get(i), troubles.get(i));
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

        private void line(PrintStream out, int[] widths, String[] row, boolean[] trouble) {
            StringBuilder line = new StringBuilder();
            int blanks = 0;
            for (int i = 0; i < widths.length; i++) {
                String text = cut(row[i], widths[i]);
                int rest = widths[i] - text.length();
                pad(line, line.length() + blanks + (right[i] ? rest : 0));
                line.append(trouble[i] ? Terminal.highlighted(text) : text);
                blanks = GAP.length() + (right[i] ? 0 : rest);
            }
            out.println(line);
        }
    }
}
