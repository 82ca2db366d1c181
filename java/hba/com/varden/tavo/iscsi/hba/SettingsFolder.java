package com.varden.tavo.iscsi.hba;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;

/** Where the project's own management libraries keep the settings of their adapters, by the rule of those libraries. */
final class SettingsFolder {
    static final String VARIABLE = "TAVO_ADAPTER_FLASH";
    private static final String NAME = "tavoiscsi";

    /** How the versions of these libraries begin. */
    private static final String OWN = "Tavo ";

    private SettingsFolder() {}

    /** The folder of the library with this version text; null for another's library too. */
    static Path of(String library) throws IOException {
        return library.startsWith(OWN) ? find() : null;
    }

    /** The folder; null when the variable names none, which the libraries refuse. */
    static Path find() throws IOException {
        String named = System.getenv(VARIABLE);
        if (named != null && !named.isEmpty()) {
            Path folder = Path.of(named);
            return folder.isAbsolute() && Files.isDirectory(folder) ? folder.toRealPath() : null;
        }
        // A library in a build tree, below the folder with CMake's cache, keeps them beside itself.
        Path beside = Path.of("libvdsdm.so").toRealPath().getParent();
        if (Files.exists(beside.resolve("../../CMakeCache.txt"))) {
            return beside;
        }
        if (Integer.valueOf(0).equals(Files.getAttribute(Path.of("/proc/self"), "unix:uid"))) {
            return Path.of("/var/lib", NAME);
        }
        String state = System.getenv("XDG_STATE_HOME");
        if (isAbsolute(state)) {
            return Path.of(state, NAME);
        }
        // Java's own user.home heeds the user database alone.
        String home = System.getenv("HOME");
        return Path.of(isAbsolute(home) ? home : System.getProperty("user.home"), ".local/state", NAME);
    }

    private static boolean isAbsolute(String folder) {
        return folder != null && folder.startsWith("/");
    }
}
