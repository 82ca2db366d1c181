package com.varden.tavo.iscsi.hba;

import java.io.Console;
import java.io.File;
import java.io.FileDescriptor;
import java.io.FileInputStream;
import java.io.IOException;
import java.io.InputStream;
import java.nio.ByteBuffer;
import java.nio.CharBuffer;
import java.nio.charset.CharacterCodingException;
import java.nio.charset.StandardCharsets;
import java.nio.file.AccessDeniedException;
import java.nio.file.FileSystemException;
import java.nio.file.Files;
import java.nio.file.NoSuchFileException;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.List;

/** What the user answers, types and keeps in files. */
public final class UserInput {
    /** Room for the line with a secret; longer ones are longer than any secret. */
    private static final int LINE = 4096;
    private static final char REPLACEMENT = '\uFFFD';
    /** More losses than these are counted. */
    private static final int NAMED_LOSSES = 8;

    private UserInput() {}

    /** The file that a name means where the user stands, which is not the VM's current directory. */
    public static File file(String name) {
        File file = new File(name);
        String directory = System.getProperty("hba.directory");
        return (file.isAbsolute() || directory == null ? file : new File(directory, name)).getAbsoluteFile();
    }

    /** Refuses arguments that the VM could not decode: it has put replacement characters into them. */
    static void requireText(String[] arguments) throws IOException {
        for (String argument : arguments) {
            if (argument.indexOf(REPLACEMENT) >= 0) {
                byte[] bytes = Files.readAllBytes(Path.of("/proc/self/cmdline"));
                try {
                    StandardCharsets.UTF_8.newDecoder().decode(ByteBuffer.wrap(bytes));
                } catch (CharacterCodingException e) {
                    throw new BadInput("the argument '" + argument + "' is not text in UTF-8");
                }
            }
        }
    }

    /** Asks before something is lost; each loss is a clause behind "this". --yes has been asked for already. */
    static void confirm(List<String> losses) {
        if (losses.isEmpty()) {
            return;
        }
        String all = String.join(";\n  and ", losses.subList(0, Math.min(losses.size(), NAMED_LOSSES)));
        if (losses.size() > NAMED_LOSSES) {
            all += ";\n  and so on, " + (losses.size() - NAMED_LOSSES) + " more";
        }
        Console console = System.console();
        if (console == null) {
            throw new BadInput("this " + all + ". Give --yes to have it done without a question.");
        }
        Terminal.prompt("This " + all + ". Continue? [y/N] ");
        String answer = console.readLine();
        if (answer == null || !answer.trim().equalsIgnoreCase("y") && !answer.trim().equalsIgnoreCase("yes")) {
            throw new OperationFailed("nothing was done");
        }
    }

    /** A secret that the user types without seeing it, twice, in UTF-8. The caller clears it. */
    static byte[] askSecret(String what) {
        Console console = System.console();
        if (console == null) {
            throw new BadInput("no terminal to ask for the " + what + ": use --secret-file FILE, or - for the standard "
                + "input");
        }
        char[] first = console.readPassword("%s: ", what);
        char[] second = console.readPassword("%s again: ", what);
        try {
            if (first == null || second == null || !Arrays.equals(first, second)) {
                throw new BadInput("the two " + what + "s differ; nothing was done");
            }
            ByteBuffer encoded = StandardCharsets.UTF_8.encode(CharBuffer.wrap(first));
            byte[] secret = Arrays.copyOf(encoded.array(), encoded.limit());
            Arrays.fill(encoded.array(), (byte) 0);
            return secret;
        } finally {
            clear(first);
            clear(second);
        }
    }

    private static void clear(char[] typed) {
        if (typed != null) {
            Arrays.fill(typed, '\0');
        }
    }

    /** The first line of a file, or of the standard input for "-". The caller clears it. */
    public static byte[] firstLine(String name) {
        byte[] bytes = new byte[LINE];
        // Read without a buffer that would keep a copy.
        try (InputStream in = name.equals("-") ? new FileInputStream(FileDescriptor.in)
                                               : new FileInputStream(checked(file(name)))) {
            int length = in.readNBytes(bytes, 0, LINE);
            int end = 0;
            while (end < length && bytes[end] != '\n') {
                end++;
            }
            return Arrays.copyOf(bytes, end > 0 && bytes[end - 1] == '\r' ? end - 1 : end);
        } catch (IOException e) {
            throw new BadInput(name + " cannot be read: " + reason(e));
        } finally {
            Arrays.fill(bytes, (byte) 0);
        }
    }

    // Files says in a way that reason understands why a file cannot be opened.
    private static File checked(File file) throws IOException {
        if (!file.exists()) {
            throw new NoSuchFileException(file.getPath());
        }
        if (!file.canRead()) {
            throw new AccessDeniedException(file.getPath());
        }
        return file;
    }

    static String reason(IOException e) {
        if (e instanceof NoSuchFileException) {
            return "there is no such file";
        }
        if (e instanceof AccessDeniedException) {
            return "permission denied";
        }
        if (e instanceof FileSystemException failure && failure.getReason() != null) {
            return failure.getReason();
        }
        return e.getMessage();
    }
}
