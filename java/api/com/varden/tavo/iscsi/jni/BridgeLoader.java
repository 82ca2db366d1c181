package com.varden.tavo.iscsi.jni;

import com.varden.tavo.iscsi.jni.BridgeNotLoadedException.Reason;
import java.io.File;
import java.io.FileInputStream;
import java.io.IOException;

/** Loads the bridge, and finds out why when it cannot be loaded. */
final class BridgeLoader {
    /** System property that names the bridge's file; without it the folders of java.library.path are searched. */
    static final String FILE_PROPERTY = "tavo.iscsi.library";

    private static final String BRIDGE = "libtavoiscsi.so";
    private static final String MANAGEMENT_LIBRARY = "libvdsdm.so";
    private static final int NO_ELF_FILE = 0;
    private static final int ELF_HEADER_START = 5;

    private static boolean loaded;

    private BridgeLoader() {}

    static synchronized void load() {
        if (loaded) {
            return;
        }
        File bridge = find();
        int vmBits = vmBits();
        if (bridge == null || !bridge.isFile()) {
            throw missing(bridge, vmBits);
        }
        int bridgeBits = elfBits(bridge);
        if (bridgeBits != vmBits) {
            throw wrongBridge(bridge, bridgeBits, vmBits);
        }
        try {
            System.load(bridge.getPath());
        } catch (UnsatisfiedLinkError e) {
            throw explain(bridge, vmBits, e);
        }
        loaded = true;
    }

    // The named file as an absolute one, the first file of the bridge's name, or null.
    private static File find() {
        String named = System.getProperty(FILE_PROPERTY);
        if (named != null) {
            return new File(named).getAbsoluteFile();
        }
        for (String folder : System.getProperty("java.library.path", "").split(File.pathSeparator)) {
            File file = new File(folder, BRIDGE);
            if (file.isFile()) {
                return file.getAbsoluteFile();
            }
        }
        return null;
    }

    private static BridgeNotLoadedException missing(File bridge, int vmBits) {
        String tried = bridge != null
            ? "The file " + bridge + " does not exist."
            : "No file " + BRIDGE + " stands in the folders of java.library.path: "
                + System.getProperty("java.library.path", "") + ".";
        return new BridgeNotLoadedException(Reason.BRIDGE_MISSING, "The iSCSI bridge cannot be loaded. " + tried
            + " Name the file with -D" + FILE_PROPERTY + "=..., or its folder with -Djava.library.path=...; this is a "
            + vmBits + "-bit Java VM and needs the " + vmBits + "-bit file.", null);
    }

    private static String start(File bridge, int vmBits) {
        return "The iSCSI bridge " + bridge + " cannot be loaded into this " + vmBits + "-bit Java VM. ";
    }

    // Told before the VM tries the file: it would repair the process's stack guards for a file of any kind.
    private static BridgeNotLoadedException wrongBridge(File bridge, int bridgeBits, int vmBits) {
        if (bridgeBits == NO_ELF_FILE) {
            return new BridgeNotLoadedException(Reason.OTHER, start(bridge, vmBits)
                + "The file is not a shared library, or cannot be read. Put the right one in its place.", null);
        }
        return new BridgeNotLoadedException(Reason.BRIDGE_WIDTH, start(bridge, vmBits) + "The file is a " + bridgeBits
            + "-bit library. Start a " + bridgeBits + "-bit Java VM, or use the " + vmBits + "-bit file.", null);
    }

    private static BridgeNotLoadedException explain(File bridge, int vmBits, UnsatisfiedLinkError error) {
        String start = start(bridge, vmBits);
        File library = new File(MANAGEMENT_LIBRARY).getAbsoluteFile();
        String needs = "It needs the management library " + library + ", in the current folder of the Java VM";
        if (!library.isFile()) {
            return new BridgeNotLoadedException(Reason.MANAGEMENT_LIBRARY_MISSING, start + needs
                + ", and there is no such file. Start the Java VM in the folder that holds " + MANAGEMENT_LIBRARY
                + ".", error);
        }
        int libraryBits = elfBits(library);
        if (libraryBits == NO_ELF_FILE) {
            return new BridgeNotLoadedException(Reason.OTHER, start + needs
                + ", and that file is not a shared library, or cannot be read. Put the right one in its place.", error);
        }
        if (libraryBits != vmBits) {
            return new BridgeNotLoadedException(Reason.MANAGEMENT_LIBRARY_WIDTH, start + needs + ", and that file is a "
                + libraryBits + "-bit library. Put the " + vmBits + "-bit one in its place.", error);
        }
        String symbol = missingSymbol(error);
        if (symbol != null) {
            return new BridgeNotLoadedException(Reason.SYMBOL_MISSING, start + needs
                + ", and that file lacks the operation " + symbol + ". Put a version that has it in its place.", error);
        }
        return new BridgeNotLoadedException(Reason.OTHER, start + "The dynamic loader says: " + error.getMessage(),
            error);
    }

    // The dynamic loader's text ends with "undefined symbol: NAME", sometimes followed by a comma and more.
    private static String missingSymbol(UnsatisfiedLinkError error) {
        String marker = "undefined symbol: ";
        String text = String.valueOf(error.getMessage());
        int at = text.indexOf(marker);
        if (at < 0) {
            return null;
        }
        int start = at + marker.length();
        int end = start;
        while (end < text.length() && (Character.isLetterOrDigit(text.charAt(end)) || text.charAt(end) == '_')) {
            end++;
        }
        return text.substring(start, end);
    }

    private static int vmBits() {
        String model = System.getProperty("sun.arch.data.model");
        if (model != null) {
            return model.equals("32") ? 32 : 64;
        }
        return System.getProperty("os.arch", "").endsWith("64") ? 64 : 32;
    }

    // The width that the file's header tells, or NO_ELF_FILE.
    private static int elfBits(File file) {
        byte[] header = new byte[ELF_HEADER_START];
        try (FileInputStream in = new FileInputStream(file)) {
            if (in.readNBytes(header, 0, header.length) < header.length || header[0] != 0x7F || header[1] != 'E'
                || header[2] != 'L' || header[3] != 'F') {
                return NO_ELF_FILE;
            }
        } catch (IOException e) {
            return NO_ELF_FILE;
        }
        return header[4] == 1 ? 32 : 64;
    }
}
