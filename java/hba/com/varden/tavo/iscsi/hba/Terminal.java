package com.varden.tavo.iscsi.hba;

import com.google.gson.stream.JsonWriter;
import java.io.BufferedOutputStream;
import java.io.File;
import java.io.FileDescriptor;
import java.io.FileOutputStream;
import java.io.FilterOutputStream;
import java.io.IOException;
import java.io.OutputStream;
import java.io.PrintStream;
import java.lang.reflect.Constructor;
import java.nio.charset.StandardCharsets;

/**
 * Where the tool's words go.
 *
 * The libraries print lines on the C standard output, which must not come between those of a result. The launcher
 * therefore gives the VM the user's standard error for both of its standard streams, where the libraries' lines join
 * the tool's messages, and the user's standard output as one more descriptor, whose number it tells with a property.
 */
public final class Terminal {
    private static final int BUFFER = 8192;

    /** The launcher's word for rows and columns of the terminal that is the user's standard output. */
    private static final String SIZE = "hba.terminal";
    private static final int DEFAULT_COLUMNS = 80;
    private static final int DEFAULT_ROWS = 24;
    private static final long SIZE_LASTS = 1_000_000_000L;
    private static final String RED = "\033[31m";
    private static final String PLAIN = "\033[0m";

    private static Output result;
    private static long sizeRead;

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

    /** Whether the result goes to a terminal. Of the VM's own streams none is the user's standard output. */
    static boolean isTerminal() {
        return System.getProperty(SIZE) != null;
    }

    /** Whether the result goes to a terminal that knows places and colours. */
    static boolean canBeSteered() {
        return isTerminal() && !"dumb".equals(System.getenv("TERM"));
    }

    /** How wide the terminal is; what was given elsewhere. COLUMNS comes before what the terminal says. */
    static int columns(int elsewhere) {
        if (!isTerminal()) {
            return elsewhere;
        }
        int wanted = number(System.getenv("COLUMNS"));
        int there = wanted > 0 ? wanted : number(System.getProperty(SIZE).replaceFirst(".* ", ""));
        return there > 0 ? there : DEFAULT_COLUMNS;
    }

    /** How high the terminal is, now: its window may have been changed since the start. */
    static int rows() {
        long now = System.nanoTime();
        if (sizeRead == 0 || now - sizeRead > SIZE_LASTS) {
            sizeRead = now;
            try {
                Process stty = new ProcessBuilder("stty", "size").redirectInput(new File("/dev/tty")).start();
                String size = new String(stty.getInputStream().readAllBytes(), StandardCharsets.US_ASCII).strip();
                if (stty.waitFor() == 0) {
                    System.setProperty(SIZE, size);
                }
            } catch (IOException e) {
                // It keeps the size that it had.
            } catch (InterruptedException e) {
                Thread.currentThread().interrupt();
            }
        }
        int rows = number(System.getProperty(SIZE).replaceFirst(" .*", ""));
        return rows > 1 ? rows : DEFAULT_ROWS;
    }

    private static int number(String text) {
        return text != null && text.matches("\\d{1,6}") ? Integer.parseInt(text) : 0;
    }

    /** Text that is to catch the eye on a terminal. */
    static String highlighted(String text) {
        String noColor = System.getenv("NO_COLOR");
        boolean colour = canBeSteered() && (noColor == null || noColor.isEmpty());
        return colour ? RED + text + PLAIN : text;
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

    /** Says something that is not part of the result. */
    public static void message(String text) {
        Progress.end();
        System.err.println("hba: " + TerminalText.lines(text));
    }

    /** Asks something; the answer is read elsewhere. */
    static void prompt(String text) {
        Progress.end();
        System.err.print(TerminalText.lines(text));
        System.err.flush();
    }
}
