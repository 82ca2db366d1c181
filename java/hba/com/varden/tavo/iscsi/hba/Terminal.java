package com.varden.tavo.iscsi.hba;

import java.io.Console;
import java.io.File;
import java.io.FileDescriptor;
import java.io.FileOutputStream;
import java.io.IOException;
import java.io.PrintStream;
import java.lang.reflect.Constructor;
import java.nio.charset.StandardCharsets;
import java.util.function.BooleanSupplier;

/**
 * Where the tool's words go and come from.
 *
 * The libraries print lines on the C standard output, which must not come between those of a result. The launcher
 * therefore gives the VM the user's standard error for both of its standard streams, where the libraries' lines join
 * the tool's messages, and the user's standard output as one more descriptor, whose number it tells with a property.
 */
final class Terminal {
    private static final int BUFFER = 8192;

    private static boolean progressShown;

    private Terminal() {}

    static void start() throws ReflectiveOperationException {
        Integer output = Integer.getInteger("hba.output");
        System.setOut(stream(output == null ? FileDescriptor.out : descriptor(output), false));
        System.setErr(stream(FileDescriptor.err, true));
    }

    // Java names only the first three; the launcher opens java.io for this. A file under /dev/fd would be opened anew,
    // which sockets and permissions forbid.
    private static FileDescriptor descriptor(int number) throws ReflectiveOperationException {
        Constructor<FileDescriptor> constructor = FileDescriptor.class.getDeclaredConstructor(int.class);
        constructor.setAccessible(true);
        return constructor.newInstance(number);
    }

    private static PrintStream stream(FileDescriptor descriptor, boolean autoFlush) {
        return new PrintStream(new java.io.BufferedOutputStream(new FileOutputStream(descriptor), BUFFER), autoFlush,
            StandardCharsets.UTF_8);
    }

    /** The file that a name means where the user stands, which is not the VM's current directory. */
    static File file(String name) {
        File file = new File(name);
        String directory = System.getProperty("hba.directory");
        return (file.isAbsolute() || directory == null ? file : new File(directory, name)).getAbsoluteFile();
    }

    /** Asks before something is destroyed or interrupted; --yes has been asked for already. */
    static void confirm(String what) {
        Console console = System.console();
        if (console == null) {
            throw new BadInput("this " + what + ": give --yes to have it done without a question");
        }
        String answer = console.readLine("This %s. Continue? [y/N] ", what);
        if (answer == null || !answer.trim().equalsIgnoreCase("y") && !answer.trim().equalsIgnoreCase("yes")) {
            throw new OperationFailed("nothing was done");
        }
    }

    /** A secret that the user types without seeing it, twice. */
    static String askSecret(String what) {
        Console console = System.console();
        if (console == null) {
            throw new BadInput("no terminal to ask for the " + what + ": use --secret-file FILE, or - for the standard "
                + "input");
        }
        char[] first = console.readPassword("%s: ", what);
        char[] second = console.readPassword("%s again: ", what);
        if (first == null || second == null || !java.util.Arrays.equals(first, second)) {
            throw new BadInput("the two " + what + "s differ; nothing was done");
        }
        return new String(first);
    }

    /** The first line of a file, or of the standard input for "-". */
    static String firstLine(String name) {
        try {
            byte[] bytes = name.equals("-") ? System.in.readAllBytes()
                                            : java.nio.file.Files.readAllBytes(file(name).toPath());
            String text = new String(bytes, StandardCharsets.UTF_8);
            int end = text.indexOf('\n');
            String line = end < 0 ? text : text.substring(0, end);
            return line.endsWith("\r") ? line.substring(0, line.length() - 1) : line;
        } catch (IOException e) {
            throw new BadInput(name + " cannot be read: " + reason(e));
        }
    }

    /** Shows on a terminal how far long work has come. */
    static void progress(String what, int done, int all) {
        if (System.console() != null) {
            System.err.print("\r" + what + ": " + done + " of " + all + (done == all ? "\n" : ""));
            System.err.flush();
            progressShown = done != all;
        }
    }

    /** Makes one long call, and counts its seconds on a terminal meanwhile. */
    static boolean during(String what, BooleanSupplier call) {
        Thread clock = new Thread(() -> {
            try {
                for (int seconds = 0;; seconds++) {
                    System.err.print("\r" + what + ": " + seconds + " s ");
                    System.err.flush();
                    Thread.sleep(1000);
                }
            } catch (InterruptedException e) {
                System.err.println();
            }
        });
        clock.setDaemon(true);
        if (System.console() != null) {
            clock.start();
        }
        boolean result = call.getAsBoolean();
        clock.interrupt();
        try {
            clock.join();
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
        }
        return result;
    }

    /** Says something that is not part of the result. */
    static void message(String text) {
        if (progressShown) {
            System.err.println();
            progressShown = false;
        }
        System.err.println("hba: " + text);
    }

    static String reason(IOException e) {
        if (e instanceof java.nio.file.NoSuchFileException) {
            return "there is no such file";
        }
        if (e instanceof java.nio.file.AccessDeniedException) {
            return "permission denied";
        }
        return e.getMessage();
    }
}
