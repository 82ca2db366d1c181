package com.varden.tavo.iscsi.bench;

import java.io.BufferedReader;
import java.io.IOException;
import java.io.InputStreamReader;
import java.nio.charset.StandardCharsets;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Locale;
import java.util.Map;
import java.util.function.ToDoubleFunction;
import java.util.stream.Collectors;

/** Turns the printed figures into the report. Ends with 1 when a control is off or a mark is missed. */
final class Report {
    static final String CONTROLS = "Controls: the bridge / the same source built a second time";

    private Report() {}

    private record Line(String vm, String section, String subject, Figure figure, String mark) {
        static Line parse(String text) {
            String[] part = text.split("\t", -1);
            return new Line(part[0], part[1], part[2], new Figure(Double.parseDouble(part[3]),
                Double.parseDouble(part[4]), Double.parseDouble(part[5])), part[6]);
        }

        String key() {
            return vm + section + subject;
        }

        // The same figure from several starts of the VM: the median of each of its numbers.
        static Line merge(List<Line> starts) {
            Line first = starts.get(0);
            return new Line(first.vm, first.section, first.subject, new Figure(middle(starts, Figure::median),
                middle(starts, Figure::low), middle(starts, Figure::high)), first.mark);
        }

        private static double middle(List<Line> starts, ToDoubleFunction<Figure> number) {
            return Figure.of(starts.stream().map(Line::figure).mapToDouble(number).toArray()).median();
        }

        boolean missed() {
            if (mark.isEmpty()) {
                return false;
            }
            String[] bounds = mark.split("\\.\\.");
            return figure.median() < Double.parseDouble(bounds[0]) || figure.median() > Double.parseDouble(bounds[1]);
        }

        @Override
        public String toString() {
            String verdict = mark.isEmpty() ? "" : (missed() ? "MISSED " : "met ") + mark;
            return String.format(Locale.ROOT, "  %-14s  %-46s %8.3f  %-18s %s", vm, subject, figure.median(),
                String.format(Locale.ROOT, "(%.3f to %.3f)", figure.low(), figure.high()), verdict).stripTrailing();
        }
    }

    public static void main(String[] arguments) throws IOException {
        BufferedReader input = new BufferedReader(new InputStreamReader(System.in, StandardCharsets.UTF_8));
        Map<String, List<Line>> starts = input.lines().map(Line::parse)
            .collect(Collectors.groupingBy(Line::key, LinkedHashMap::new, Collectors.toList()));
        Map<String, List<Line>> sections = starts.values().stream().map(Line::merge)
            .collect(Collectors.groupingBy(Line::section, LinkedHashMap::new, Collectors.toList()));
        sections.forEach((title, lines) -> {
            System.out.println("\n" + title);
            lines.forEach(System.out::println);
        });
        long off = sections.getOrDefault(CONTROLS, List.of()).stream().filter(Line::missed).count();
        long missed = sections.values().stream().flatMap(List::stream).filter(Line::missed).count() - off;
        System.out.println(missed == 0 ? "\nEvery mark is met." : "\nMarks missed: " + missed + ".");
        System.out.println(off == 0 ? "Every control is within its bounds: the run is valid."
            : "CONTROLS OUT OF BOUNDS: " + off + ". THE RUN IS INVALID; repeat it on a quieter machine.");
        System.exit(missed + off == 0 ? 0 : 1);
    }
}
