package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.codes.Status;
import java.io.IOException;
import java.nio.channels.FileChannel;
import java.nio.channels.FileLock;
import java.nio.file.AccessDeniedException;
import java.nio.file.FileAlreadyExistsException;
import java.nio.file.FileSystemException;
import java.nio.file.Files;
import java.nio.file.LinkOption;
import java.nio.file.NoSuchFileException;
import java.nio.file.OpenOption;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;
import java.nio.file.attribute.PosixFilePermission;
import java.nio.file.attribute.PosixFilePermissions;
import java.util.List;
import java.util.Map;
import java.util.Set;

/**
 * The lock that a writer holds from reading an adapter's settings to reading them back. There is one for each adapter
 * over all processes and users: a file in the folder of the settings or, with a library whose folder is not known, in
 * the machine's folder for locks. It is never removed, since a waiting process may have it open, and anybody may open
 * it, since it holds nothing.
 */
final class AdapterLock implements AutoCloseable {
    private static final long PATIENCE = 5_000_000_000L;
    private static final long PAUSE_MILLIS = 20;
    /** The first of these that belongs to root and where everybody may make files but nobody remove another's. */
    private static final List<String> SHARED_FOLDERS = List.of("/run/lock", "/var/lock", "/tmp");
    private static final int STICKY_FOR_ALL = 01777;
    private static final Set<PosixFilePermission> OWNER_ONLY = PosixFilePermissions.fromString("rwx------");
    private static final Set<OpenOption> EXISTING =
        Set.of(StandardOpenOption.READ, StandardOpenOption.WRITE, LinkOption.NOFOLLOW_LINKS);

    private final FileChannel channel;

    private AdapterLock(FileChannel channel) {
        this.channel = channel;
    }

    /** Waits up to five seconds for the lock; names the process that holds it when that was not enough. */
    static AdapterLock take(Adapter adapter) {
        try {
            Path file = file(adapter);
            long end = System.nanoTime() + PATIENCE;
            FileChannel channel = open(file, end);
            FileLock lock = channel.tryLock();
            while (lock == null && System.nanoTime() < end) {
                Thread.sleep(PAUSE_MILLIS);
                lock = channel.tryLock();
            }
            if (lock == null) {
                channel.close();
                throw new OperationFailed("adapter " + adapter.dev + " is being changed by " + holder(file)
                    + "; nothing was written. Try again when that has ended.", Status.ERR_BUSY.code());
            }
            return new AdapterLock(channel);
        } catch (IOException e) {
            String file = e instanceof FileSystemException failure ? " " + failure.getFile() : "";
            throw new OperationFailed("the lock" + file + " of adapter " + adapter.dev + " cannot be taken: "
                + UserInput.reason(e) + "; nothing was written", e);
        } catch (InterruptedException e) {
            throw new OperationFailed("interrupted; nothing was written", e);
        }
    }

    private static Path file(Adapter adapter) throws IOException {
        Path settings = SettingsFolder.of(adapter.api.getVersioniSCSI());
        if (settings != null) {
            if (!Files.isDirectory(settings)) {
                Files.createDirectories(settings, PosixFilePermissions.asFileAttribute(OWNER_ONLY));
            }
            return settings.resolve("adapter" + adapter.dev + ".hba.lock");
        }
        for (String folder : SHARED_FOLDERS) {
            if (isShared(Path.of(folder))) {
                return Path.of(folder, "tavoiscsi-adapter" + adapter.dev + ".lock");
            }
        }
        throw new OperationFailed("there is no folder for lock files: none of " + SHARED_FOLDERS
            + " belongs to root and is open to everybody with the sticky bit; nothing was written");
    }

    private static boolean isShared(Path folder) {
        try {
            Map<String, Object> attributes = Files.readAttributes(folder, "unix:mode,uid");
            return ((Integer) attributes.get("mode") & STICKY_FOR_ALL) == STICKY_FOR_ALL
                && (Integer) attributes.get("uid") == 0;
        } catch (IOException e) {
            return false;
        }
    }

    // Never follows a link, and never waits for the other end of a pipe that somebody put there.
    private static FileChannel open(Path file, long end) throws IOException, InterruptedException {
        while (true) {
            try {
                FileChannel channel = FileChannel.open(file, EXISTING);
                if (Files.isRegularFile(file, LinkOption.NOFOLLOW_LINKS)) {
                    return channel;
                }
                channel.close();
                throw new FileSystemException(file.toString(), null, "it is not a regular file");
            } catch (NoSuchFileException e) {
                create(file);
            } catch (AccessDeniedException e) {
                // Another user has just made it and opens it to everybody in a moment.
                if (System.nanoTime() > end) {
                    throw e;
                }
                Thread.sleep(PAUSE_MILLIS);
            } catch (FileSystemException e) {
                throw !Files.isSymbolicLink(file) ? e
                    : new FileSystemException(file.toString(), null, "it is a symbolic link");
            }
        }
    }

    private static void create(Path file) throws IOException {
        try {
            Files.createFile(file);
            // Whatever the umask is.
            Files.setPosixFilePermissions(file, PosixFilePermissions.fromString("rw-rw-rw-"));
        } catch (FileAlreadyExistsException e) {
            // Another process was faster.
        }
    }

    // The kernel lists the holders of locks by the numbers of the files.
    private static String holder(Path file) {
        try {
            String inode = ":" + Files.getAttribute(file, "unix:ino");
            for (String line : Files.readAllLines(Path.of("/proc/locks"))) {
                String[] words = line.trim().split(" +");
                if (words.length > 5 && words[5].endsWith(inode)) {
                    return "process " + words[4] + commandOf(words[4]);
                }
            }
        } catch (IOException e) {
            // The process is then not named.
        }
        return "another process";
    }

    private static String commandOf(String process) throws IOException {
        String[] words = Files.readString(Path.of("/proc", process, "cmdline")).split("\0");
        StringBuilder command = new StringBuilder();
        for (String word : words) {
            if (word.endsWith(".hba.Hba")) {
                command.setLength(0);
                command.append("hba");
            } else {
                command.append(command.isEmpty() ? "" : " ").append(word);
            }
        }
        return " (" + TerminalText.of(command) + ")";
    }

    @Override
    public void close() {
        try {
            channel.close();
        } catch (IOException e) {
            // The lock goes with the process at the latest.
        }
    }
}
