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

    /**
     * A value in a list.
     *
     * @param brief what may stand for it when the terminal is too narrow
     * @param trouble whether it is to catch the eye
     */
    record Cell(String text, String brief, boolean trouble) {}

    /**
     * Columns of equally many cells. When they are wider than the terminal, first those that can be cut give way, then
     * all cells become brief, and at last every column gives way, the widest before others.
     */
    static final class Columns {
        private static final String GAP = "  ";
        private static final String CUT = "...";
        /** Of a value that can be cut this much is left, and of each in the end. */
        private static final int TELLING = 16;
        private static final int NARROWEST = 5;

        private final List<Column> columns = new ArrayList<>();

        private static final class Column {
            private final String heading;
            private final List<Cell> cells;
            private final boolean canBeCut;
            private final boolean right;
            private int width;

            private Column(String heading, List<Cell> cells, boolean canBeCut, boolean right) {
                this.heading = heading;
                this.cells = cells;
                this.canBeCut = canBeCut;
                this.right = right;
            }

            private String text(int row, boolean brief) {
                return brief ? cells.get(row).brief : cells.get(row).text;
            }

            private void measure(boolean withHeading, boolean brief) {
                width = withHeading ? heading.length() : 0;
                for (int row = 0; row < cells.size(); row++) {
                    width = Math.max(width, TerminalText.width(text(row, brief)));
                }
            }
        }

        void add(String heading, List<Cell> cells, boolean canBeCut, boolean right) {
            columns.add(new Column(heading, cells, canBeCut, right));
        }

        void print(PrintStream out, boolean withHeadings) {
            boolean brief = fit(withHeadings, Terminal.columns(Integer.MAX_VALUE / 2));
            if (withHeadings) {
                StringBuilder line = new StringBuilder();
                for (Column column : columns) {
                    append(line, column, column.heading, false);
                }
                out.println(line.toString().stripTrailing());
            }
            int rows = columns.get(0).cells.size();
            for (int row = 0; row < rows; row++) {
                StringBuilder line = new StringBuilder();
                for (Column column : columns) {
                    append(line, column, column.text(row, brief), column.cells.get(row).trouble);
                }
                out.println(line.toString().stripTrailing());
            }
        }

        /** Finds the widths; whether the cells have to be brief. */
        private boolean fit(boolean withHeadings, int room) {
            for (boolean brief : new boolean[] {false, true}) {
                for (Column column : columns) {
                    column.measure(withHeadings, brief);
                }
                if (narrow(room, TELLING, true)) {
                    return brief;
                }
            }
            narrow(room, NARROWEST, false);
            return true;
        }

        /** Takes from the widest columns, down to the least width; whether that is enough. */
        private boolean narrow(int room, int least, boolean onlyTexts) {
            int excess = GAP.length() * (columns.size() - 1) - room;
            for (Column column : columns) {
                excess += column.width;
            }
            for (; excess > 0; excess--) {
                Column widest = null;
                for (Column column : columns) {
                    if ((column.canBeCut || !onlyTexts) && column.width > (widest == null ? least : widest.width)) {
                        widest = column;
                    }
                }
                if (widest == null) {
                    return false;
                }
                widest.width--;
            }
            return true;
        }

        // iSCSI names differ at their ends.
        private static String cut(String value, int width) {
            if (TerminalText.width(value) <= width) {
                return value;
            }
            int tail = (width - CUT.length()) / 2;
            return TerminalText.head(value, width - CUT.length() - tail) + CUT + TerminalText.tail(value, tail);
        }

        private static void append(StringBuilder line, Column column, String value, boolean trouble) {
            String text = cut(value, column.width);
            String blanks = " ".repeat(column.width - TerminalText.width(text));
            line.append(column.right ? blanks : "").append(trouble ? Terminal.highlighted(text) : text)
                .append(column.right ? "" : blanks).append(GAP);
        }
    }
}
