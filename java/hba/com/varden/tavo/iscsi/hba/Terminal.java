package com.varden.tavo.iscsi.hba;

import java.io.BufferedOutputStream;
import java.io.FileDescriptor;
import java.io.FileOutputStream;
import java.io.PrintStream;
import java.lang.reflect.Constructor;
import java.nio.charset.StandardCharsets;
import java.util.function.BooleanSupplier;

/**
 * Where the tool's words go.
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
        return new PrintStream(new BufferedOutputStream(new FileOutputStream(descriptor), BUFFER), autoFlush,
            StandardCharsets.UTF_8);
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
}
