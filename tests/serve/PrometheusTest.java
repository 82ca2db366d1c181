import com.google.gson.JsonArray;
import com.google.gson.JsonElement;
import com.google.gson.JsonParser;
import java.io.IOException;
import java.io.InputStream;
import java.io.InputStreamReader;
import java.net.ServerSocket;
import java.net.URL;
import java.net.URLEncoder;
import java.nio.charset.StandardCharsets;
import java.nio.file.Path;
import java.util.List;
import org.junit.jupiter.api.Tag;
import org.junit.jupiter.api.Test;

/** A Prometheus scrapes the server, and the alerts that come with it notice a target that goes down. */
final class PrometheusTest extends ToolTest {
    private static final Path BIN = Tool.SOURCES.resolve("runtime/prometheus/usr/bin");
    private static final Path RULES = Tool.SOURCES.resolve("packaging/tavoiscsi.rules.yml");

    private int port;

    @Test
    void noticesTargetThatGoesDown() throws IOException, InterruptedException {
        expectAlert("pending", 20);
    }

    @Test
    @Tag("long")
    void alertFires() throws IOException, InterruptedException {
        expectAlert("firing", 100);
    }

    private void expectAlert(String state, int seconds) throws IOException, InterruptedException {
        try (ServerSocket socket = new ServerSocket(0)) {
            port = socket.getLocalPort();
        }
        tool.execute(null, List.of(BIN.resolve("promtool").toString(), "check", "rules", RULES.toString())).expect(0);
        try (Server server = new Server(tool)) {
            Path settings = tool.write("prometheus.yml", """
                global: {scrape_interval: 1s, evaluation_interval: 1s}
                rule_files: ['%s']
                scrape_configs: [{job_name: tavoiscsi, static_configs: [{targets: ['%s']}]}]
                """.formatted(RULES, server.address.getAuthority()));
            Process prometheus = tool.process(List.of("setpriv", "--pdeathsig", "KILL",
                BIN.resolve("prometheus").toString(), "--config.file=" + settings,
                "--storage.tsdb.path=" + tool.folder.resolve("series"), "--web.listen-address=127.0.0.1:" + port))
                .redirectErrorStream(true).redirectOutput(tool.folder.resolve("prometheus.log").toFile()).start();
            try {
                Server.await("525 targets are known", () -> "525".equals(value("count(tavoiscsi_target_up)")));
                assertEquals(0x1p64, Double.parseDouble(value("max(tavoiscsi_mac_received_bytes_total)")));
                assertEquals("0", value("count(ALERTS{alertname=\"TavoIscsiTargetDown\",target=\"17\"}) or vector(0)"));
                tool.run("target set 0 17 --yes --ip-address=10.20.0.99").expect(0);
                String alert = "ALERTS{alertname=\"TavoIscsiTargetDown\",adapter=\"0\",target=\"17\",alertstate=\""
                    + state + "\"}";
                Server.await(alert, seconds, () -> "1".equals(value(alert)));
                String alerts = ask("alerts").toString();
                assertTrue(alerts.contains("array2.farm"), alerts);
            } finally {
                prometheus.destroyForcibly().waitFor();
            }
        }
    }

    private JsonElement ask(String question) {
        try (InputStream answer = new URL("http://127.0.0.1:" + port + "/api/v1/" + question).openStream()) {
            return JsonParser.parseReader(new InputStreamReader(answer)).getAsJsonObject().get("data");
        } catch (IOException e) {
            return JsonParser.parseString("{result: []}"); // not up yet
        }
    }

    // The value of an expression, empty when there is none.
    private String value(String expression) {
        String text = URLEncoder.encode(expression, StandardCharsets.UTF_8);
        JsonArray series = ask("query?query=" + text).getAsJsonObject().getAsJsonArray("result");
        return series.isEmpty() ? "" : Tool.values(series, "0.value.1");
    }
}
