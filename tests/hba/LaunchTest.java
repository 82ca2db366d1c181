import static org.junit.jupiter.api.Assumptions.assumeTrue;

import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.util.List;
import java.util.Map;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

/** The launcher from everywhere, and every command when the libraries or the settings are not in order. */
final class LaunchTest extends ToolTest {
    private static final Path BRIDGE = Tool.PREFIX.resolve("lib/libtavoiscsi.so");
    private static final Path LIBRARY = Tool.PREFIX.resolve("lib/vdsdm/libvdsdm.so");

    @Test
    void fromEverywhere() throws IOException {
        Path link = Files.createSymbolicLink(tool.folder.resolve("a link"), tool.launcher);
        tool.launcher = Files.createSymbolicLink(tool.folder.resolve("hba"), link);
        // Relative names count from where the user stands.
        tool.run("export 0 ../all.json").expect(0);
        assertTrue(Files.exists(tool.folder.resolve("all.json")));
        tool.environment.put("HBA_JAVA", "/no/such/java");
        tool.run("version").expect(3).says("/no/such/java", "HBA_JAVA");
        tool.environment.remove("HBA_JAVA");
        tool.environment.put("HBA_BRIDGE", "/no/such/bridge");
        assertTrue(tool.run("--version").expect(0).out().matches("hba \\d+\\.\\d+\\.\\d+\n"));
        tool.environment.remove("HBA_BRIDGE");
        tool.environment.put("HBA_LIBRARY_DIR", "/no/such/folder");
        tool.run("version").expect(3).says("/no/such/folder", "HBA_LIBRARY_DIR");
        // A relative folder counts from where the user stands, too.
        Files.copy(LIBRARY, Files.createDirectory(tool.directory.resolve("mine")).resolve("libvdsdm.so"));
        tool.environment.put("HBA_LIBRARY_DIR", "mine");
        tool.run("version").expect(0);
    }

    /** Text and file names arrive as they were typed, whatever the caller's locale; one of these is not installed. */
    @ParameterizedTest
    @ValueSource(strings = {"LANGUAGE=", "LC_ALL=POSIX", "LC_ALL=xx_XX.ISO-8859-1"})
    void locales(String locale) throws IOException {
        tool.environment.put(locale.split("=")[0], locale.substring(locale.indexOf('=') + 1));
        tool.run("target set 0 7 --iscsi-name=iqn.2026-11.example:seven --alias=Gr\u00f6\u00dfe").expect(0);
        tool.run("target show 0 7").expect(0).shows("Gr\u00f6\u00dfe");
        tool.run("export 0 Gr\u00f6\u00dfe\u4e2d.json").expect(0);
        assertTrue(tool.readFile("Gr\u00f6\u00dfe\u4e2d.json").contains("Gr\u00f6\u00dfe"));
    }

    private void keepsSettingsIn(Path folder) throws IOException {
        assertEquals(folder.toString(), Tool.values(object("version"), "settingsFolder"));
        tool.run("chap set 3 5 --name=five --yes").expect(0);
        assertTrue(Files.exists(folder.resolve("settings.db")), folder::toString);
    }

    /** The folder that is shown is the one that a write goes to, by each rule of the libraries. */
    @Test
    void settingsFolder() throws IOException {
        keepsSettingsIn(tool.flash.toRealPath());
        Path tree = tool.folder.toRealPath();
        Path library = Files.createDirectories(tree.resolve("lib/vdsdm")).resolve("libvdsdm.so");
        Files.copy(LIBRARY, library);
        Path cache = Files.createFile(tree.resolve("CMakeCache.txt"));
        tool.environment.put("TAVO_ADAPTER_FLASH", "");
        tool.environment.put("HBA_LIBRARY_DIR", library.getParent().toString());
        keepsSettingsIn(library.getParent());
        // Outside a build tree, for somebody else than root.
        assumeTrue(tool.execute(null, List.of("unshare", "--map-user=1000", "true")).status() == 0, "no namespaces");
        Files.delete(cache);
        tool.launcher = tool.write("hba", "#!/bin/sh\nexec unshare --map-user=1000 " + tool.launcher + " \"$@\"");
        tool.execute(null, List.of("chmod", "+x", tool.launcher.toString())).expect(0);
        tool.environment.putAll(Map.of("HOME", tree.toString(), "XDG_STATE_HOME", "relative"));
        keepsSettingsIn(tree.resolve(".local/state/tavoiscsi"));
        tool.environment.put("XDG_STATE_HOME", tree.resolve("state").toString());
        keepsSettingsIn(tree.resolve("state/tavoiscsi"));
    }

