package com.varden.tavo.iscsi.bench;

import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.util.Arrays;
import java.util.List;

/**
 * Compares two kinds of fresh processes, A B, B A, A B, ...: {@code Processes ROUNDS wall|printed SECTION SUBJECT MARK
 * A... -- B...}. What counts is the time until the process has ended, or the number of nanoseconds it prints.
 */
final class Processes {
    private static final int COMMANDS = 5;

    private Processes() {}

    public static void main(String[] arguments) throws IOException, InterruptedException {
        int rounds = Integer.parseInt(arguments[0]);
        boolean printed = arguments[1].equals("printed");
        List<String> commands = Arrays.asList(arguments).subList(COMMANDS, arguments.length);
        List<String> a = commands.subList(0, commands.indexOf("--"));
        List<String> b = commands.subList(commands.indexOf("--") + 1, commands.size());
        double[] ratios = new double[rounds];
        for (int i = -1; i < rounds; i++) {
            boolean straight = i % 2 == 0;
            double first = time(straight ? a : b, printed);
            double second = time(straight ? b : a, printed);
            if (i >= 0) {
                ratios[i] = straight ? first / second : second / first;
            }
        }
        Figure.of(ratios).print(arguments[2], arguments[3], arguments[4]);
    }

    private static double time(List<String> command, boolean printed) throws IOException, InterruptedException {
        long start = System.nanoTime();
        Process process = new ProcessBuilder(command).redirectErrorStream(true).start();
        String output = new String(process.getInputStream().readAllBytes(), StandardCharsets.UTF_8);
        int status = process.waitFor();
        long time = System.nanoTime() - start;
        if (status != 0) {
            throw new IllegalStateException(command + " ended with " + status + ": " + output);
        }
        return printed ? Double.parseDouble(output.strip()) : time;
    }
}
