import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;
import static org.junit.jupiter.api.Assumptions.assumeTrue;

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
import java.util.stream.Stream;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;

/** The host adapter from Java through the bridge, with target daemons on the loopback interface. */
final class HostAdapterTest extends ToolTest {
    private static final String PREFIX = "iqn.2024-01.example:";
    private static final String SERVERS = Tool.SOURCES.resolve("runtime/servers/usr/sbin") + ":/usr/sbin:";
    private static final int UNITS = 250;
    private static final int READERS = 8;
    private static final int ROUNDS = 11; // of about three seconds

    private final List<Process> daemons = new ArrayList<>();
    private int port;

    @BeforeEach
    void startTargets() throws IOException, InterruptedException {
        tool.environment.put("TAVO_ADAPTER_INTERFACES", "lo");
        tool.environment.put("HBA_LIBRARY_DIR", Tool.PREFIX.resolve("lib/vdsdm-host").toString());
        assumeTrue(shell("command -v tgtd").waitFor() == 0, "tgtd is not installed");
        port = freePort("127.0.0.1");
        startDaemon("127.0.0.1:" + port);
        administer("truncate -s 3T disk1; truncate -s 1T disk2");
        addTarget(1, "disks");
        administer("tgtadm --lld iscsi --mode logicalunit --op new --tid 1 --lun 1 --backing-store $PWD/disk1",
            "tgtadm --lld iscsi --mode logicalunit --op new --tid 1 --lun 2 --backing-store $PWD/disk2 "
            + "--blocksize 4096");
    }

    @AfterEach
    void stopTargets() {
        daemons.forEach(Process::destroyForcibly);
    }

    private Process shell(String command) throws IOException {
        ProcessBuilder builder = new ProcessBuilder("sh", "-c", command).directory(tool.folder.toFile())
            .redirectErrorStream(true)
            .redirectOutput(ProcessBuilder.Redirect.appendTo(tool.folder.resolve("log").toFile()));
        builder.environment().merge("PATH", SERVERS, (path, servers) -> servers + path);
        builder.environment().put("TGT_IPC_SOCKET", tool.folder.resolve("control" + daemons.size()).toString());
        return builder.start();
    }

    private void administer(String... commands) throws IOException, InterruptedException {
        assertEquals(0, shell(String.join(" && ", commands)).waitFor(), () -> List.of(commands).toString());
    }

    private static int freePort(String address) throws IOException {
        try (ServerSocket socket = new ServerSocket(0, 1, InetAddress.getByName(address))) {
            return socket.getLocalPort();
        }
    }

    /** Starts a daemon that ends with this process at the latest; what follows is said to it. */
    private void startDaemon(String portal) throws IOException, InterruptedException {
        String control = "TGT_IPC_SOCKET=control" + (daemons.size() + 1);
        daemons.add(shell(control + " exec setpriv --pdeathsig KILL tgtd -f --iscsi portal=" + portal));
        administer("until tgtadm --lld iscsi --mode system --op show; do sleep 0.02; done");
    }

    private void addTarget(int number, String name) throws IOException, InterruptedException {
        administer("tgtadm --lld iscsi --mode target --op new --tid " + number + " --targetname " + PREFIX + name,
            "tgtadm --lld iscsi --mode target --op bind --tid " + number + " --initiator-address ALL");
    }

    /** Discovers, and answers the ID that a target got. */
    private int discover(String address, int onPort, String name) {
        tool.run("discover 0 " + address + " --port " + onPort + " --yes");
        for (JsonElement entry : tool.json("target list 0").getAsJsonArray()) {
            JsonObject target = entry.getAsJsonObject();
            if (target.toString().contains("\"" + PREFIX + name + "\"")) {
                return target.get("targetID").getAsInt();
            }
        }
        throw new AssertionError(name + " is not in the device database");
    }

    private int unitsOf(int target) {
        return tool.json("lun list 0 " + target).getAsJsonObject().getAsJsonArray("LUNs").size();
    }

