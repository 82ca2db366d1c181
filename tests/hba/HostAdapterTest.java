import static org.junit.jupiter.api.Assumptions.assumeFalse;

import com.google.gson.JsonArray;
import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import com.varden.tavo.iscsi.jni.ApiWrapper;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.Target;
import java.io.BufferedReader;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.atomic.AtomicBoolean;
import java.util.concurrent.atomic.AtomicInteger;
import java.util.stream.Stream;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;

/** The host adapter from Java through the bridge, with a target daemon on the loopback interface. */
final class HostAdapterTest extends ToolTest {
    private static final String PREFIX = "iqn.2024-01.example:";
    /** Runs each line of its input and answers with the status. Its daemons end with it, and it with its input. */
    private static final String SHELL = """
        . "$0"
        command -v tgtd >/dev/null || echo none
        trap 'kill -KILL $(jobs -p)' EXIT
        start_daemon "$PWD"
        echo "$port"
        while read -r line; do
          eval "$line" </dev/null >>shell.log 2>&1
          echo "$?"
        done""";
    private static final int UNITS = 250;
    private static final int READERS = 8;
    private static final int ROUNDS = 11; // of about three seconds

    private Process shell;
    private BufferedReader answers;
    private String port;

    @BeforeEach
    void startTargets() throws IOException {
        tool.environment.put("TAVO_ADAPTER_INTERFACES", "lo");
        tool.environment.put("HBA_LIBRARY_DIR", Tool.PREFIX.resolve("lib/vdsdm-host").toString());
        tool.directory = tool.folder;
        shell = tool.process(List.of("bash", "-c", SHELL, Tool.SOURCES.resolve("tools/target-daemon").toString()))
            .redirectError(tool.folder.resolve("shell.log").toFile()).start();
        answers = shell.inputReader();
        port = answers.readLine();
        assumeFalse("none".equals(port), "tgtd is not installed");
        tell("truncate -s 3T disk1 && truncate -s 1T disk2 && add_target 1 " + PREFIX + "disks"
            + " && administer --mode logicalunit --op new --tid 1 --lun 1 --backing-store $PWD/disk1"
            + " && administer --mode logicalunit --op new --tid 1 --lun 2 --backing-store $PWD/disk2 --blocksize 4096");
    }

    @AfterEach
    void stopTargets() throws IOException, InterruptedException {
        shell.getOutputStream().close();
        shell.waitFor();
    }

    /** Has the shell run a command, which may be one of tools/target-daemon. */
    private void tell(String command) throws IOException {
        shell.outputWriter().append(command).append('\n').flush();
        assertEquals("0", answers.readLine(), () -> command + ": see " + tool.folder.resolve("shell.log"));
    }

    /** Discovers, and answers the ID that a target got. */
    private int discover(String address, String name) {
        tool.run("discover 0 " + address + " --port " + port + " --yes");
        for (JsonElement entry : array("target list 0")) {
            if (entry.toString().contains("\"" + PREFIX + name + "\"")) {
                return entry.getAsJsonObject().get("targetID").getAsInt();
            }
        }
        throw new AssertionError(name + " is not in the device database");
    }

    private int unitsOf(int target) {
        return object("lun list 0 " + target).getAsJsonArray("LUNs").size();
    }

    @Test
    void discoveryDisksAndCounters() {
        int disks = discover("127.0.0.1", "disks");
        assertEquals(disks, discover("127.0.0.1", "disks"));
        assertEquals(1, array("target list 0").size(), "found twice");
        tool.run("stats reset 0 --yes").expect(0);
        assertEquals(3, unitsOf(disks));
        JsonObject counters = object("stats show 0");
        assertTrue(counters.get("iSCSICompleteIOsCount").getAsInt() > 0, counters::toString);
        // A target may send its data and its response in one PDU or in two.
        assertTrue(counters.get("iSCSITxPDUCount").getAsInt() <= counters.get("iSCSIRxPDUCount").getAsInt(),
            counters::toString);
        tool.run("lun show 0 " + disks + " 1").expect(0).shows("4294967295", "512 bytes", "IET");
        tool.run("lun show 0 " + disks + " 2").expect(0).shows("268435455", "4096 bytes");
        Tool.Result ping = tool.run("ping 0 127.0.0.1");
        assertTrue(ping.status() == 0 || ping.err().contains("ERR_NOT_SUPPORTED"), ping::toString);
    }

    @Test
    void chapOnBothSides() throws IOException {
        tell("add_target 2 " + PREFIX + "guarded");
        tell("administer --mode account --op new --user initiator --password initiators-own-secret"
            + " && administer --mode account --op bind --tid 2 --user initiator");
        tell("administer --mode account --op new --user target --password secret-of-the-target"
            + " && administer --mode account --op bind --tid 2 --user target --outgoing");
        tool.write("initiator", "initiators-own-secret\n");
        tool.write("target", "secret-of-the-target\n");
        int guarded = discover("127.0.0.1", "guarded");
        tool.run("lun list 0 " + guarded).expect(1).says("ERR_AUTHENTICATION");
        tool.run("chap set 0 1 --name initiator --secret-file initiator --yes").expect(0);
        tool.run("chap set 0 2 --name target --secret-file initiator --yes").expect(0);
        tool.run("chap set 0 1 --link 2 --yes").expect(0);
        tool.run("target set 0 " + guarded + " --chap-index 1 --yes").expect(0).shows("It did not log in: ");
        tool.run("lun list 0 " + guarded).expect(1).says("ERR_AUTHENTICATION");
        tool.run("chap set 0 2 --secret-file target --yes").expect(0);
        tool.run("target login 0 " + guarded).expect(0);
        assertEquals(1, unitsOf(guarded));
    }

