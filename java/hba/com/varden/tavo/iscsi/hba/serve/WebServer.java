package com.varden.tavo.iscsi.hba.serve;

import com.sun.net.httpserver.Headers;
import com.sun.net.httpserver.HttpExchange;
import com.sun.net.httpserver.HttpServer;
import com.varden.tavo.iscsi.hba.Failure;
import java.io.IOException;
import java.net.InetSocketAddress;
import java.util.Map;
import java.util.Set;
import java.util.concurrent.SynchronousQueue;
import java.util.concurrent.ThreadPoolExecutor;
import java.util.concurrent.TimeUnit;

/**
 * Answers HTTP requests, within limits: how many connections there are, how long a request takes, how much of it is
 * read. Everything is read-only.
 */
final class WebServer {
    private static final int CONNECTIONS = 64;
    private static final int IDLE_CONNECTIONS = 32;
    private static final int IDLE_SECONDS = 10;
    /** A client that is slow to ask keeps one of the connections from others no longer. */
    private static final int REQUEST_SECONDS = 3;
    private static final int ANSWER_SECONDS = 10;
    /** How often idle connections are looked at. */
    private static final int CLOCK_MILLISECONDS = 1000;
    private static final int HEADER_BYTES = 8192;
    private static final int HEADERS = 100;
    private static final int BACKLOG = 128;
    private static final Set<String> METHODS = Set.of("GET", "HEAD");

    /** What is sent with every answer: a page that can load, run and be shown from nowhere else. */
    private static final Map<String, String> HEADERS_OF_ALL = Map.of(
        "Content-Security-Policy", "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; "
            + "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'",
        "X-Content-Type-Options", "nosniff",
        "Referrer-Policy", "no-referrer",
        "Cross-Origin-Resource-Policy", "same-origin",
        "Cache-Control", "no-cache");

    private final HttpServer server;
    private final Site site;
    private final HostNames hostNames;
    private final AccessToken token;

    /** @param token what clients have to know, or null */
    WebServer(ListenAddress address, Site site, HostNames hostNames, AccessToken token) throws IOException {
        this.site = site;
        this.hostNames = hostNames;
        this.token = token;
        setLimits();
        server = HttpServer.create(address.socketAddress(), BACKLOG);
        server.createContext("/", this::handle);
        server.setExecutor(new ThreadPoolExecutor(0, CONNECTIONS, IDLE_SECONDS, TimeUnit.SECONDS,
            new SynchronousQueue<>(), work -> {
                Thread thread = new Thread(work, "request");
                thread.setDaemon(true);
                return thread;
            }));
    }

    // The server reads them when its classes are loaded.
    private static void setLimits() {
        System.setProperty("jdk.httpserver.maxConnections", String.valueOf(CONNECTIONS));
        System.setProperty("sun.net.httpserver.maxIdleConnections", String.valueOf(IDLE_CONNECTIONS));
        System.setProperty("sun.net.httpserver.idleInterval", String.valueOf(IDLE_SECONDS));
        System.setProperty("sun.net.httpserver.clockTick", String.valueOf(CLOCK_MILLISECONDS));
        System.setProperty("sun.net.httpserver.maxReqTime", String.valueOf(REQUEST_SECONDS));
        System.setProperty("sun.net.httpserver.maxRspTime", String.valueOf(ANSWER_SECONDS));
        System.setProperty("sun.net.httpserver.maxReqHeaderSize", String.valueOf(HEADER_BYTES));
        System.setProperty("sun.net.httpserver.maxReqHeaders", String.valueOf(HEADERS));
        System.setProperty("sun.net.httpserver.drainAmount", String.valueOf(HEADER_BYTES));
        // Header and body of an answer are two writes, which would wait for each other.
        System.setProperty("sun.net.httpserver.nodelay", "true");
    }

    /** Begins to answer and returns where it listens. */
    InetSocketAddress start() {
        server.start();
        return server.getAddress();
    }

    private void handle(HttpExchange exchange) throws IOException {
        try (exchange) {
            send(exchange, answer(exchange));
        }
    }

    private Reply answer(HttpExchange exchange) {
        Headers headers = exchange.getRequestHeaders();
        if (!METHODS.contains(exchange.getRequestMethod())) {
            exchange.getResponseHeaders().set("Allow", "GET, HEAD");
            return Reply.text(Reply.METHOD_NOT_ALLOWED, "only GET and HEAD are served");
        }
        if (!hostNames.accept(headers.getFirst("Host"))) {
            return Reply.text(Reply.FORBIDDEN, "this server does not go by that name; --host-name gives it more names");
        }
        String path = exchange.getRequestURI().getPath();
        if (path == null || !path.startsWith("/")) {
            return Reply.text(Reply.BAD_REQUEST, "a path is missing");
        }
        try {
            Reply file = site.file(path);
            if (file != null) {
                return file;
            }
            if (token != null && !token.isIn(headers.getFirst("Authorization"))) {
                exchange.getResponseHeaders().set("WWW-Authenticate", "Bearer");
                return Reply.text(Reply.UNAUTHORIZED, "the token is needed: Authorization: Bearer ...");
            }
            return site.find(path, exchange.getRequestURI().getQuery(), headers.getFirst("Accept"));
        } catch (RuntimeException e) {
            return Reply.text(Reply.FAILED, Failure.of(e).message());
        }
    }

    private static void send(HttpExchange exchange, Reply reply) throws IOException {
        Headers headers = exchange.getResponseHeaders();
        HEADERS_OF_ALL.forEach(headers::set);
        headers.set("Content-Type", reply.mediaType());
        if (!reply.tag().isEmpty()) {
            headers.set("ETag", reply.tag());
        }
        if (reply.isKnown(exchange.getRequestHeaders().getFirst("If-None-Match"))) {
            exchange.sendResponseHeaders(Reply.NOT_MODIFIED, -1);
        } else if (exchange.getRequestMethod().equals("HEAD")) {
            headers.set("Content-Length", String.valueOf(reply.body().length));
            exchange.sendResponseHeaders(reply.status(), -1);
        } else {
            exchange.sendResponseHeaders(reply.status(), reply.body().length);
            exchange.getResponseBody().write(reply.body());
        }
    }
}
