import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.net.Socket;
import java.net.SocketTimeoutException;
import java.net.http.HttpResponse;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.TimeUnit;
import org.junit.jupiter.api.Test;

/** hba serve and hba metrics: what they answer, and what they do not let anybody do. */
final class ServeTest extends ToolTest {
    private static final String TOKEN = "0123456789abcdef-token";

    @Test
    void metrics() throws IOException, InterruptedException {
        String printed = tool.run("metrics").expect(0).shows(
            "tavoiscsi_adapter_state{adapter=\"0\",serial=\"TV2040A000117\",state=\"ready\"} 1\n",
            "tavoiscsi_adapter_link_up{adapter=\"3\",serial=\"TV2010C000009\"} 0\n",
            "tavoiscsi_targets{adapter=\"2\",serial=\"TV2060B000343-XL\",state=\"logged in\"} 512\n",
            "tavoiscsi_target_up{adapter=\"0\",serial=\"TV2040A000117\",target=\"100\"} 0\n").out();
        // The end of 64 bits.
        String counter = "IPRxBytesCount";
        String value = tool.json("stats show 1").getAsJsonObject().get(counter).getAsString();
        assertTrue(printed.contains("tavoiscsi_ip_received_bytes_total{adapter=\"1\",serial=\"TV2060B000342\"} " + value
            + "\n"), printed);
        tool.write("old.prom", "old");
        assertEquals("", tool.run("metrics --output old.prom").expect(0).out());
        assertEquals(printed.lines().count(), tool.readFile("old.prom").lines().count());
        assertEquals(List.of("old.prom"), List.of(tool.directory.toFile().list()));
        tool.refused("metrics --output none/at.prom", "there is no folder");

        String checker = Tool.SOURCES.resolve("runtime/prometheus/usr/bin/promtool").toString();
        assertEquals("", tool.execute(printed, List.of(checker, "check", "metrics")).expect(0).err());
    }

    /** Each document is that of the command of its name, and is sent again only when it has changed. */
    @Test
    void documents() throws IOException, InterruptedException {
        try (Server server = new Server(tool)) {
            for (String command : List.of("adapters", "version", "show 0", "info 1", "target list 2", "target show 0 5",
                "target default 0", "target portal 0 1", "lun list 0 1", "lun show 0 1 5", "firmware show 0",
                "firmware defaults 0", "stats show 3", "log errors 0", "log arp 0", "chap list 0", "isns show 1",
                "isns targets 1")) {
                String path = "/api/" + command.replace(' ', '/');
                HttpResponse<String> response = server.get(path);
                assertEquals(200, response.statusCode(), response::body);
                assertEquals(tool.run(command + " --json").expect(0).out(), response.body(), path);
                String tag = response.headers().firstValue("ETag").orElseThrow();
                assertEquals(304, server.get(path, "If-None-Match", "\"other\", " + tag).statusCode());
            }
            String tag = server.get("/api/log/errors/0").headers().firstValue("ETag").orElseThrow();
            tool.run("target logout 0 1 --yes").expect(0);
            Server.await("a new document",
                () -> server.get("/api/log/errors/0", "If-None-Match", tag).statusCode() == 200);
            for (String path : List.of("/api/", "/api/target/set/0/1", "/api/chap/list/0/--reveal", "/api/show",
                "/api/ping/0/1", "/api/target/0/list", "/data/history/9", "/..%2fetc/passwd", "/web/index.html")) {
                assertEquals(404, server.get(path).statusCode(), path);
            }
            assertEquals(400, server.get("/api/show/32").statusCode());
            assertEquals(400, server.get("/api/target/show/0/512").statusCode());
            assertTrue(server.get("/api/lun/list/0/100").body().contains("\"ERR_UNREACHABLE\""));
        }
    }

    @Test
    void nobodyElseIsServed() throws IOException, InterruptedException {
        tool.refused("serve --listen 0.0.0.0:0", "--token-file");
        tool.refused("serve --listen localhost:80", "--listen", "127.0.0.1:9860");
        tool.write("short", "secret\n");
        tool.refused("serve --token-file short", "too short");
        tool.write("token", TOKEN + "\n");
        try (Server server = new Server(tool, "--token-file", "token", "--host-name", "storage.example")) {
            assertEquals(200, server.get("/").statusCode());
            for (String wrong : List.of("Bearer " + TOKEN + "x", "Bearer", "Basic " + TOKEN, TOKEN)) {
                assertEquals(401, server.get("/metrics", "Authorization", wrong).statusCode(), wrong);
            }
            assertEquals(401, server.get("/data/adapters").statusCode());
            assertEquals(200, server.get("/metrics", "Authorization", "Bearer " + TOKEN).statusCode());
            for (String host : List.of("attacker.example", "localhost.attacker.example", "")) {
                assertTrue(server.send("GET / HTTP/1.1\r\nHost: " + host + "\r\nConnection: close\r\n\r\n")
                    .startsWith("HTTP/1.1 403"), host);
            }
            for (String host : List.of("localhost:9860", "STORAGE.example", "[::1]:80", "127.0.0.1")) {
                assertTrue(server.send("GET / HTTP/1.1\r\nHost: " + host + "\r\nConnection: close\r\n\r\n")
                    .startsWith("HTTP/1.1 200"), host);
            }
            for (String method : List.of("POST", "PUT", "DELETE", "OPTIONS", "TRACE", "get")) {
                assertTrue(server.send(method + " / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 0\r\n"
                    + "Connection: close\r\n\r\n").startsWith("HTTP/1.1 405"), method);
            }
            String head = server.send("HEAD / HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n");
            assertTrue(head.matches("(?s)HTTP/1.1 200.*Content-length: [1-9]\\d+.*\r\n\r\n"), head);
        }
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
            long refused = slow.stream().skip(48).filter(socket -> isClosed(socket, 500)).count();
            assertTrue(refused >= 80 - 64, () -> refused + " of 80 connections were refused");

            slow.forEach(socket -> assertTrue(isClosed(socket, 15_000), "a request ends after 10 s"));
            assertTrue(System.nanoTime() - begin > TimeUnit.SECONDS.toNanos(8), "a request has 10 s");
            server.text("/metrics");

            for (String request : List.of("GET /" + "x".repeat(20_000) + " HTTP/1.1\r\n\r\n",
                "GET / HTTP/1.1\r\nHost: localhost\r\nX: " + "x".repeat(20_000) + "\r\n\r\n",
                "GET / HTTP/1.1\r\nHost: localhost\r\n" + "X: y\r\n".repeat(3000) + "\r\n")) {
                String answer = server.send(request);
                assertFalse(answer.startsWith("HTTP/1.1 2"), answer);
            }
            long memory = 0;
            for (int i = 0; i < 10_000; i++) {
                String request = switch (i % 5) {
                    case 0 -> "\0\1\2\3\r\n\r\n";
                    case 1 -> "GET\r\n\r\n";
                    case 2 -> "GET / HTTP/9.9\r\n:\r\n\r\n";
                    case 3 -> "GET //%zz HTTP/1.1\r\nHost: localhost\r\n\r\n";
                    default -> "POST / HTTP/1.1\r\nHost: localhost\r\nContent-Length: -5\r\n\r\n";
                };
                try (Socket socket = server.connect()) {
                    socket.getOutputStream().write(request.getBytes(StandardCharsets.ISO_8859_1));
                }
                if (i == 2000) {
                    memory = server.memory();
                }
            }
            assertTrue(server.memory() < memory + 32 * 1024, "memory is flat");
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