    @Test
    void manyUnitsOverIpv6() throws IOException {
        tell("administer --mode portal --op new --param portal=[::1]:$port && add_target 2 " + PREFIX + "many");
        tell("for n in $(seq " + UNITS + "); do administer --mode logicalunit --op new --tid 2 --lun $n "
            + "--bstype null --backing-store /dev/null || break; done");
        assertEquals(UNITS + 1, unitsOf(discover("::1", "many")));
    }

    private static long kernelCounter(String name) throws IOException {
        return Long.parseLong(Files.readString(Path.of("/sys/class/net/lo/statistics", name)).strip());
    }

    /** Others use the interface as well: what is shown lies between what the kernel says before and after. */
    @Test
    void countersAreTheKernels() throws IOException {
        for (Map.Entry<String, String> name : Map.of("MACTxFramesCount", "tx_packets", "MACTxBytesCount", "tx_bytes",
                 "MACRxFramesCount", "rx_packets", "MACRxBytesCount", "rx_bytes").entrySet()) {
            long before = kernelCounter(name.getValue());
            long shown = object("stats show 0").get(name.getKey()).getAsLong();
            long after = kernelCounter(name.getValue());
            assertTrue(before <= shown && shown <= after,
                () -> name + ": " + shown + " is not from " + before + " to " + after);
        }
    }

    @Test
    void isnsTellsOfTargets() throws IOException {
        // The port of an iSNS server is fixed, so the address has to be free.
        long process = ProcessHandle.current().pid();
        String address = "127.98." + process / 250 % 250 + "." + (1 + process % 250);
        String common = "Security = 0\nSourceName = " + PREFIX;
        Files.createDirectory(tool.folder.resolve("database"));
        tool.write("server", common + "server\nDatabase = " + tool.folder + "/database\nPIDFile = " + tool.folder
            + "/pid\nBindAddress = " + address + "\nDefaultDiscoveryDomain = 1\nESIMinInterval = 0\n");
        tool.write("client", common + "administrator\nServerAddress = " + address + "\n");
        tool.run("isns set 0 --enable-isns-discovery-flag=yes --server-ip-address=" + address).expect(0);
        tool.run("isns targets 0").expect(1).says("ERR_UNREACHABLE");
        tell("isnsd -4 -f -c server &");
        tell("disks=$(for n in $(seq 40); do echo target=" + PREFIX + "shelf$n,alias=unit$n; done); n=0; "
            + "until isnsadm -c client --register entity=shelf $disks portal=10.9.0.1:3261 portal=[fd09::1]:3262; "
            + "do n=$((n + 1)); [ $n -lt 100 ] || break; sleep 0.1; done");
        JsonArray found = array("isns targets 0");
        assertEquals(40, found.size());
        assertTrue(Stream.of(PREFIX + "shelf40\"", "\"unit1\"", "10.9.0.1", "3261")
            .allMatch(found.toString()::contains), found::toString);
    }

    @Test
    void targetsThatFreezeAndDie() throws IOException {
        int disks = discover("127.0.0.1", "disks");
        tool.run("target set 0 " + disks + " --task-management-timeout 1 --yes").expect(0);
        tell("kill -STOP $daemon");
        tool.run("lun list 0 " + disks).expect(1).says("ERR_TIMEOUT");
        tell("kill -CONT $daemon");
        assertEquals(3, unitsOf(disks));
        tell("stop_daemon");
        tool.run("lun list 0 " + disks).expect(1).says("ERR_UNREACHABLE");
        tool.run("log errors 0").expect(0).shows("no answer (1)", "timeout (3)");
    }

    /** Two processes at once, each with many threads; for half a minute the target comes and goes. */
    @Test
    void threadsOfTwoProcessesWhileTheTargetComesAndGoes() throws IOException, InterruptedException {
        int disks = discover("127.0.0.1", "disks");
        tool.run("target set 0 " + disks + " --task-management-timeout 1 --yes").expect(0);
        tool.directory = Path.of(tool.environment.get("HBA_LIBRARY_DIR"));
        Path log = tool.folder.resolve("readers");
        List<Process> readers = new ArrayList<>();
        for (int process = 0; process < 2; ++process) {
            readers.add(tool.process(Tool.application(Readers.class, Integer.toString(disks)))
                .redirectErrorStream(true).redirectOutput(ProcessBuilder.Redirect.appendTo(log.toFile())).start());
        }
        for (int round = 0; round < ROUNDS; ++round) {
            Thread.sleep(500);
            tell("kill -STOP $daemon");
            Thread.sleep(1500);
            tell("kill -CONT $daemon");
            Thread.sleep(500);
            tell("stop_daemon; start_daemon \"$PWD\" && add_target 1 " + PREFIX + "disks");
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
            System.in.readAllBytes();
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
