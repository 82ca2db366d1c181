import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;
import static org.junit.jupiter.api.Assumptions.assumeTrue;

import com.google.gson.JsonArray;
import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import com.varden.tavo.iscsi.jni.ApiWrapper;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.Target;
import java.io.File;
import java.io.IOException;
import java.net.InetAddress;
import java.net.ServerSocket;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import java.util.TreeMap;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.atomic.AtomicBoolean;
import java.util.concurrent.atomic.AtomicInteger;
import java.util.stream.Collectors;
import java.util.stream.Stream;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;

/** The host adapter from Java through the bridge, with a target daemon on the loopback interface. */
final class HostAdapterTest extends ToolTest {
    private static final String PREFIX = "iqn.2024-01.example:";
    private static final int UNITS = 250;
    private static final int READERS = 8;

    private final List<Process> daemons = new ArrayList<>();
    private int port;

    @BeforeEach
    void startTargets() throws IOException, InterruptedException {
        tool.environment.putAll(Map.of("TAVO_ADAPTER_INTERFACES", "lo",
            "HBA_LIBRARY_DIR", Tool.PREFIX.resolve("lib/vdsdm-host").toString()));
        port = startDaemon("127.0.0.1", "control");
        addTarget("control", 1, "disks");
        addUnit("control", 1, 1, "3T", 512);
        addUnit("control", 1, 2, "1T", 4096);
        addTarget("control", 2, "guarded");
        administer("control", "account new user initiator password initiators-own-secret");
        administer("control", "account bind tid 2 user initiator");
        administer("control", "account new user target password secret-of-the-target");
        administer("control", "account bind tid 2 user target outgoing");
    }

    @AfterEach
    void stopTargets() {
        daemons.forEach(Process::destroyForcibly);
    }

    /** Where a server is that Debian keeps beside the usual programs; none skips the test. */
    private static String server(String name) {
        Path unpacked = Tool.SOURCES.resolve("runtime/servers/usr/sbin").resolve(name);
        List<Path> places = List.of(unpacked, Path.of("/usr/sbin", name));
        assumeTrue(places.stream().anyMatch(Files::isExecutable), name + " is not installed");
        return places.stream().filter(Files::isExecutable).findFirst().orElseThrow().toString();
    }

    /** Starts a process that ends with this one at the latest. */
    private Process start(String control, String... command) throws IOException {
        List<String> words = new ArrayList<>(List.of("setpriv", "--pdeathsig", "KILL"));
        words.addAll(List.of(command));
        ProcessBuilder builder = new ProcessBuilder(words).redirectErrorStream(true)
            .redirectOutput(ProcessBuilder.Redirect.appendTo(tool.folder.resolve("daemons.log").toFile()));
        builder.environment().put("TGT_IPC_SOCKET", tool.folder.resolve(control).toString());
        return builder.start();
    }

    private int startDaemon(String address, String control) throws IOException, InterruptedException {
        int free;
        try (ServerSocket socket = new ServerSocket(0, 1, InetAddress.getByName(address))) {
            free = socket.getLocalPort();
        }
        startDaemon(address, free, control);
        return free;
    }

    private void startDaemon(String address, int onPort, String control) throws IOException, InterruptedException {
        String host = address.contains(":") ? "[" + address + "]" : address;
        daemons.add(start(control, server("tgtd"), "-f", "--iscsi", "portal=" + host + ":" + onPort));
        for (int attempt = 0; tell(control, "system show") != 0; ++attempt) {
            assertTrue(attempt < 500, "tgtd does not start");
            Thread.sleep(10);
        }
    }

    /** Mode and operation for tgtadm, then options and their values. */
    private int tell(String control, String words) throws IOException, InterruptedException {
        String[] parts = words.split(" ");
        List<String> command = new ArrayList<>(
            List.of(server("tgtadm"), "--lld", "iscsi", "--mode", parts[0], "--op", parts[1]));
        for (int part = 2; part < parts.length; part += 2) {
            command.add("--" + parts[part]);
            if (part + 1 < parts.length) {
                command.add(parts[part + 1]);
            }
        }
        return start(control, command.toArray(String[]::new)).waitFor();
    }

