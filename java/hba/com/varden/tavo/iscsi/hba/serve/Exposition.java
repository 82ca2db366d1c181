package com.varden.tavo.iscsi.hba.serve;

/**
 * Writes metrics as text, in one of the two forms that Prometheus reads: its own, which promtool and the node exporter
 * read too, or OpenMetrics. A family is begun and followed by its samples.
 */
final class Exposition {
    /** The two forms, with their media types. */
    enum Form {
        PROMETHEUS("text/plain; version=0.0.4; charset=utf-8"),
        OPEN_METRICS("application/openmetrics-text; version=1.0.0; charset=utf-8");

        final String mediaType;

        Form(String mediaType) {
            this.mediaType = mediaType;
        }
    }

    private static final String PREFIX = "tavoiscsi_";
    private static final String TOTAL = "_total";

    private final Form form;
    private final StringBuilder text = new StringBuilder(1 << 16);
    private String sampleName;

    Exposition(Form form) {
        this.form = form;
    }

    /** Begins a family of values that go up and down; a unit that is not empty ends the name. */
    Exposition gauge(String name, String unit, String help) {
        return family(name, "gauge", unit, help, "");
    }

    /** Begins a family of values that only grow; the samples' names end in "_total". */
    Exposition counter(String name, String unit, String help) {
        return family(name, "counter", unit, help, TOTAL);
    }

    private Exposition family(String name, String type, String unit, String help, String ending) {
        String family = PREFIX + name + (unit.isEmpty() ? "" : "_" + unit);
        sampleName = family + ending;
        String described = form == Form.OPEN_METRICS ? family : sampleName;
        text.append("# HELP ").append(described).append(' ').append(help).append(".\n");
        text.append("# TYPE ").append(described).append(' ').append(type).append('\n');
        if (form == Form.OPEN_METRICS && !unit.isEmpty()) {
            text.append("# UNIT ").append(described).append(' ').append(unit).append('\n');
        }
        return this;
    }

    /** A sample of the family begun last; labels are names and values in turn. */
    void sample(String value, String... labels) {
        text.append(sampleName);
        char separator = '{';
        for (int i = 0; i < labels.length; i += 2) {
            text.append(separator).append(labels[i]).append("=\"");
            escape(labels[i + 1]);
            text.append('"');
            separator = ',';
        }
        text.append(labels.length == 0 ? " " : "} ").append(value).append('\n');
    }

    // Text of adapters and targets may hold anything; unknown text is empty.
    private void escape(String value) {
        for (char c : (value == null ? "" : value).toCharArray()) {
            switch (c) {
                case '\\' -> text.append("\\\\");
                case '"' -> text.append("\\\"");
                case '\n' -> text.append("\\n");
                default -> text.append(Character.isISOControl(c) ? '?' : c);
            }
        }
    }

    /** The text. Nothing can be added to it. */
    String finish() {
        return form == Form.OPEN_METRICS ? text.append("# EOF\n").toString() : text.toString();
    }
}
