package com.varden.tavo.iscsi.hba.serve;

import com.varden.tavo.iscsi.hba.Failure;
import com.varden.tavo.iscsi.hba.OperationFailed;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.time.Duration;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

/** What stands under which path: the page, its data, the documents of the tool, the metrics. */
final class Site {
    private static final Pattern DATA =
        Pattern.compile("/data/(?:(adapters)|(history|targets)/(\\d{1,2})|(units|log)/(\\d{1,2})/(\\d{1,3}))");
    private static final Pattern AFTER = Pattern.compile("after=(\\d{1,15})");
    private static final String API = "/api/";
    /** Metrics that are asked for at the same time are written once. */
    private static final long METRICS_NANOSECONDS = 1_000_000_000L;

    private final AdapterReaders readers;
    private final PageFiles files = new PageFiles();
    private final PageData data;
    private final ApiDocuments documents;
    private final Answers answers;
    private final Metrics[] metrics = new Metrics[Exposition.Form.values().length];

    private record Metrics(Reply reply, long written) {}

    Site(AdapterReaders readers, Duration interval) throws IOException {
        this.readers = readers;
        data = new PageData(readers, interval);
        answers = new Answers(interval);
        documents = new ApiDocuments(answers);
    }

    /** A file of the page, which holds nothing of the adapters, or null. */
    Reply file(String path) {
        return files.find(path.substring(1));
    }

    /** Everything else. */
    Reply find(String path, String query, String accept) {
        if (path.equals("/metrics")) {
            boolean open = accept != null && accept.contains("application/openmetrics-text");
            return metrics(open ? Exposition.Form.OPEN_METRICS : Exposition.Form.PROMETHEUS);
        }
        if (path.startsWith(API)) {
            return documents.get(path.substring(API.length()));
        }
        Matcher parts = DATA.matcher(path);
        return parts.matches() ? data(parts, query) : Reply.text(Reply.NOT_FOUND, "there is nothing under " + path);
    }

    private synchronized Reply metrics(Exposition.Form form) {
        Metrics kept = metrics[form.ordinal()];
        if (kept == null || System.nanoTime() - kept.written > METRICS_NANOSECONDS) {
            byte[] text = MetricsText.write(form, readers.all()).getBytes(StandardCharsets.UTF_8);
            kept = new Metrics(new Reply(Reply.OK, form.mediaType, text, ""), System.nanoTime());
            metrics[form.ordinal()] = kept;
        }
        return kept.reply;
    }

    private Reply data(Matcher parts, String query) {
        if (parts.group(1) != null) {
            return data.adapters();
        }
        boolean whole = parts.group(2) != null;
        int dev = Integer.parseInt(parts.group(whole ? 3 : 5));
        AdapterReader reader = readers.find(dev);
        if (reader == null) {
            return Reply.text(Reply.NOT_FOUND, "there is no adapter " + dev);
        }
        if (whole) {
            Matcher after = AFTER.matcher(query == null ? "" : query);
            return parts.group(2).equals("targets") ? data.targets(reader)
                : data.history(reader, after.matches() ? Long.parseLong(after.group(1)) : 0);
        }
        int target = Integer.parseInt(parts.group(6));
        return parts.group(4).equals("log") ? data.log(reader, target)
            : answers.get(dev, parts.group(), () -> units(dev, target));
    }

    private static Reply units(int dev, int target) {
        try {
            return Units.ask(dev, target);
        } catch (OperationFailed e) {
            return Reply.text(Reply.BAD_GATEWAY, Failure.of(e).message());
        }
    }
}
