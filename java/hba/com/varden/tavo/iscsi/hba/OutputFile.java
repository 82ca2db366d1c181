package com.varden.tavo.iscsi.hba;

import java.io.IOException;
import java.io.OutputStream;
import java.nio.channels.Channels;
import java.nio.channels.FileChannel;
import java.nio.file.Files;
import java.nio.file.LinkOption;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.nio.file.StandardOpenOption;
import java.nio.file.attribute.PosixFileAttributeView;
import java.nio.file.attribute.PosixFilePermission;
import java.nio.file.attribute.PosixFilePermissions;
import java.util.EnumSet;
import java.util.Set;

/**
 * A file that the user names and that is written as a whole or not at all: into a draft beside it, which takes its
 * place when everything is on the disk. A draft does not outlast the command, also when a signal ends it.
 */
public final class OutputFile {
    private static final Set<PosixFilePermission> OWNER_ONLY = PosixFilePermissions.fromString("rw-------");

    /** What is written. */
    public interface Contents {
        void writeTo(OutputStream out) throws IOException;
    }

    private final Path path;
    private final Path folder;
    private Path draft;
    private boolean over;

    /** @throws BadInput when no file can stand under this name */
    public OutputFile(String name) {
        path = UserInput.file(name).toPath();
        folder = path.getParent();
        if (Files.exists(path, LinkOption.NOFOLLOW_LINKS) && !Files.isRegularFile(path, LinkOption.NOFOLLOW_LINKS)) {
            throw new BadInput(path + " is not a regular file, and nothing else is written to. Use - for the standard "
                + "output");
        }
        if (!Files.isDirectory(folder)) {
            throw new BadInput(path + " cannot be written: there is no folder " + folder);
        }
    }

    Path path() {
        return path;
    }

    boolean exists() {
        return Files.exists(path, LinkOption.NOFOLLOW_LINKS);
    }

    /** Writes the file, for its owner alone when it holds secrets. Returns when it would outlast a power cut. */
    public void replace(boolean secret, Contents contents) {
        Runtime.getRuntime().addShutdownHook(new Thread(this::giveUp));
        try {
            try (FileChannel channel = createDraft(); OutputStream out = Channels.newOutputStream(channel)) {
                contents.writeTo(out);
                out.flush();
                Files.getFileAttributeView(draft, PosixFileAttributeView.class, LinkOption.NOFOLLOW_LINKS)
                    .setPermissions(secret ? OWNER_ONLY : permissions());
                channel.force(true);
            }
            takePlace();
            try (FileChannel channel = FileChannel.open(folder, StandardOpenOption.READ)) {
                channel.force(true);
            }
        } catch (IOException e) {
            throw new OperationFailed(path + " cannot be written: " + UserInput.reason(e), e);
        } finally {
            giveUp();
        }
    }

    // Those of the file that is replaced, or those that the umask leaves.
    private Set<PosixFilePermission> permissions() throws IOException {
        if (exists()) {
            return Files.getPosixFilePermissions(path, LinkOption.NOFOLLOW_LINKS);
        }
        int umask = 077;
        for (String line : Files.readAllLines(Path.of("/proc/self/status"))) {
            if (line.startsWith("Umask:")) {
                umask = Integer.parseInt(line.substring("Umask:".length()).trim(), 8);
            }
        }
        Set<PosixFilePermission> permissions = EnumSet.noneOf(PosixFilePermission.class);
        for (PosixFilePermission permission : PosixFilePermissions.fromString("rw-rw-rw-")) {
            // From OWNER_READ, 0400, to OTHERS_EXECUTE, 0001.
            if ((umask & 0400 >> permission.ordinal()) == 0) {
                permissions.add(permission);
            }
        }
        return permissions;
    }

    private synchronized FileChannel createDraft() throws IOException {
        requireGoingOn();
        Path created = folder.resolve("." + path.getFileName() + "." + Long.toHexString(System.nanoTime()) + ".new");
        FileChannel channel = FileChannel.open(created, Set.of(StandardOpenOption.CREATE_NEW,
            StandardOpenOption.WRITE), PosixFilePermissions.asFileAttribute(OWNER_ONLY));
        draft = created;
        return channel;
    }

    private synchronized void takePlace() throws IOException {
        requireGoingOn();
        Files.move(draft, path, StandardCopyOption.ATOMIC_MOVE);
        draft = null;
    }

    // A signal ends the VM while the command goes on.
    private void requireGoingOn() throws IOException {
        if (over) {
            throw new IOException("the command was interrupted");
        }
    }

    private synchronized void giveUp() {
        over = true;
        if (draft != null) {
            try {
                Files.deleteIfExists(draft);
            } catch (IOException e) {
                Terminal.message("the unfinished file " + draft + " cannot be removed: " + UserInput.reason(e));
            }
            draft = null;
        }
    }
}