    private void administer(String control, String words) throws IOException, InterruptedException {
        assertEquals(0, tell(control, words), words);
    }

    private void addTarget(String control, int number, String name) throws IOException, InterruptedException {
        administer(control, "target new tid " + number + " targetname " + PREFIX + name);
        administer(control, "target bind tid " + number + " initiator-address ALL");
    }

    private void addUnit(String control, int number, int lun, String size, int block)
        throws IOException, InterruptedException {
        Path file = tool.folder.resolve("disk" + number + "." + lun);
        tool.execute(null, List.of("truncate", "-s", size, file.toString())).expect(0);
        administer(control, "logicalunit new tid " + number + " lun " + lun + " backing-store " + file
            + " blocksize " + block);
    }

    /** The ID that a target got. */
    private int idOf(String name) {
        for (JsonElement entry : tool.json("target list 0").getAsJsonArray()) {
            JsonObject target = entry.getAsJsonObject();
            if (target.toString().contains("\"" + PREFIX + name + "\"")) {
                return target.get("targetID").getAsInt();
            }
        }
        throw new AssertionError(name + " is not in the device database");
    }

    private int unitsOf(int target) {
        JsonArray units = tool.json("lun list 0 " + target).getAsJsonObject().getAsJsonArray("LUNs");
        return units.size();
    }

    private void discover(String address, int onPort) {
        tool.run("discover 0 " + address + " --port " + onPort + " --yes");
    }

    @Test
    void discoveryLoginAndDisks() {
        discover("127.0.0.1", port);
        discover("127.0.0.1", port); // finds nothing new
        assertEquals(2, tool.json("target list 0").getAsJsonArray().size());
        int disks = idOf("disks");
        assertEquals(3, unitsOf(disks));
        tool.run("lun show 0 " + disks + " 1").expect(0).shows("4294967295", "512 bytes", "IET");
        tool.run("lun show 0 " + disks + " 2").expect(0).shows("268435455", "4096 bytes");
        tool.run("stats reset 0 --yes").expect(0);
        tool.run("lun list 0 " + disks).expect(0);
        JsonObject counters = tool.json("stats show 0").getAsJsonObject();
        assertTrue(counters.get("iSCSICompleteIOsCount").getAsInt() > 0, counters::toString);
        assertEquals(counters.get("iSCSITxPDUCount"), counters.get("iSCSIRxPDUCount"), counters::toString);
        assertEquals(PingOutcome.of(tool.run("ping 0 127.0.0.1")), PingOutcome.of(tool.run("ping 0 ::1")));
    }

    /** A ping may be forbidden to the user of the test; then it says so. */
    private enum PingOutcome {
        ANSWERED, NOT_SUPPORTED;

        static PingOutcome of(Tool.Result result) {
            if (result.status() == 0) {
                return ANSWERED;
            }
            result.expect(1).says("ERR_NOT_SUPPORTED");
            return NOT_SUPPORTED;
        }
    }

    @Test
    void chapOnBothSides() throws IOException {
        discover("127.0.0.1", port);
        int guarded = idOf("guarded");
        tool.run("lun list 0 " + guarded).expect(1).says("ERR_AUTHENTICATION");
        record Case(String own, String targets, int status) {}
        for (Case tried : List.of(new Case("initiators-own-secret", "secret-of-the-target", 0),
            new Case("a-wrong-secret-here", "secret-of-the-target", 1),
            new Case("initiators-own-secret", "another-wrong-secret", 1))) {
            tool.write("own", tried.own + "\n");
            tool.write("targets", tried.targets + "\n");
            tool.run("chap set 0 1 --name initiator --secret-file own --yes").expect(0);
            tool.run("chap set 0 2 --name target --secret-file targets --yes").expect(0);
            tool.run("chap set 0 1 --link 2 --yes").expect(0);
            tool.run("target set 0 " + guarded + " --chap-index 1 --yes");
            Tool.Result result = tool.run("lun list 0 " + guarded).expect(tried.status);
            assertEquals(tried.status == 1, result.err().contains("ERR_AUTHENTICATION"), result::toString);
        }
    }

