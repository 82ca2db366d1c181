package com.varden.tavo.iscsi.bench;

import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.util.Arrays;
import java.util.List;

/**
 * Compares two kinds of fresh processes: {@code Processes ROUNDS wall|printed SECTION SUBJECT MARK A... -- B...}. What
 * counts is the time until the process has ended, or the number of nanoseconds that it prints.
 */
final class Processes {
    private static final int COMMANDS = 5;

    private Processes() {}

    public static void main(String[] arguments) {
        boolean printed = arguments[1].equals("printed");
        List<String> commands = Arrays.asList(arguments).subList(COMMANDS, arguments.length);
        List<String> a = commands.subList(0, commands.indexOf("--"));
        List<String> b = commands.subList(commands.indexOf("--") + 1, commands.size());
        Measured.print(arguments[2], arguments[3], arguments[4],
            Pairs.ratios(Integer.parseInt(arguments[0]), () -> time(a, printed), () -> time(b, printed)));
    }

    private static long time(List<String> command, boolean printed) {
        long start = System.nanoTime();
        try {
            Process process = new ProcessBuilder(command).redirectErrorStream(true).start();
            String output = new String(process.getInputStream().readAllBytes(), StandardCharsets.UTF_8);
            int status = process.waitFor();
            long time = System.nanoTime() - start;
            Measured.require(status == 0, command + " ended with " + status + ": " + output);
            return printed ? Long.parseLong(output.strip()) : time;
        } catch (IOException | InterruptedException e) {
            throw new IllegalStateException(e);
        }
    }
}
