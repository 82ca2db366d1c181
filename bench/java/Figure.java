package com.varden.tavo.iscsi.bench;

import java.util.Arrays;
import java.util.Locale;

/** A measured figure: the median of many, with the quartiles. Printed as one line of the report's input. */
record Figure(double median, double low, double high, int count) {
    static Figure of(double[] values) {
        double[] sorted = values.clone();
        Arrays.sort(sorted);
        return new Figure(quantile(sorted, 0.5), quantile(sorted, 0.25), quantile(sorted, 0.75), sorted.length);
    }

    private static double quantile(double[] sorted, double share) {
        double at = share * (sorted.length - 1);
        int below = (int) at;
        int above = Math.min(below + 1, sorted.length - 1);
        return sorted[below] + (at - below) * (sorted[above] - sorted[below]);
    }

    /**
     * Prints the figure.
     *
     * @param section part of the report
     * @param subject what was measured
     * @param other what it was measured against
     * @param mark what the figure has to be: "" or an operator and a number, as in "<=1.05"
     */
    void print(String section, String subject, String other, String mark) {
        System.out.println(String.join("\t", vm(), section, subject, other, number(median), number(low), number(high),
            Integer.toString(count), mark));
    }

    static String vm() {
        String width = "32".equals(System.getProperty("sun.arch.data.model")) ? "32-bit" : "64-bit";
        return width + " Java " + Runtime.version().feature();
    }

    private static String number(double value) {
        return String.format(Locale.ROOT, "%.6g", value);
    }
}
