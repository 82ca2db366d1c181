package com.varden.tavo.iscsi.bench;

import java.io.BufferedReader;
import java.io.IOException;
import java.io.InputStreamReader;
import java.io.PrintWriter;
import java.nio.charset.StandardCharsets;
import java.util.LinkedHashMap;
import java.util.LinkedHashSet;
import java.util.List;
import java.util.Locale;
import java.util.Map;
import java.util.Set;
import java.util.function.Function;
import java.util.function.ToDoubleFunction;
import java.util.stream.Collectors;

/**
 * Turns the printed figures into the report: {@code Report table|json FOLDER MACHINE < FIGURES}. The data for the
 * drawings go to the folder. Ends with 1 when a control is off, with 0 otherwise, whatever the marks say.
 */
final class Report {
    private static final double CONTROL = 0.02;

    private static final Map<String, String> TITLES = new LinkedHashMap<>();

    static {
        TITLES.put("control", "Controls: the bridge against the same source built a second time (valid within 2 %)");
        TITLES.put("ratio", "The bridge's time divided by the other's");
        TITLES.put("first-use", "First use in a fresh process: load and one snapshot of 512 entries");
        TITLES.put("growth", "Growth of the snapshot, without what does not grow");
        TITLES.put("threads", "Two threads");
        TITLES.put("start", "The tool's start");
        TITLES.put("adapter", "The software adapter");
    }

    /** One printed figure. */
    private record Line(String vm, String section, String subject, String other, Figure figure, String mark) {
        static Line parse(String text) {
            String[] part = text.split("\t", -1);
            return new Line(part[0], part[1], part[2], part[3], new Figure(Double.parseDouble(part[4]),
                Double.parseDouble(part[5]), Double.parseDouble(part[6]), Integer.parseInt(part[7])), part[8]);
        }

        String key() {
            return String.join("\t", vm, section, subject, other);
        }

        // The same figure from several starts of the VM: the median of each of its numbers.
        static Line merge(List<Line> starts) {
            Line first = starts.get(0);
            return new Line(first.vm, first.section, first.subject, first.other, new Figure(
                middle(starts, Figure::median), middle(starts, Figure::low), middle(starts, Figure::high),
                starts.stream().mapToInt(line -> line.figure.count()).sum()), first.mark);
        }

        private static double middle(List<Line> starts, ToDoubleFunction<Figure> number) {
            return Figure.of(starts.stream().map(Line::figure).mapToDouble(number).toArray()).median();
        }

        String verdict() {
            double value = figure.median();
            if (mark.isEmpty()) {
                return "";
            }
            if (mark.equals("control")) {
                return Math.abs(value - 1) <= CONTROL ? "valid" : "INVALID";
            }
            boolean met;
            if (mark.contains("..")) {
                String[] bounds = mark.split("\\.\\.");
                met = value >= Double.parseDouble(bounds[0]) && value <= Double.parseDouble(bounds[1]);
            } else if (mark.startsWith("<=")) {
                met = value <= Double.parseDouble(mark.substring(2));
            } else {
                met = value < Double.parseDouble(mark.substring(1));
            }
            return met ? "met" : "MISSED";
        }

        // Only where the two do the same work is one of them the faster.
        String words() {
            if (!section.equals("ratio") && !section.equals("first-use")) {
                return "";
            }
            double value = figure.median();
            if (Math.abs(value - 1) < CONTROL) {
                return "the same";
            }
            return value < 1 ? String.format(Locale.ROOT, "%.2f times faster", 1 / value)
                : String.format(Locale.ROOT, "%.2f times slower", value);
        }
    }

    private final List<Line> lines;

    private Report(List<Line> lines) {
        this.lines = lines;
    }

    public static void main(String[] arguments) throws IOException {
        try (BufferedReader input = new BufferedReader(new InputStreamReader(System.in, StandardCharsets.UTF_8))) {
            Map<String, List<Line>> starts = input.lines().map(Line::parse)
                .collect(Collectors.groupingBy(Line::key, LinkedHashMap::new, Collectors.toList()));
            Report report = new Report(starts.values().stream().map(Line::merge).collect(Collectors.toList()));
            boolean valid = report.lines.stream().noneMatch(line -> line.verdict().equals("INVALID"));
            System.out.print(arguments[0].equals("json") ? report.json(arguments[2], valid)
                : report.table(arguments[2], valid));
            report.drawings(arguments[1]);
            System.exit(valid ? 0 : 1);
        }
    }

