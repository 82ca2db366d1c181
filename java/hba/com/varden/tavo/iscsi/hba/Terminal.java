package com.varden.tavo.iscsi.hba;

import com.google.gson.stream.JsonWriter;
import java.io.BufferedOutputStream;
import java.io.FileDescriptor;
import java.io.FileOutputStream;
import java.io.FilterOutputStream;
import java.io.IOException;
import java.io.OutputStream;
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
public final class Terminal {
    private static final int BUFFER = 8192;

    private static Output result;
    private static boolean progressShown;

    private Terminal() {}

    /** The standard output, which keeps in mind why it could not be written. */
    private static final class Output extends FilterOutputStream {
        private IOException failure;

        Output(OutputStream out) {
            super(out);
        }

        @Override
        public void write(byte[] bytes, int offset, int length) throws IOException {
            try {
                out.write(bytes, offset, length);
            } catch (IOException e) {
                failure = e;
                throw e;
            }
        }
    }

    static void start() throws ReflectiveOperationException {
        Integer output = Integer.getInteger("hba.output");
        result = new Output(new FileOutputStream(output == null ? FileDescriptor.out : descriptor(output)));
        System.setOut(stream(result, false));
        System.setErr(stream(new FileOutputStream(FileDescriptor.err), true));
    }

    // Java names only the first three; the launcher opens java.io for this. A file under /dev/fd would be opened anew,
    // which sockets and permissions forbid.
    private static FileDescriptor descriptor(int number) throws ReflectiveOperationException {
        Constructor<FileDescriptor> constructor = FileDescriptor.class.getDeclaredConstructor(int.class);
        constructor.setAccessible(true);
        return constructor.newInstance(number);
    }

    private static PrintStream stream(OutputStream out, boolean autoFlush) {
        return new PrintStream(new BufferedOutputStream(out, BUFFER), autoFlush, StandardCharsets.UTF_8);
    }

    /** Writes what is left of the result; whether all of it was written. */
    static boolean finish() {
        return !System.out.checkError();
    }

    /** Whether the result was not written because nobody reads it any more, as behind a pipe. */
    static boolean readerHasGone() {
        return result.failure != null && String.valueOf(result.failure.getMessage()).contains("Broken pipe");
    }

    /** A writer of documents in which no character steers a terminal. */
    static JsonWriter json(OutputStream out, String indent) {
        JsonWriter writer = new JsonWriter(new TerminalText.JsonEscapes(out));
        writer.setIndent(indent);
        writer.setHtmlSafe(false);
        return writer;
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
    public static void message(String text) {
        endProgress();
        System.err.println("hba: " + TerminalText.lines(text));
    }

    /** Asks something; the answer is read elsewhere. */
    static void prompt(String text) {
        System.err.print(TerminalText.lines(text));
        System.err.flush();
    }

    static void endProgress() {
        if (progressShown) {
            System.err.println();
            progressShown = false;
        }
    }
}
