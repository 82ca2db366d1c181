import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.google.gson.JsonObject;
import com.google.gson.JsonParser;
import java.io.IOException;
import java.net.URI;
import java.net.http.HttpClient;
import java.net.http.HttpRequest;
import java.net.http.HttpResponse;
import java.net.http.WebSocket;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Base64;
import java.util.Collections;
import java.util.List;
import java.util.Map;
import java.util.concurrent.CompletableFuture;
import java.util.concurrent.CompletionStage;
import java.util.concurrent.ConcurrentHashMap;
import java.util.concurrent.TimeUnit;
import java.util.stream.Stream;

/** One page of a headless Chromium, steered by its debugging protocol. */
final class Browser implements AutoCloseable {
    private static final int PATIENCE_SECONDS = 30;

    /** Addresses that the page asked for, and errors and warnings that it wrote to its console. */
    final List<String> requests = Collections.synchronizedList(new ArrayList<>());
    final List<String> complaints = Collections.synchronizedList(new ArrayList<>());

    private final Process process;
    private final WebSocket socket;
    private final Map<Integer, CompletableFuture<JsonObject>> waiting = new ConcurrentHashMap<>();
    private int lastCommand;

    Browser(Path profile) throws IOException, InterruptedException {
        process = new ProcessBuilder("setpriv", "--pdeathsig", "KILL", "chromium", "--headless", "--no-sandbox",
            "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
            "--disable-component-update", "--disable-sync", "--disable-dev-shm-usage", "--remote-debugging-port=0",
            "--user-data-dir=" + profile, "about:blank")
            .redirectErrorStream(true).redirectOutput(profile.resolveSibling("chromium.log").toFile()).start();
        Path portFile = profile.resolve("DevToolsActivePort");
        Server.await("Chromium starts", () -> portFile.toFile().length() > 0);
        String port = Files.readAllLines(portFile).get(0);
        HttpClient client = HttpClient.newHttpClient();
        HttpRequest newPage = HttpRequest.newBuilder(URI.create("http://127.0.0.1:" + port + "/json/new"))
            .PUT(HttpRequest.BodyPublishers.noBody()).build();
        String page = Tool.values(JsonParser.parseString(client.send(newPage,
            HttpResponse.BodyHandlers.ofString()).body()), "webSocketDebuggerUrl");
        socket = client.newWebSocketBuilder().buildAsync(URI.create(page), new Listener()).join();
        for (String domain : List.of("Page", "Runtime", "Log", "Network")) {
            command(domain + ".enable", "{}");
        }
    }

    private final class Listener implements WebSocket.Listener {
        private final StringBuilder text = new StringBuilder();

        @Override
        public CompletionStage<?> onText(WebSocket source, CharSequence data, boolean last) {
            text.append(data);
            if (last) {
                JsonObject message = JsonParser.parseString(text.toString()).getAsJsonObject();
                text.setLength(0);
                take(message);
            }
            source.request(1);
            return null;
        }
    }

    private void take(JsonObject message) {
        if (message.has("id")) {
            waiting.remove(message.get("id").getAsInt()).complete(message);
            return;
        }
        JsonObject parameters = message.getAsJsonObject("params");
        String what = message.get("method").getAsString();
        if (what.equals("Network.requestWillBeSent")) {
            requests.add(Tool.values(parameters, "request.url"));
        } else if (what.matches("Runtime.exceptionThrown|Log.entryAdded")
            || what.equals("Runtime.consoleAPICalled") && !Tool.values(parameters, "type").matches("log|info|debug")) {
            complaints.add(parameters.toString());
        }
    }

    /** Has the browser do something; the parameters are JSON. */
    JsonObject command(String method, String parameters) {
        CompletableFuture<JsonObject> answer = new CompletableFuture<>();
        waiting.put(++lastCommand, answer);
        String message = "{\"id\":" + lastCommand + ",\"method\":\"" + method + "\",\"params\":" + parameters + "}";
        socket.sendText(message, true).join();
        JsonObject result = answer.orTimeout(PATIENCE_SECONDS, TimeUnit.SECONDS).join();
        assertTrue(result.has("result"), result::toString);
        return result.getAsJsonObject("result");
    }

    /** What a JavaScript expression gives in the page, as text. */
    String evaluate(String expression) {
        JsonObject parameters = new JsonObject();
        parameters.addProperty("expression", "String(" + expression + ")");
        JsonObject answer = command("Runtime.evaluate", parameters.toString());
        assertFalse(answer.has("exceptionDetails"), answer::toString);
        return Tool.values(answer, "result.value");
    }

    /** Waits until a JavaScript expression is true in the page. */
    void await(String expression) throws InterruptedException {
        Server.await(expression, () -> evaluate("Boolean(" + expression + ")").equals("true"));
    }

    void press(String key, int code) {
        for (String type : List.of("keyDown", "keyUp")) {
            command("Input.dispatchKeyEvent", String.format(
                "{\"type\":\"%s\",\"key\":\"%s\",\"code\":\"%s\",\"windowsVirtualKeyCode\":%d%s}", type, key, key, code,
                key.equals("Enter") && type.equals("keyDown") ? ",\"text\":\"\\r\"" : ""));
        }
    }

    void show(int width, int height, String scheme) {
        command("Emulation.setDeviceMetricsOverride", "{\"width\":" + width + ",\"height\":" + height
            + ",\"deviceScaleFactor\":1,\"mobile\":false}");
        command("Emulation.setEmulatedMedia",
            "{\"features\":[{\"name\":\"prefers-color-scheme\",\"value\":\"" + scheme + "\"}]}");
    }

    void screenshot(Path file) throws IOException {
        String data = command("Page.captureScreenshot", "{\"format\":\"png\"}").get("data").getAsString();
        Files.createDirectories(file.getParent());
        Files.write(file, Base64.getDecoder().decode(data));
    }

    @Override
    public void close() {
        socket.abort();
        List<ProcessHandle> all = Stream.concat(process.descendants(), Stream.of(process.toHandle())).toList();
        all.forEach(ProcessHandle::destroyForcibly);
        all.forEach(ended -> ended.onExit().join());
    }
}