    private String table(String machine, boolean valid) {
        StringBuilder text = new StringBuilder(machine).append('\n');
        for (Map.Entry<String, String> title : TITLES.entrySet()) {
            List<Line> section = section(title.getKey());
            if (section.isEmpty()) {
                continue;
            }
            text.append('\n').append(title.getValue()).append('\n');
            for (Line line : section) {
                text.append(String.format(Locale.ROOT, "  %-14s  %-42s  %-35s %8.3f  (%.3f to %.3f)  %s", line.vm,
                    line.subject, line.other, line.figure.median(), line.figure.low(), line.figure.high(),
                    line.words()).stripTrailing());
                if (!line.mark.isEmpty()) {
                    String mark = line.mark.equals("control") ? "" : " (" + line.mark + ")";
                    text.append("  ").append(line.verdict()).append(mark);
                }
                text.append('\n');
            }
        }
        long missed = lines.stream().filter(line -> line.verdict().equals("MISSED")).count();
        text.append('\n').append(missed == 0 ? "All marks were met." : missed + " marks were missed.").append('\n');
        text.append(valid ? "All controls are within 2 %: the run is valid.\n"
            : "A CONTROL IS OFF BY MORE THAN 2 %: THIS RUN IS INVALID. Repeat it on a quieter machine.\n");
        return text.toString();
    }

    private String json(String machine, boolean valid) {
        String form = "    {\"vm\": \"%s\", \"section\": \"%s\", \"subject\": \"%s\", \"other\": \"%s\", "
            + "\"median\": %.6g, \"quartiles\": [%.6g, %.6g], \"count\": %d, "
            + "\"mark\": \"%s\", \"verdict\": \"%s\"}";
        String figures = lines.stream().map(line -> String.format(Locale.ROOT, form, line.vm, line.section,
            line.subject, line.other, line.figure.median(), line.figure.low(), line.figure.high(),
            line.figure.count(), line.mark, line.verdict())).collect(Collectors.joining(",\n"));
        return "{\n  \"machine\": \"" + machine.replace("\"", "'") + "\",\n  \"valid\": " + valid
            + ",\n  \"figures\": [\n" + figures + "\n  ]\n}\n";
    }

    // growth.dat has a block per VM: entries, microseconds. peers-N.dat has a row per operation, a column per peer.
    private void drawings(String folder) throws IOException {
        Map<String, List<Line>> curves = section("curve").stream()
            .collect(Collectors.groupingBy(Line::vm, LinkedHashMap::new, Collectors.toList()));
        try (PrintWriter out = new PrintWriter(folder + "/growth.dat", StandardCharsets.UTF_8)) {
            curves.forEach((vm, points) -> {
                out.println("\"" + vm + "\"");
                points.forEach(line -> out.println(line.other + " " + line.figure.median() / 1000));
                out.println("\n");
            });
        }
        List<Line> ratios = section("ratio");
        int number = 0;
        for (String vm : distinct(ratios, Line::vm)) {
            List<Line> own = ratios.stream().filter(line -> line.vm.equals(vm)).collect(Collectors.toList());
            Set<String> peers = distinct(own, Line::other);
            number++;
            try (PrintWriter out = new PrintWriter(folder + "/peers-" + number + ".dat", StandardCharsets.UTF_8)) {
                out.println("\"" + vm + "\" \"" + String.join("\" \"", peers) + "\"");
                for (String subject : distinct(own, Line::subject)) {
                    out.println("\"" + subject + "\" " + own.stream().filter(line -> line.subject.equals(subject))
                        .map(line -> Double.toString(line.figure.median())).collect(Collectors.joining(" ")));
                }
            }
        }
    }

    private List<Line> section(String name) {
        return lines.stream().filter(line -> line.section.equals(name)).collect(Collectors.toList());
    }

    private static Set<String> distinct(List<Line> lines, Function<Line, String> part) {
        return lines.stream().map(part).collect(Collectors.toCollection(LinkedHashSet::new));
    }
}
