package com.varden.tavo.iscsi.bench;

/** What the programs that measure do alike: they insist on their conditions and hand their figures to the report. */
final class Measured {
    private Measured() {}

    /** Ends the run unless the condition holds: a figure would not mean what it says. */
    static void require(boolean condition, String otherwise) {
        if (!condition) {
            throw new IllegalStateException(otherwise);
        }
    }

    /**
     * Prints one line for each value, with the VM's name, the property bench.vm, and the number of this process, by
     * which the report tells one start of the VM from another.
     *
     * @param section heading in the report; the report is sorted by it
     * @param subject what was measured, and against what
     * @param mark the bounds that the median has to keep, as in "0..1.05", or "" when there are none
     */
    static void print(String section, String subject, String mark, double... values) {
        for (double value : values) {
            System.out.println(String.join("\t", section, System.getProperty("bench.vm"), subject, mark,
                String.valueOf(ProcessHandle.current().pid()), String.valueOf(value)));
        }
    }
}