    @Test
    void manyUnitsOverIpv6() throws IOException, InterruptedException {
        int six = startDaemon("::1", "six");
        addTarget("six", 1, "many");
        for (int lun = 1; lun <= UNITS; ++lun) {
            administer("six", "logicalunit new tid 1 lun " + lun + " bstype null backing-store /dev/null");
        }
        discover("::1", six);
        assertEquals(UNITS + 1, unitsOf(idOf("many")));
    }

    private static long kernelCounter(String name) throws IOException {
        return Long.parseLong(Files.readString(Path.of("/sys/class/net/lo/statistics", name)).strip());
    }

    /** Others use the interface as well: what is shown lies between what the kernel says before and after. */
    @Test
    void countersAreTheKernels() throws IOException {
        Map<String, String> names = Map.of("MACTxFramesCount", "tx_packets", "MACTxBytesCount", "tx_bytes",
            "MACRxFramesCount", "rx_packets", "MACRxBytesCount", "rx_bytes");
        Map<String, Long> before = new TreeMap<>();
        for (String name : names.values()) {
            before.put(name, kernelCounter(name));
        }
        JsonObject shown = tool.json("stats show 0").getAsJsonObject();
        for (Map.Entry<String, String> name : names.entrySet()) {
            long value = shown.get(name.getKey()).getAsLong();
            long after = kernelCounter(name.getValue());
            assertTrue(before.get(name.getValue()) <= value && value <= after,
                () -> name + ": " + value + " is not from " + before.get(name.getValue()) + " to " + after);
        }
    }

    @Test
    void isnsTellsOfTargets() throws IOException, InterruptedException {
        // The port of an iSNS server is fixed, so the address has to be free.
        long process = ProcessHandle.current().pid();
        String address = "127.98." + process / 250 % 250 + "." + (1 + process % 250);
        String common = "Security = 0\nSourceName = " + PREFIX;
        Files.createDirectory(tool.folder.resolve("database"));
        Path settings = Files.writeString(tool.folder.resolve("server"), common + "server\nDatabase = " + tool.folder
            + "/database\nPIDFile = " + tool.folder + "/pid\nBindAddress = " + address
            + "\nDefaultDiscoveryDomain = 1\nESIMinInterval = 0\n");
        Path client = Files.writeString(tool.folder.resolve("client"),
            common + "administrator\nServerAddress = " + address + "\n");
        tool.run("isns set 0 --enable-isns-discovery-flag=yes --server-ip-address=" + address).expect(0);
        tool.run("isns targets 0").expect(1).says("ERR_UNREACHABLE");
        daemons.add(start("control", server("isnsd"), "-4", "-f", "-c", settings.toString()));
        String administrator = server("isnsadm");
        for (int attempt = 0; start("control", administrator, "-c", client.toString(), "--register", "entity=shelf",
            "target=" + PREFIX + "shelf,alias=top", "portal=10.9.0.1:3261").waitFor() != 0; ++attempt) {
            assertTrue(attempt < 100, "isnsd does not start");
            Thread.sleep(100);
        }
        JsonArray found = tool.json("isns targets 0").getAsJsonArray();
        assertEquals(1, found.size(), found::toString);
        JsonObject target = found.get(0).getAsJsonObject();
        assertEquals(PREFIX + "shelf top 10.9.0.1 3261", Stream.of("iSCSIName", "iSCSIAlias", "IPAddress", "port")
            .map(field -> target.get(field).getAsString()).collect(Collectors.joining(" ")));
    }

    @Test
    void targetsThatFreezeAndDie() throws IOException, InterruptedException {
        discover("127.0.0.1", port);
        int disks = idOf("disks");
        tool.run("target set 0 " + disks + " --task-management-timeout 1 --yes").expect(0);
        signal("STOP");
        tool.run("lun list 0 " + disks).expect(1).says("ERR_TIMEOUT");
        signal("CONT");
        assertEquals(3, unitsOf(disks));
        signal("KILL");
        tool.run("lun list 0 " + disks).expect(1).says("ERR_UNREACHABLE");
        tool.run("log errors 0").expect(0).shows("  1      0 ", "  3      0 ");
    }

