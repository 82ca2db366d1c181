import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.Map;
import java.util.TreeMap;

/** The launcher from everywhere, and every command when the libraries or the settings are not in order. */
public final class LaunchTest {
    private static final Path BRIDGE = Tool.PREFIX.resolve("lib/libtavoiscsi.so");
    private static final Path LIBRARY = Tool.PREFIX.resolve("lib/vdsdm/libvdsdm.so");
    private static final int ELF_CLASS = 4;

    private final Tool tool = new Tool();
    private final Path libraries = Files.createDirectory(tool.folder.resolve("libraries"));

    public LaunchTest() throws IOException {}

    public void fromEverywhere() throws IOException {
        Path link = Files.createSymbolicLink(tool.folder.resolve("a link"), tool.launcher);
        tool.launcher = Files.createSymbolicLink(tool.folder.resolve("hba"), link);
        // Relative names count from where the user stands; names and contents may hold any character.
        tool.run(null, "crash", "0", "r\u00e9cord \u4e2d.txt").expect(0);
        Check.that("the file stands where the user stands",
            Files.exists(tool.directory.resolve("r\u00e9cord \u4e2d.txt")));
        tool.run(null, "export", "0", "../all.json").expect(0);
        Check.that("a relative name with a step up", Files.exists(tool.folder.resolve("all.json")));
        tool.run("import 0 ../all.json --compare").expect(0);
        tool.write("image.bin", "an image");
        tool.run("firmware update 0 " + tool.directory.getParent().relativize(tool.directory).resolve("image.bin")
            .getFileName() + " --yes").expect(0);
        tool.environment.put("HBA_JAVA", "/no/such/java");
        tool.run("version").expect(3).says("/no/such/java", "HBA_JAVA");
        tool.environment.remove("HBA_JAVA");
        tool.environment.put("HBA_LIBRARY_DIR", "/no/such/folder");
        tool.run("version").expect(3).says("/no/such/folder", "HBA_LIBRARY_DIR");
        // A relative folder counts from where the user stands, too.
        Files.copy(LIBRARY, Files.createDirectory(tool.directory.resolve("mine")).resolve("libvdsdm.so"));
        tool.environment.put("HBA_LIBRARY_DIR", "mine");
        tool.run("version").expect(0);
    }

    /** Without the launcher the streams are as they are everywhere. */
    public void plainJar() throws IOException {
        Path vm = Path.of(System.getProperty("java.home"), "bin/java");
        List<String> command = List.of(vm.toString(), "-Dtavo.iscsi.library=" + BRIDGE, "-jar",
            Tool.PREFIX.resolve("share/java/hba.jar").toString(), "version");
        tool.directory = LIBRARY.getParent();
        tool.execute(null, command).expect(0).shows("management library Tavo");
        tool.directory = tool.folder;
        tool.execute(null, command).expect(3).says(tool.folder.resolve("libvdsdm.so").toString());
    }

    /** The lines of the libraries come beside the messages and never into a document. */
    public void diagnosticLines() throws IOException {
        tool.run("adapters --json").json();
        Tool.Result failed = tool.run("isns show 3 --json").expect(1);
        Check.equal("the document", "", failed.out);
        failed.says("SDGet_iSNSDiscoveryConfig call failed!", "hba: adapter 3");
        Tool.Result debug = tool.run("isns show 3 --debug").expect(1);
        debug.says("\tat com.varden.tavo.iscsi.hba");
        Tool.Result full = tool.execute(null, List.of("/bin/sh", "-c", tool.launcher + " show 0 > /dev/full"));
        full.expect(1).says("could not be written");
    }

    private static void flip(Path file, String found, String replaced) throws IOException {
        String bytes = new String(Files.readAllBytes(file), StandardCharsets.ISO_8859_1);
        Check.that(file + " holds " + found, bytes.contains(found));
        Files.write(file, bytes.replace(found, replaced).getBytes(StandardCharsets.ISO_8859_1));
    }

    private static void flipWidth(Path file) throws IOException {
        byte[] bytes = Files.readAllBytes(file);
        bytes[ELF_CLASS] = (byte) (3 - bytes[ELF_CLASS]);
        Files.write(file, bytes);
    }

    private static String width(boolean own) {
        boolean is32 = System.getProperty("sun.arch.data.model").equals("32");
        return is32 == own ? "32-bit" : "64-bit";
    }

    private static Map<String, String> commands() throws IOException {
        Map<String, String> commands = new TreeMap<>();
        Tool.methods().values().forEach(command -> commands.put(command, command));
        commands.put("export 0", "");
        commands.put("import 0 all.json --yes", "");
        commands.put("target show 0 1", "");
        commands.put("chap clear 0 1 --yes", "");
        return commands;
    }

