package com.varden.tavo.iscsi.hba;

import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.io.PrintStream;
import java.math.BigDecimal;
import java.nio.charset.StandardCharsets;
import picocli.CommandLine.Model.OptionSpec;

/**
 * Shows something again and again: in place on a terminal, one document a line in JSON, elsewhere one after the other.
 * It ends at a signal, between two of them, and when nobody reads any more.
 */
final class Watch {
    private static final long LEAST_PAUSE = 100;
    private static final long LONGEST_PAUSE = 65_535_000;
    private static final String USUAL_PAUSE = "2";
    private static final String TOP_LEFT = "\033[H";
    private static final String REST_OF_LINE_EMPTY = "\033[K";
    private static final String REST_EMPTY = "\033[J";

    private final Command command;
    private final OptionSpec pause;
    private final OptionSpec times;
    /** Whether it is the end of a list that matters when the terminal cannot hold all of it. */
    private final boolean endMatters;

    /** Shows it once, on the standard output; returns the exit status. */
    interface Frame {
        int show() throws IOException;
    }

    Watch(Command command, boolean endMatters) {
        this.command = command;
        this.endMatters = endMatters;
        pause = command.optionalValue("--watch", "SECONDS", USUAL_PAUSE,
            "Show it again every so many seconds, 0.1 to 65535, until interrupted; " + USUAL_PAUSE
                + " without a value.");
        times = command.option("--times", new NumberField("times", 31, "Times").min(1),
            "With --watch: end after so many times.");
    }

    boolean isOn() {
        return pause.getValue() != null;
    }

    /** Checks the options; throws BadInput. */
    void check() {
        if (isOn()) {
            milliseconds();
        } else if (times.getValue() != null) {
            throw new BadInput("--times goes with --watch");
        }
    }

    private long milliseconds() {
        String seconds = pause.getValue();
        long value = seconds.matches("\\d{1,9}(\\.\\d{1,9})?")
            ? new BigDecimal(seconds).movePointRight(3).longValue() : 0;
        if (value < LEAST_PAUSE || value > LONGEST_PAUSE) {
            throw new BadInput("--watch: '" + seconds + "' is not permitted: 0.1 to 65535 s");
        }
        return value;
    }

    /** Shows it, once or again and again; returns the last exit status. */
    int run(Frame frame) throws IOException {
        if (!isOn()) {
            return frame.show();
        }
        Interruption.watch();
        boolean inPlace = Terminal.canBeSteered() && !command.wantsJson();
        long left = times.getValue() == null ? Long.MAX_VALUE : Command.number(times);
        for (boolean first = true;; first = false) {
            int status;
            if (inPlace) {
                // What stands on the terminal is kept, above.
                System.out.print(first ? "\n".repeat(Terminal.rows()) : "");
                status = showInPlace(frame);
            } else {
                if (!first && command.wantsWords()) {
                    System.out.println();
                }
                status = frame.show();
            }
            if (System.out.checkError() || --left == 0 || !Interruption.pause(milliseconds())) {
                return status;
            }
        }
    }

    // What stood there is written over line by line, so that nothing flickers.
    private int showInPlace(Frame frame) throws IOException {
        PrintStream terminal = System.out;
        ByteArrayOutputStream shown = new ByteArrayOutputStream();
        int status;
        try (PrintStream buffer = new PrintStream(shown, false, StandardCharsets.UTF_8)) {
            System.setOut(buffer);
            status = frame.show();
        } finally {
            System.setOut(terminal);
        }
        String[] lines = shown.toString(StandardCharsets.UTF_8).split("\n");
        int rows = Terminal.rows() - 1;
        int passedOver = Math.max(0, lines.length - rows);
        terminal.print(TOP_LEFT);
        for (int i = 0; i < lines.length - passedOver; i++) {
            // The headings stay.
            terminal.print(lines[endMatters && i > 0 ? i + passedOver : i] + REST_OF_LINE_EMPTY + "\n");
        }
        terminal.print(REST_EMPTY);
        return status;
    }
}