    private void signal(String name) throws IOException, InterruptedException {
        String process = Long.toString(daemons.get(0).pid());
        assertEquals(0, new ProcessBuilder("kill", "-" + name, process).start().waitFor());
        if (name.equals("KILL")) {
            daemons.get(0).waitFor();
        }
    }

    /** Two processes at once, each with many threads; meanwhile the target comes and goes. */
    @Test
    void threadsOfTwoProcessesWhileTheTargetComesAndGoes() throws IOException, InterruptedException {
        discover("127.0.0.1", port);
        tool.run("target set 0 " + idOf("disks") + " --task-management-timeout 1 --yes").expect(0);
        List<Process> readers = new ArrayList<>();
        for (int process = 0; process < 2; ++process) {
            List<String> command = List.of(System.getProperty("java.home") + "/bin/java",
                "-Dtavo.iscsi.library=" + Tool.PREFIX.resolve("lib/libtavoiscsi.so"), "-cp",
                System.getProperty("java.class.path"), Readers.class.getName(), Integer.toString(idOf("disks")));
            readers.add(tool.process(command).directory(new File(tool.environment.get("HBA_LIBRARY_DIR")))
                .redirectErrorStream(true)
                .redirectOutput(ProcessBuilder.Redirect.appendTo(tool.folder.resolve("readers.log").toFile()))
                .start());
        }
        Thread.sleep(500);
        signal("STOP");
        Thread.sleep(1500);
        signal("CONT");
        Thread.sleep(500);
        signal("KILL");
        daemons.clear();
        startDaemon("127.0.0.1", port, "control");
        addTarget("control", 1, "disks");
        Thread.sleep(500);
        for (Process process : readers) {
            process.getOutputStream().close(); // enough
            assertTrue(process.waitFor(30, TimeUnit.SECONDS), "the readers do not end");
            assertEquals(0, process.exitValue(), () -> readLog());
        }
    }

    private String readLog() {
        try (Stream<String> lines = Files.lines(tool.folder.resolve("readers.log"))) {
            return lines.filter(line -> !line.startsWith("SD")).toList().toString();
        } catch (IOException e) {
            return e.toString();
        }
    }

    /** Reads with many threads until its input ends. Succeeds when each thread succeeds at the end. */
    static final class Readers {
        private Readers() {}

        public static void main(String[] arguments) throws InterruptedException {
            int target = Integer.parseInt(arguments[0]);
            ApiWrapper api = new ApiWrapper();
            api.initJNINative();
            if (!api.openDevice(0)) {
                throw new IllegalStateException("adapter 0 cannot be opened");
            }
            AtomicBoolean ending = new AtomicBoolean();
            AtomicInteger failed = new AtomicInteger();
            AtomicInteger succeeded = new AtomicInteger();
            List<Thread> threads = Stream.generate(() -> new Thread(() -> {
                while (!ending.get()) {
                    (read(api, target) == 0 ? succeeded : failed).incrementAndGet();
                }
                if (read(api, target) != 0) {
                    System.out.println("a thread does not succeed at the end");
                    System.exit(1);
                }
            })).limit(READERS).toList();
            threads.forEach(Thread::start);
            try {
                while (System.in.read() >= 0) {
                    continue;
                }
            } catch (IOException e) {
                throw new IllegalStateException(e);
            }
            ending.set(true);
            for (Thread thread : threads) {
                thread.join();
            }
            System.out.println(succeeded + " succeeded, " + failed + " failed");
            System.exit(succeeded.get() > 0 && failed.get() > 0 && api.closeDevice(0) ? 0 : 1);
        }

        private static int read(ApiWrapper api, int id) {
            Target target = new Target();
            target.getTargetInfo().setTargetID(id);
            return api.getScsiReportLUNsData(0, new HBA(), target);
        }
    }
}