    private void eachCommand(String... says) throws IOException {
        tool.writeSampleFiles();
        tool.write("all.json", "{\"format\": \"hba settings\", \"firmware\": {\"alias\": \"a\"}}");
        int tried = 0;
        for (String command : commands().keySet()) {
            Tool.Result result = tool.run(command).expect(3).says(says);
            Check.that("no stack trace from '" + command + "':\n" + result.err, !result.err.contains("\tat "));
            Check.that("one sentence of the tool's own:\n" + result.err,
                result.err.lines().filter(line -> line.startsWith("hba: ")).count() == 1);
            tried++;
        }
        Check.that("commands were tried", tried > 30);
    }

    private void loneCommand(String... says) {
        Tool.Result result = tool.run("show 0").expect(3).says(says);
        Check.equal("output", "", result.out);
        Check.that("no stack trace:\n" + result.err, !result.err.contains("\tat "));
        tool.run("show 0 --debug").expect(3).says("\tat com.varden.tavo.iscsi");
    }

    public void libraryMissing() throws IOException {
        tool.environment.put("HBA_LIBRARY_DIR", libraries.toString());
        eachCommand(libraries.resolve("libvdsdm.so").toString(), "there is no such file", width(true));
    }

    public void librariesWrong() throws IOException {
        Path library = libraries.resolve("libvdsdm.so");
        tool.environment.put("HBA_LIBRARY_DIR", libraries.toString());
        Files.copy(LIBRARY, library);
        tool.run("show 0").expect(0);
        flip(library, "\0SDDiagPing\0", "\0SDDiagPong\0");
        loneCommand(library.toString(), "lacks the operation SDDiagPing");
        Files.delete(library);
        Files.copy(LIBRARY, library);
        flipWidth(library);
        loneCommand(library.toString(), width(false) + " library", width(true) + " Java VM");
        Files.writeString(library, "text");
        loneCommand(library.toString(), "not a shared library");
        Path bridge = tool.folder.resolve("bridge.so");
        tool.environment.put("HBA_BRIDGE", bridge.toString());
        loneCommand(bridge.toString(), "does not exist", "-Dtavo.iscsi.library");
        Files.writeString(bridge, "text");
        loneCommand(bridge.toString(), "not a shared library");
        Files.delete(bridge);
        Files.copy(BRIDGE, bridge);
        flipWidth(bridge);
        loneCommand(bridge.toString(), width(false) + " library", width(true) + " Java VM");
        // A bridge that lacks an operation.
        Files.delete(bridge);
        Files.copy(BRIDGE, bridge);
        Files.copy(LIBRARY, library, java.nio.file.StandardCopyOption.REPLACE_EXISTING);
        flip(bridge, "ApiWrapper_getiSCSIHBAData\0", "ApiWrapper_getiSCSIHBADatX\0");
        loneCommand("another version", "getiSCSIHBAData");
    }

    public void flashDamaged() throws IOException {
        tool.run("target set 0 1 --alias=x").expect(0);
        tool.run("target set 1 2 --alias=x").expect(0);
        for (String name : List.of("adapter0.flash", "adapter1.flash")) {
            byte[] bytes = Files.readAllBytes(tool.flash.resolve(name));
            bytes[bytes.length / 2] ^= 1;
            Files.write(tool.flash.resolve(name), bytes);
        }
        tool.writeSampleFiles();
        tool.write("all.json", "{\"format\": \"hba settings\", \"firmware\": {\"alias\": \"a\"}}");
        String before = tool.settings();
        for (String command : commands().keySet()) {
            // Reading the version, and what never looks at the settings, works all the same.
            Tool.Result result = tool.run(command);
            Check.that("no stack trace from '" + command + "':\n" + result.err, !result.err.contains("\tat "));
            Check.that("status of '" + command + "': " + result.status, result.status <= 1);
            if (result.status == 1) {
                result.says("hba: adapter ");
            }
        }
        Check.equal("the damaged files", before, tool.settings());
        tool.run("show 0").expect(1).says("adapter0.flash is refused", "0x20000106 ERR_FLASH_DAMAGED");
        Check.equal("no line of the library in a document", "", tool.run("show 0 --json").expect(1).out);
        // The others are listed all the same.
        Tool.Result adapters = tool.run("adapters").expect(1).says("adapter 0", "adapter 1").shows("10.22.0.5");
        Check.that("adapter 1 is not listed", !adapters.out.contains("fd00:20::5"));
    }
}
