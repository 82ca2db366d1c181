import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.google.gson.JsonElement;
import com.google.gson.JsonParser;
import java.io.IOException;
import java.io.UncheckedIOException;
import java.net.Socket;
import java.net.SocketException;
import java.net.URI;
import java.net.http.HttpClient;
import java.net.http.HttpRequest;
import java.net.http.HttpResponse;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.time.Duration;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.TimeUnit;
import java.util.function.BooleanSupplier;

/** 'hba serve' on a free port of the loopback interface. It ends with this object, and with this VM at the latest. */
final class Server implements AutoCloseable {
    private static final Duration PATIENCE = Duration.ofSeconds(20);

    final Process process;
    final URI address;
    private final HttpClient client = HttpClient.newBuilder().connectTimeout(PATIENCE).build();

    Server(Tool tool, String... more) throws IOException {
        List<String> command = new ArrayList<>(List.of("setpriv", "--pdeathsig", "KILL", tool.launcher.toString(),
            "serve", "--interval=1", "--listen=127.0.0.1:0"));
        command.addAll(List.of(more));
        process = tool.process(command).redirectError(ProcessBuilder.Redirect.DISCARD).start();
        String said = process.inputReader().readLine();
        assertTrue(said != null && said.startsWith("Serving http://127.0.0.1:"), said);
        address = URI.create(said.substring("Serving ".length()));
    }

    /** Asks for a path; headers are names and values in turn. */
    HttpResponse<String> get(String path, String... headers) {
        HttpRequest.Builder request = HttpRequest.newBuilder(address.resolve(path)).timeout(PATIENCE);
        if (headers.length > 0) {
            request.headers(headers);
        }
        try {
            HttpResponse<String> response = client.send(request.build(), HttpResponse.BodyHandlers.ofString());
            Tool.SECRETS.forEach(secret -> assertFalse(response.body().contains(secret), path));
            return response;
        } catch (IOException | InterruptedException e) {
            throw new IllegalStateException(path, e);
        }
    }

    String text(String path, String... headers) {
        HttpResponse<String> response = get(path, headers);
        assertEquals(200, response.statusCode(), response::body);
        return response.body();
    }

    JsonElement json(String path) {
        return JsonParser.parseString(text(path));
    }

    Socket connect() throws IOException {
        return new Socket(address.getHost(), address.getPort());
    }

    /** Sends bytes as they are and returns all that comes back until the server closes; what it resets is lost. */
    String send(String request) {
        try (Socket socket = connect()) {
            socket.setSoTimeout((int) PATIENCE.toMillis());
            socket.getOutputStream().write(request.getBytes(StandardCharsets.ISO_8859_1));
            return new String(socket.getInputStream().readAllBytes(), StandardCharsets.UTF_8);
        } catch (SocketException e) {
            return "";
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
    }

    static void await(String what, BooleanSupplier condition) throws InterruptedException {
        await(what, PATIENCE.toSeconds(), condition);
    }

    static void await(String what, long seconds, BooleanSupplier condition) throws InterruptedException {
        long end = System.nanoTime() + TimeUnit.SECONDS.toNanos(seconds);
        while (!condition.getAsBoolean()) {
            assertTrue(System.nanoTime() < end, what);
            Thread.sleep(100);
        }
    }

    /** The memory of the process that is in use, in KiB. */
    long memory() throws IOException {
        String status = Files.readString(Path.of("/proc/" + process.pid() + "/status"));
        return Long.parseLong(status.replaceAll("(?s).*VmRSS:\\s*(\\d+).*", "$1"));
    }

    @Override
    public void close() {
        process.destroy();
        process.onExit().completeOnTimeout(process, PATIENCE.toSeconds(), TimeUnit.SECONDS).join();
        process.destroyForcibly();
    }
}
