package com.varden.tavo.iscsi.bench;

import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.util.Arrays;
import java.util.List;

/**
 * Compares two kinds of fresh processes, A B, B A, A B, ...: {@code Processes ROUNDS wall|printed SECTION SUBJECT OTHER
 * MARK A... -- B...}. What counts is the time until the process has ended, or the number of nanoseconds it prints.
 */
final class Processes {
    private static final int COMMANDS = 6;

    private Processes() {}

    public static void main(String[] arguments) throws IOException, InterruptedException {
        int rounds = Integer.parseInt(arguments[0]);
        boolean printed = arguments[1].equals("printed");
        List<String> commands = Arrays.asList(arguments).subList(COMMANDS, arguments.length);
        List<String> a = commands.subList(0, commands.indexOf("--"));
        List<String> b = commands.subList(commands.indexOf("--") + 1, commands.size());
        double[] ratios = new double[rounds];
        for (int i = -1; i < rounds; i++) {
            double first = time(i % 2 == 0 ? a : b, printed);
            double second = time(i % 2 == 0 ? b : a, printed);
            if (i >= 0) {
                ratios[i] = i % 2 == 0 ? first / second : second / first;
            }
        }
        Figure.of(ratios).print(arguments[2], arguments[3], arguments[4], arguments[5]);
    }

    private static double time(List<String> command, boolean printed) throws IOException, InterruptedException {
        long start = System.nanoTime();
        Process process = new ProcessBuilder(command).redirectErrorStream(true).start();
        byte[] output = process.getInputStream().readAllBytes();
        int status = process.waitFor();
        long time = System.nanoTime() - start;
        String text = new String(output, StandardCharsets.UTF_8);
        if (status != 0) {
            throw new IllegalStateException(command + " ended with " + status + ": " + text);
        }
        return printed ? Double.parseDouble(text.strip()) : time;
    }
}