    /** The lines of the libraries come beside the messages and never into a document. */
    @Test
    void diagnosticLines() {
        Tool.Result failed = tool.run("isns show 3 --json").expect(1);
        assertEquals("", failed.out());
        failed.says("SDGet_iSNSDiscoveryConfig call failed!", "adapter 3");
        tool.run("isns show 3 --debug").expect(1).says("\tat com.varden.tavo.iscsi.hba");
        tool.script("\"$0\" show 0 >/dev/full").expect(1).says("could not be written");
    }

    private static void flip(Path file, String found, String replaced) throws IOException {
        String bytes = Files.readString(file, StandardCharsets.ISO_8859_1);
        assertTrue(bytes.contains(found), found);
        Files.writeString(file, bytes.replace(found, replaced), StandardCharsets.ISO_8859_1);
    }

    private static String width(boolean own) {
        return System.getProperty("sun.arch.data.model").equals("32") == own ? "32-bit" : "64-bit";
    }

    private static String elfHeader(boolean own) {
        return "\177ELF" + (width(own).equals("32-bit") ? '\1' : '\2');
    }

    @Test
    void libraryMissing() throws IOException {
        Path nowhere = Files.createDirectory(tool.folder.resolve("nowhere"));
        tool.environment.put("HBA_LIBRARY_DIR", nowhere.toString());
        tool.writeSampleFiles();
        for (String command : List.of("adapters", "show 0 --json", "import 0 all.json --yes")) {
            tool.run(command).expect(3)
                .says(nowhere.resolve("libvdsdm.so").toString(), "there is no such file", width(true));
        }
    }

    private void notLoaded(String... says) {
        assertEquals("", tool.run("show 0").expect(3).says(says).out());
    }

    @Test
    void librariesWrong() throws IOException {
        Path library = Files.createDirectory(tool.folder.resolve("libraries")).resolve("libvdsdm.so");
        Path bridge = tool.folder.resolve("bridge.so");
        tool.environment.put("HBA_LIBRARY_DIR", library.getParent().toString());
        Files.copy(LIBRARY, library);
        tool.run("show 0").expect(0);
        tool.environment.put("HBA_BRIDGE", bridge.toString());
        notLoaded(bridge.toString(), "does not exist", "-Dtavo.iscsi.library");
        Files.copy(BRIDGE, bridge);
        flip(library, "\0SDDiagPing\0", "\0SDDiagPong\0");
        notLoaded(library.toString(), "lacks the operation SDDiagPing");
        Files.copy(LIBRARY, library, StandardCopyOption.REPLACE_EXISTING);
        flip(bridge, "ApiWrapper_getiSCSIHBAData\0", "ApiWrapper_getiSCSIHBADatX\0");
        notLoaded("another version", "getiSCSIHBAData");
        for (Path file : List.of(bridge, library)) {
            flip(file, elfHeader(true), elfHeader(false));
            notLoaded(file.toString(), width(false) + " library", width(true) + " Java VM");
            Files.copy(file.equals(bridge) ? BRIDGE : LIBRARY, file, StandardCopyOption.REPLACE_EXISTING);
        }
        Files.writeString(library, "text");
        notLoaded(library.toString(), "not a shared library");
        tool.run("show 0 --debug").expect(3).says("\tat com.varden.tavo.iscsi");
    }

    @Test
    void settingsDamaged() throws IOException {
        tool.run("target set 0 1 --alias=damage0 --yes").expect(0);
        tool.run("target set 1 2 --alias=damage1 --yes").expect(0);
        flip(tool.settingsFile(), "damage", "domage");
        int before = tool.settings();
        for (String command : List.of("target list 0", "target set 0 0 --alias=x", "export 0 x.json")) {
            tool.run(command).expect(1).says("adapter 0");
        }
        assertEquals(before, tool.settings());
        tool.run("show 0").expect(1).says("settings.db is refused", "device database entry 1",
            "0x20000106 ERR_FLASH_DAMAGED");
        assertEquals("", tool.run("show 0 --json").expect(1).out());
        // The others are listed all the same.
        Tool.Result adapters = tool.run("adapters").expect(1).says("adapter 0", "adapter 1").shows("10.22.0.5");
        assertFalse(adapters.out().contains("fd00:20::5"));
    }
}
