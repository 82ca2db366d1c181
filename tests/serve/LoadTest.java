import java.io.IOException;
import java.net.Socket;
import java.net.SocketTimeoutException;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.List;
import java.util.Queue;
import java.util.concurrent.ConcurrentLinkedQueue;
import java.util.concurrent.Executors;
import java.util.concurrent.ScheduledExecutorService;
import java.util.concurrent.TimeUnit;
import org.junit.jupiter.api.Test;

/** Many clients, and bad ones. With TAVO_LONG for a minute, and 10,000 bad requests. */
final class LoadTest extends ToolTest {
    private static final boolean LONG = System.getenv("TAVO_LONG") != null;
    private static final int SCRAPERS = 50;
    private static final int SECONDS = LONG ? 60 : 4;
    private static final int WARM_UP = 2; // seconds
    private static final int BAD_REQUESTS = LONG ? 10_000 : 1_000;
    // For 99 of 100 answers; the quick tests run on machines that have other things to do.
    private static final int MOST_MILLISECONDS = LONG ? 100 : 500;
    private static final String REQUEST = "GET /metrics HTTP/1.1\r\nHost: localhost\r\n"
        + "Accept: application/openmetrics-text\r\nConnection: close\r\n\r\n";
    private static final long LARGEST_GROWTH = 8 * 1024; // KiB

    @Test
    void manyScrapers() throws IOException, InterruptedException {
        try (Server server = new Server(tool)) {
            Server.await("525 targets", () -> server.text("/metrics").split("\ntavoiscsi_target_info").length == 526);
            Queue<Long> times = new ConcurrentLinkedQueue<>();
            ScheduledExecutorService scrapers = Executors.newScheduledThreadPool(SCRAPERS);
            for (int i = 0; i < SCRAPERS; i++) {
                scrapers.scheduleWithFixedDelay(() -> {
                    long begin = System.nanoTime();
                    // A failure ends this scraper and shows in the number of answers.
                    assertTrue(server.send(REQUEST).endsWith("# EOF\n"));
                    times.add(System.nanoTime() - begin);
                }, i * 1000L / SCRAPERS, 1000, TimeUnit.MILLISECONDS);
            }
            // Not before both virtual machines have warmed up.
            Thread.sleep(WARM_UP * 1000L);
            times.clear();
            Thread.sleep(SECONDS * 250L);
            long memory = server.memory();
            Thread.sleep(SECONDS * 750L);
            scrapers.shutdown();
            assertTrue(scrapers.awaitTermination(SECONDS, TimeUnit.SECONDS), "the last answers come");
            long after = server.memory();
            List<Long> sorted = times.stream().sorted().toList();
            assertTrue(sorted.size() > SCRAPERS * (SECONDS - 2), () -> sorted.size() + " answers");
            long slowest = sorted.get(sorted.size() * 99 / 100);
            String figures = sorted.size() + " answers, 99 of 100 within " + slowest / 1_000_000 + " ms; memory from "
                + memory + " to " + after + " KiB";
            System.out.println(figures);
            assertTrue(slowest < MOST_MILLISECONDS * 1_000_000L, figures);
            assertFlat(memory, after);
        }
    }

    private static void assertFlat(long before, long after) {
        assertTrue(after - before < LARGEST_GROWTH, () -> "memory went from " + before + " to " + after + " KiB");
    }

    /** Slow, oversized and broken requests cost those who send them, and nobody else. */
    @Test
    void hostileClients() throws IOException, InterruptedException {
        try (Server server = new Server(tool)) {
            Server.await("adapters", () -> server.text("/data/adapters").contains("\"dev\":3"));
            List<Socket> slow = new ArrayList<>();
            for (int i = 0; i < 48; i++) {
                slow.add(server.connect());
                slow.get(i).getOutputStream().write("GET /metrics HTTP/1.1\r\nHost: loc".getBytes());
            }
            long begin = System.nanoTime();
            server.text("/metrics");
            assertTrue(System.nanoTime() - begin < TimeUnit.SECONDS.toNanos(2), "slow clients keep nobody waiting");
            // More than there are connections for: the rest is closed at once.
            for (int i = 48; i < 80; i++) {
                slow.add(server.connect());
            }
            Thread.sleep(500);
            long refused = slow.stream().skip(48).filter(socket -> isClosed(socket, 10)).count();
            assertTrue(refused >= 80 - 64, () -> refused + " of 80 connections were refused");
            slow.forEach(socket -> assertTrue(isClosed(socket, 10_000), "a request ends"));
            long seconds = TimeUnit.NANOSECONDS.toSeconds(System.nanoTime() - begin);
            assertTrue(2 <= seconds && seconds < 6, () -> "slow requests end after " + seconds + " s");
            server.text("/metrics");

            assertTrue(server.send("GET / HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\nX: " + "x".repeat(7900)
                + "\r\n\r\n").startsWith("HTTP/1.1 200"));
            for (String request : List.of("GET /" + "x".repeat(9000) + " HTTP/1.1\r\n\r\n",
                "GET / HTTP/1.1\r\nHost: localhost\r\nX: " + "x".repeat(9000) + "\r\n\r\n",
                "GET / HTTP/1.1\r\nHost: localhost\r\n" + "X: y\r\n".repeat(3000) + "\r\n")) {
                String answer = server.send(request);
                assertTrue(answer.isEmpty() || answer.startsWith("HTTP/1.1 400"), answer);
            }
            List<String> bad = List.of("\0\1\2\3\r\n\r\n", "GET\r\n\r\n", "GET / HTTP/9.9\r\n:\r\n\r\n",
                "GET //%zz HTTP/1.1\r\nHost: localhost\r\n\r\n",
                "POST / HTTP/1.1\r\nHost: localhost\r\nContent-Length: -5\r\n\r\n");
            long memory = 0;
            for (int i = 0; i < BAD_REQUESTS; i++) {
                try (Socket socket = server.connect()) {
                    socket.getOutputStream().write(bad.get(i % bad.size()).getBytes(StandardCharsets.ISO_8859_1));
                }
                if (i == BAD_REQUESTS / 4) {
                    memory = server.memory();
                }
            }
            assertFlat(memory, server.memory());
            assertTrue(server.text("/metrics").contains("tavoiscsi_adapter_link_up"));
            server.process.destroy();
            assertTrue(server.process.waitFor(1, TimeUnit.SECONDS), "SIGTERM ends it within a second");
            assertEquals(143, server.process.exitValue());
        }
    }

    private static boolean isClosed(Socket socket, int milliseconds) {
        try {
            socket.setSoTimeout(milliseconds);
            return socket.getInputStream().read() < 0;
        } catch (SocketTimeoutException e) {
            return false;
        } catch (IOException e) {
            return true;
        }
    }
}
