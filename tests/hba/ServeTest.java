import com.google.gson.JsonElement;
import java.io.IOException;
import java.net.http.HttpResponse;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.util.List;
import java.util.concurrent.TimeUnit;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.parallel.Execution;
import org.junit.jupiter.api.parallel.ExecutionMode;

/** hba serve and hba metrics: what they answer, and what they do not let anybody do. Most of the time they wait. */
@Execution(ExecutionMode.CONCURRENT)
final class ServeTest extends ToolTest {
    private static final String TOKEN = "0123456789abcdef-token";

    @Test
    void metrics() throws IOException, InterruptedException {
        tool.run("target set 0 7 --force --yes --iscsi-name=a\"b\\c").expect(0);
        String printed = tool.run("metrics").expect(0).shows(
            "target_info{adapter=\"0\",serial=\"TV2040A000117\",target=\"7\",name=\"a\\\"b\\\\c\",",
            "tavoiscsi_adapter_state{adapter=\"0\",serial=\"TV2040A000117\",state=\"ready\"} 1\n",
            "tavoiscsi_adapter_link_up{adapter=\"3\",serial=\"TV2010C000009\"} 0\n",
            "tavoiscsi_targets{adapter=\"2\",serial=\"TV2060B000343-XL\",state=\"logged in\"} 512\n",
            "tavoiscsi_target_up{adapter=\"0\",serial=\"TV2040A000117\",target=\"100\"} 0\n").out();
        // The end of 64 bits.
        String value = Tool.values(object("stats show 1"), "MACRxBytesCount");
        assertTrue(printed.contains("tavoiscsi_mac_received_bytes_total{adapter=\"1\",serial=\"TV2060B000342\"} "
            + value + "\n"), printed);
        assertEquals(20, value.length());
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
            for (String command : List.of("adapters", "status", "version", "show 0", "target list 2", "target show 0 5",
                "lun list 0 1", "lun show 0 1 5", "stats show 3", "log errors 0", "chap list 0", "isns targets 1")) {
                String path = "/api/" + command.replace(' ', '/');
                HttpResponse<String> response = server.get(path);
                assertEquals(200, response.statusCode(), response::body);
                assertEquals(tool.run(command + " --json").out(), response.body(), path);
                String tag = response.headers().firstValue("ETag").orElseThrow();
                assertEquals(304, server.get(path, "If-None-Match", "\"other\", " + tag).statusCode());
            }
            String tag = server.get("/api/log/errors/0").headers().firstValue("ETag").orElseThrow();
            tool.run("target logout 0 1 --yes").expect(0);
            Server.await("a new document",
                () -> server.get("/api/log/errors/0", "If-None-Match", tag).statusCode() == 200);
            for (String path : List.of("/api/", "/api/target/set/0/1", "/api/chap/list/0/--reveal", "/api/show",
                "/api/ping/0/1", "/api/target/0/list", "/data/history/9", "/data/log/0", "/data/targets/0/1",
                "/..%2fetc/passwd", "/web/index.html")) {
                assertEquals(404, server.get(path).statusCode(), path);
            }
            assertEquals(400, server.get("/api/show/32").statusCode());
            assertEquals(400, server.get("/api/target/show/0/512").statusCode());
            assertTrue(server.get("/api/lun/list/0/100").body().contains("\"ERR_UNREACHABLE\""));
        }
    }

    private static String status(Server server, String method, String host) {
        return server.send(method + " / HTTP/1.1\r\nHost: " + host + "\r\nContent-Length: 0\r\n"
            + "Connection: close\r\n\r\n").split(" ")[1];
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
                assertEquals("403", status(server, "GET", host), host);
            }
            for (String host : List.of("localhost:9860", "STORAGE.example", "[::1]:80", "127.0.0.1")) {
                assertEquals("200", status(server, "GET", host), host);
            }
            for (String method : List.of("POST", "PUT", "DELETE", "OPTIONS", "TRACE", "get")) {
                assertEquals("405", status(server, method, "localhost"), method);
            }
            String head = server.send("HEAD / HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n");
            assertTrue(head.matches("(?s)HTTP/1.1 200.*Content-length: [1-9]\\d+.*\r\n\r\n"), head);
        }
    }

    /** Stored settings that cannot be read are no end: they are told of, and read again when they can be. */
    @Test
    void failedReadings() throws IOException, InterruptedException {
        tool.run("target logout 0 1 --yes").expect(0);
        Path settings = tool.settingsFile();
        Path aside = tool.folder.resolve("aside");
        try (Server server = new Server(tool)) {
            String readable = "tavoiscsi_reading_stale{adapter=\"0\",serial=\"TV2040A000117\"} 0\n";
            Server.await("the adapters are read", () -> server.text("/metrics").contains(readable));
            Files.move(settings, aside);
            Files.writeString(settings, "no settings at all");
            Server.await("readings fail", () -> server.text("/metrics").contains(readable.replace(" 0", " 1")));
            assertTrue(server.text("/data/adapters").contains("ERR_FLASH_DAMAGED"));
            assertEquals(502, server.get("/api/show/0").statusCode());
            assertFalse(server.text("/metrics").matches("(?s).*reading_failures_total\\{adapter=\"0\"[^}]*} 0\n.*"));
            Files.move(aside, settings, StandardCopyOption.REPLACE_EXISTING);
            Server.await("they are read again", () -> server.text("/metrics").contains(readable));
        }
    }

    /** An adapter that never answers is shown as stale with its age, and neither it nor a target delays anybody. */
    @Test
    void deadAdapterDelaysNobody() throws IOException, InterruptedException {
        Path stuck = tool.folder.resolve("stuck");
        tool.environment.put("STUCK", stuck.toString());
        tool.environment.put("LD_PRELOAD", System.getProperty("tavo.faulty.adapter"));
        try (Server server = new Server(tool, "--ask-targets")) {
            String targets = "tavoiscsi_target_up{adapter=\"1\"";
            Server.await("adapter 1 is read", () -> server.text("/metrics").contains(targets));
            Server.await("a target that does not answer is noticed", () -> server.text("/metrics").contains(
                "tavoiscsi_connection_errors_total{adapter=\"0\",serial=\"TV2040A000117\",target=\"100\","
                + "kind=\"no answer\"}"));
            Files.createFile(stuck);
            Server.await("adapter 1 is stale", () -> server.text("/metrics").contains(
                "tavoiscsi_reading_stale{adapter=\"1\",serial=\"TV2060B000342\"} 1\n"));
            assertFalse(server.text("/metrics").contains(targets));
            JsonElement cards = server.json("/data/adapters");
            assertEquals("false true false false", Tool.values(cards, "adapters.0.stale", "adapters.1.stale",
                "adapters.2.stale", "adapters.3.stale"));
            assertTrue(Long.parseLong(Tool.values(cards, "adapters.1.ageMillis")) > 3000);
            assertEquals(504, server.get("/api/stats/show/1").statusCode());
            server.text("/api/stats/show/0");
            server.process.destroy();
            assertTrue(server.process.waitFor(1, TimeUnit.SECONDS), "SIGTERM ends it within a second");
        }
    }
}
