package com.varden.tavo.iscsi.bench;

import java.util.Arrays;
import java.util.Locale;

/** A measured figure: the median of many, with the quartiles. */
record Figure(double median, double low, double high) {
    static Figure of(double[] values) {
        double[] sorted = values.clone();
        Arrays.sort(sorted);
        return new Figure(quantile(sorted, 0.5), quantile(sorted, 0.25), quantile(sorted, 0.75));
    }

    private static double quantile(double[] sorted, double share) {
        double at = share * (sorted.length - 1);
        int below = (int) at;
        int above = Math.min(below + 1, sorted.length - 1);
        return sorted[below] + (at - below) * (sorted[above] - sorted[below]);
    }

    /**
     * Prints the figure as one line of the report's input, with the VM's name, the property bench.vm.
     *
     * @param section heading in the report
     * @param subject what was measured, and against what
     * @param mark the bounds that the figure has to keep, as in "0..1.05", or "" when there are none
     */
    void print(String section, String subject, String mark) {
        System.out.println(String.format(Locale.ROOT, "%s\t%s\t%s\t%.6g\t%.6g\t%.6g\t%s",
            System.getProperty("bench.vm"), section, subject, median, low, high, mark));
    }
}