    @Test
    void discoveryDisksAndCounters() {
        int disks = discover("127.0.0.1", port, "disks");
        assertEquals(disks, discover("127.0.0.1", port, "disks"));
        assertEquals(1, tool.json("target list 0").getAsJsonArray().size(), "found twice");
        tool.run("stats reset 0 --yes").expect(0);
        assertEquals(3, unitsOf(disks));
        JsonObject counters = tool.json("stats show 0").getAsJsonObject();
        assertTrue(counters.get("iSCSICompleteIOsCount").getAsInt() > 0, counters::toString);
        // A target may send its data and its response in one PDU or in two.
        assertTrue(counters.get("iSCSITxPDUCount").getAsInt() <= counters.get("iSCSIRxPDUCount").getAsInt(),
            counters::toString);
        tool.run("lun show 0 " + disks + " 1").expect(0).shows("4294967295", "512 bytes", "IET");
        Tool.Result ping = tool.run("ping 0 127.0.0.1");
        assertTrue(ping.status() == 0 || ping.err().contains("ERR_NOT_SUPPORTED"), ping::toString);
        tool.run("lun show 0 " + disks + " 2").expect(0).shows("268435455", "4096 bytes");
    }

    @Test
    void chapOnBothSides() throws IOException, InterruptedException {
        addTarget(2, "guarded");
        administer("tgtadm --lld iscsi --mode account --op new --user initiator --password initiators-own-secret",
            "tgtadm --lld iscsi --mode account --op bind --tid 2 --user initiator",
            "tgtadm --lld iscsi --mode account --op new --user target --password secret-of-the-target",
            "tgtadm --lld iscsi --mode account --op bind --tid 2 --user target --outgoing");
        int guarded = discover("127.0.0.1", port, "guarded");
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
            tool.run("target remove 0 " + guarded + " --yes").expect(0);
            tool.run("target add 0 " + PREFIX + "guarded 127.0.0.1 --port " + port + " --chap-index 1 --target-id "
                + guarded).expect(0).shows(tried.status == 0 ? "It logged in." : "It did not log in: ");
            tool.run("target login 0 " + guarded).expect(tried.status);
            Tool.Result result = tool.run("lun list 0 " + guarded).expect(tried.status);
            assertEquals(tried.status == 1, result.err().contains("ERR_AUTHENTICATION"), result::toString);
        }
    }

    @Test
    void manyUnitsAndTargetsOverIpv6() throws IOException, InterruptedException {
        int six = freePort("::1");
        startDaemon("[::1]:" + six);
        addTarget(1, "many");
        administer("for n in $(seq " + UNITS + "); do tgtadm --lld iscsi --mode logicalunit --op new --tid 1 --lun $n "
            + "--bstype null --backing-store /dev/null || exit 1; done");
        assertEquals(UNITS + 1, unitsOf(discover("::1", six, "many")));
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
        Files.writeString(tool.folder.resolve("server"), common + "server\nDatabase = " + tool.folder
            + "/database\nPIDFile = " + tool.folder + "/pid\nBindAddress = " + address
            + "\nDefaultDiscoveryDomain = 1\nESIMinInterval = 0\n");
        Files.writeString(tool.folder.resolve("client"), common + "administrator\nServerAddress = " + address + "\n");
        tool.run("isns set 0 --enable-isns-discovery-flag=yes --server-ip-address=" + address).expect(0);
        tool.run("isns targets 0").expect(1).says("ERR_UNREACHABLE");
        daemons.add(shell("exec setpriv --pdeathsig KILL isnsd -4 -f -c server"));
        administer("disks=$(for n in $(seq 40); do echo target=" + PREFIX + "shelf$n,alias=unit$n; done); "
            + "n=0; until isnsadm -c client --register entity=shelf $disks portal=10.9.0.1:3261 portal=[fd09::1]:3262; "
            + "do n=$((n + 1)); [ $n -lt 100 ] || exit 1; sleep 0.1; done");
        JsonElement found = tool.json("isns targets 0");
        assertEquals(40, found.getAsJsonArray().size());
        assertTrue(Stream.of(PREFIX + "shelf40\"", "\"unit1\"", "10.9.0.1", "3261")
            .allMatch(found.toString()::contains), found::toString);
    }

    @Test
    void targetsThatFreezeAndDie() throws IOException, InterruptedException {
        int disks = discover("127.0.0.1", port, "disks");
        tool.run("target set 0 " + disks + " --task-management-timeout 1 --yes").expect(0);
        signal("STOP");
        tool.run("lun list 0 " + disks).expect(1).says("ERR_TIMEOUT");
        signal("CONT");
        assertEquals(3, unitsOf(disks));
        signal("KILL");
        tool.run("lun list 0 " + disks).expect(1).says("ERR_UNREACHABLE");
        tool.run("log errors 0").expect(0).shows("no answer (1)", "timeout (3)");
    }

    private void signal(String name) throws IOException, InterruptedException {
        administer("kill -" + name + " " + daemons.get(0).pid());
    }

    /** Two processes at once, each with many threads; for half a minute the target comes and goes. */
    @Test
    void threadsOfTwoProcessesWhileTheTargetComesAndGoes() throws IOException, InterruptedException {
        int disks = discover("127.0.0.1", port, "disks");
        tool.run("target set 0 " + disks + " --task-management-timeout 1 --yes").expect(0);
        Path log = tool.folder.resolve("readers");
        List<Process> readers = new ArrayList<>();
        for (int process = 0; process < 2; ++process) {
            List<String> command = List.of(System.getProperty("java.home") + "/bin/java",
                "-Dtavo.iscsi.library=" + Tool.PREFIX.resolve("lib/libtavoiscsi.so"), "-cp",
                System.getProperty("java.class.path"), Readers.class.getName(), Integer.toString(disks));
            readers.add(tool.process(command).directory(new File(tool.environment.get("HBA_LIBRARY_DIR")))
                .redirectErrorStream(true).redirectOutput(ProcessBuilder.Redirect.appendTo(log.toFile())).start());
        }
        for (int round = 0; round < ROUNDS; ++round) {
            Thread.sleep(500);
            signal("STOP");
            Thread.sleep(1500);
            signal("CONT");
            Thread.sleep(500);
            signal("KILL");
            daemons.remove(0).waitFor();
            startDaemon("127.0.0.1:" + port);
            addTarget(1, "disks");
        }
        Thread.sleep(500);
        for (Process process : readers) {
            process.getOutputStream().close(); // enough
            assertTrue(process.waitFor(30, TimeUnit.SECONDS), "the readers do not end");
            assertEquals(0, process.exitValue(), "see " + Files.readString(log).lines().distinct().toList());
        }
    }

    /** Reads with many threads until its input ends. Succeeds when each thread succeeds at the end. */
    static final class Readers {
        private Readers() {}

        public static void main(String[] arguments) throws IOException, InterruptedException {
            int target = Integer.parseInt(arguments[0]);
            ApiWrapper api = new ApiWrapper();
            api.initJNINative();
            AtomicBoolean ending = new AtomicBoolean(!api.openDevice(0));
            AtomicInteger reads = new AtomicInteger();
            AtomicInteger failures = new AtomicInteger();
            AtomicInteger successesAtTheEnd = new AtomicInteger();
            List<Thread> threads = Stream.generate(() -> new Thread(() -> {
                while (!ending.get()) {
                    (read(api, target) == 0 ? reads : failures).incrementAndGet();
                }
                successesAtTheEnd.addAndGet(read(api, target) == 0 ? 1 : 0);
            })).limit(READERS).toList();
            threads.forEach(Thread::start);
            while (System.in.read() >= 0) {
                continue;
            }
            ending.set(true);
            for (Thread thread : threads) {
                thread.join();
            }
            System.out.printf("%s reads, %s failures, %s at the end%n", reads, failures, successesAtTheEnd);
            boolean allWell = reads.get() > 0 && failures.get() > 0 && successesAtTheEnd.get() == READERS;
            System.exit(allWell && api.closeDevice(0) ? 0 : 1);
        }

        private static int read(ApiWrapper api, int id) {
            Target target = new Target();
            target.getTargetInfo().setTargetID(id);
            return api.getScsiReportLUNsData(0, new HBA(), target);
        }
    }
}
