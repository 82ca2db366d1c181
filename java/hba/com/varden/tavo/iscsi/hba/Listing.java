package com.varden.tavo.iscsi.hba;

import java.io.PrintStream;
import java.util.ArrayList;
import java.util.Collections;
import java.util.Comparator;
import java.util.List;
import java.util.StringJoiner;
import picocli.CommandLine.Model.OptionSpec;

/**
 * A list of records as rows under headings, and the options that say how: which fields, in which order, for people or
 * as comma-separated values. Every field of the records is a column; some are shown without being asked for.
 */
final class Listing {
    private static final String ALL = "all";

    final RecordTable table;
    private final List<Column> columns = new ArrayList<>();
    private final List<Column> usual = new ArrayList<>();
    private final OptionSpec chosen;
    private final OptionSpec order;
    private final OptionSpec noHeaders;
    private final OptionSpec csv;

    /** A field with the way to the object that has it. */
    private record Column(ScalarField<?> field, List<RecordField> way) {
        /** Null when the row has no such object. */
        Object owner(Object row) {
            Object owner = row;
            for (RecordField step : way) {
                owner = owner == null ? null : step.getProperty(owner);
            }
            return owner;
        }

        String show(Object row) {
            Object owner = owner(row);
            return owner == null ? "" : field.show(owner);
        }

        String brief(Object row) {
            Object owner = owner(row);
            return owner == null ? "" : field.brief(owner);
        }

        String plain(Object row) {
            Object owner = owner(row);
            return owner == null ? "" : field.plain(owner);
        }

        boolean isTrouble(Object row) {
            Object owner = owner(row);
            return owner != null && field.isTrouble(owner);
        }

        @SuppressWarnings("unchecked")
        Comparable<Object> sortKey(Object row) {
            Object owner = owner(row);
            return owner == null ? null : (Comparable<Object>) field.sortKey(owner);
        }
    }

    private record SortKey(Column column, boolean descending) implements Comparator<Object> {
        @Override
        public int compare(Object one, Object other) {
            Comparable<Object> key = column.sortKey(one);
            Comparable<Object> otherKey = column.sortKey(other);
            int result = key == null || otherKey == null ? Boolean.compare(key != null, otherKey != null)
                                                         : key.compareTo(otherKey);
            return descending ? -result : result;
        }
    }

    /** Gives the command the options; the names are those of the fields that are shown without them. */
    Listing(Command command, RecordTable table, String... usual) {
        this.table = table;
        collect(table, List.of());
        for (String name : usual) {
            this.usual.add(column(name));
        }
        chosen = command.option("--columns", "NAME,...", names(), "Columns to show, in this order, by the names that "
            + "--json gives them; " + ALL + " shows every one, and a + before the first name adds to the usual ones.");
        order = command.option("--sort", "NAME,...", names(), "Columns to sort by; a - before a name turns its order "
            + "round.");
        noHeaders = command.flag("--no-headers", "Leave the headings out.");
        csv = command.flag("--csv", "Write comma-separated values: no units, no number beside words.");
    }

    private void collect(RecordTable from, List<RecordField> way) {
        for (Field field : from.fields()) {
            if (field instanceof ScalarField<?> scalar) {
                columns.add(new Column(scalar, way));
            } else if (field instanceof RecordField inner) {
                List<RecordField> further = new ArrayList<>(way);
                further.add(inner);
                collect(inner.table, further);
            }
        }
    }

    private List<String> names() {
        List<String> names = new ArrayList<>();
        for (Column column : columns) {
            names.add(column.field.name);
        }
        return names;
    }

    // Upper case and hyphens do not count: target-id is targetID.
    private Column column(String name) {
        for (Column column : columns) {
            if (column.field.name.equalsIgnoreCase(name.replace("-", ""))) {
                return column;
            }
        }
        List<String> nearest = Suggestions.nearest(name, names());
        throw new BadInput("there is no column '" + name + "'. "
            + (nearest.isEmpty() ? "" : "Did you mean '" + String.join("' or '", nearest) + "'? ") + "Columns: "
            + String.join(", ", names()) + ".");
    }

    /** One more column that is shown without being asked for. */
    void alsoShow(String name) {
        usual.add(column(name));
    }

    /** Checks the options before anything is done; throws BadInput. */
    void check(boolean json) {
        if (json && (chosen.getValue() != null || order.getValue() != null || isCsv() || Command.isSet(noHeaders))) {
            throw new BadInput("--columns, --sort, --no-headers and --csv do not go with --json, which writes all");
        }
        shown();
        sortKeys();
    }

    private List<Column> shown() {
        String names = chosen.getValue();
        if (names == null || names.equals(ALL)) {
            return names == null ? usual : columns;
        }
        List<Column> shown = new ArrayList<>(names.startsWith("+") ? usual : List.of());
        for (String name : names.substring(names.startsWith("+") ? 1 : 0).split(",", -1)) {
            shown.add(column(name));
        }
        return shown;
    }

    private List<SortKey> sortKeys() {
        List<SortKey> keys = new ArrayList<>();
        String names = order.getValue();
        for (String name : names == null ? new String[0] : names.split(",", -1)) {
            boolean descending = name.startsWith("-");
            keys.add(new SortKey(column(descending ? name.substring(1) : name), descending));
        }
        return keys;
    }

    private boolean isCsv() {
        return Command.isSet(csv);
    }

    /** Whether another program reads the list, which has no use for a sentence where there are no rows. */
    boolean isForPrograms() {
        return isCsv() || Command.isSet(noHeaders);
    }

    void print(PrintStream out, List<?> owners) {
        List<Object> rows = new ArrayList<>(owners);
        List<SortKey> keys = sortKeys();
        // The last key first: sorting keeps the order of what is equal.
        Collections.reverse(keys);
        for (SortKey key : keys) {
            rows.sort(key);
        }
        if (isCsv()) {
            printValues(out, rows);
        } else {
            printColumns(out, rows);
        }
    }

    private void printColumns(PrintStream out, List<Object> rows) {
        TextOutput.Columns text = new TextOutput.Columns();
        for (Column column : shown()) {
            List<TextOutput.Cell> cells = new ArrayList<>();
            for (Object row : rows) {
                cells.add(new TextOutput.Cell(TerminalText.of(column.show(row)), TerminalText.of(column.brief(row)),
                    column.isTrouble(row)));
            }
            text.add(column.field.heading(), cells, column.field.canBeCut(), column.field instanceof QuantityField);
        }
        text.print(out, !Command.isSet(noHeaders));
    }

    // As RFC 4180 has it, but for the line ends, which are those of this system.
    private void printValues(PrintStream out, List<Object> rows) {
        if (!Command.isSet(noHeaders)) {
            StringJoiner line = new StringJoiner(",");
            for (Column column : shown()) {
                line.add(column.field.name);
            }
            out.println(line);
        }
        for (Object row : rows) {
            StringJoiner line = new StringJoiner(",");
            for (Column column : shown()) {
                line.add(quoted(TerminalText.lines(column.plain(row))));
            }
            out.println(line);
        }
    }

    private static String quoted(String value) {
        boolean plain = value.indexOf(',') < 0 && value.indexOf('"') < 0 && value.indexOf('\n') < 0;
        return plain ? value : '"' + value.replace("\"", "\"\"") + '"';
    }
}
