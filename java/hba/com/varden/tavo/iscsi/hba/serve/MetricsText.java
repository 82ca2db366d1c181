package com.varden.tavo.iscsi.hba.serve;

import com.varden.tavo.iscsi.codes.AdapterState;
import com.varden.tavo.iscsi.codes.LinkState;
import com.varden.tavo.iscsi.codes.TargetState;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import java.math.BigDecimal;
import java.math.RoundingMode;
import java.time.Duration;
import java.util.List;
import java.util.Locale;
import java.util.function.BiConsumer;
import java.util.function.LongUnaryOperator;
import java.util.function.ToLongFunction;

/** What is measured of all adapters. Of an adapter whose last reading is stale, only that is told. */
final class MetricsText {
    private static final int SECONDS_DIGITS = 6;

    private final Exposition out;
    private final List<AdapterReader> readers;

    private MetricsText(Exposition.Form form, List<AdapterReader> readers) {
        out = new Exposition(form);
        this.readers = readers;
    }

    static String write(Exposition.Form form, List<AdapterReader> readers) {
        MetricsText text = new MetricsText(form, readers);
        text.writeReading();
        text.writeAdapters();
        text.writeTargets();
        text.writeErrors();
        text.writeCounters();
        return text.out.finish();
    }

    private void writeReading() {
        out.gauge("reading_stale", "", "Whether the last reading of the adapter is too old to be shown (1) or not (0)");
        readers.forEach(reader -> out.sample(reader.isStale() ? "1" : "0", labels(reader)));
        out.gauge("reading_age", "seconds", "Age of the last reading of the adapter");
        readers.forEach(reader -> out.sample(seconds(reader.age()), labels(reader)));
        out.gauge("reading_duration", "seconds", "How long the last complete reading of the adapter took");
        forEachReading((reader, reading) -> out.sample(seconds(reading.took()), labels(reader)));
        out.counter("reading_failures", "", "Readings of the adapter that failed");
        readers.forEach(reader -> out.sample(String.valueOf(reader.failures()), labels(reader)));
    }

    private void writeAdapters() {
        out.gauge("adapter_info", "", "What the adapter is; always 1");
        forEachFresh((reader, reading) -> {
            HBA hba = reading.hba();
            out.sample("1", labels(reader, "model", hba.getModel(), "firmware", hba.getFirmwareVersion(), "name",
                hba.getiSCSIName()));
        });
        out.gauge("adapter_state", "", "1 for the state that the adapter is in, 0 for the others");
        forEachFresh((reader, reading) -> {
            int present = reading.hba().getState();
            for (int state = AdapterState.READY; state <= AdapterState.RESET_NEEDED; state++) {
                out.sample(state == present ? "1" : "0", labels(reader, "state", AdapterState.MEANINGS.text(state)));
            }
            if (!AdapterState.MEANINGS.knows(present)) {
                out.sample("1", labels(reader, "state", AdapterState.MEANINGS.text(present)));
            }
        });
        gauge("adapter_link_up", "Whether the link of the adapter is up (1) or down (0)",
            reading -> reading.hba().getLinkStatus() == LinkState.UP ? 1 : 0);
        out.gauge("targets", "", "Targets of the adapter by state");
        forEachFresh((reader, reading) -> reading.targetsByState().forEach((state, count) ->
            out.sample(String.valueOf(count), labels(reader, "state", TargetState.MEANINGS.text(state)))));
    }

    private void writeTargets() {
        out.gauge("target_info", "", "What the target is; always 1");
        forEachTarget((labels, target) -> out.sample("1", extended(labels, "name", target.getNodeInfo().getiSCSIName(),
            "address", target.getNodeInfo().getIPAddress().toString())));
        out.gauge("target_up", "", "Whether there is a session with the target (1) or not (0); a target that was "
            + "logged out on request has no sample");
        forEachTarget((labels, target) -> {
            if (target.getState() != TargetState.LOGGED_OUT) {
                out.sample(target.getState() == TargetState.LOGGED_IN ? "1" : "0", labels);
            }
        });
    }

    private void writeErrors() {
        out.counter("connection_errors", "", "Connection errors in the log of the adapter by target and kind, counted "
            + "on from what the log held at first");
        forEachFresh((reader, reading) -> reader.errors.counts().forEach((kind, count) -> out.sample(
            String.valueOf(count), labels(reader, "target", String.valueOf(kind.target()), "kind", kind.name()))));
        lastError("connection_error_last_timestamp", "When the last connection error was logged, since 1970",
            milliseconds -> milliseconds);
        lastError("connection_error_last_age", "How long ago the last connection error was logged",
            milliseconds -> Math.max(0, System.currentTimeMillis() - milliseconds));
    }

    private void lastError(String name, String help, LongUnaryOperator value) {
        out.gauge(name, "seconds", help);
        forEachFresh((reader, reading) -> ConnectionErrors.last(reading.errors())
            .ifPresent(last -> out.sample(seconds(Duration.ofMillis(value.applyAsLong(last))), labels(reader))));
    }

    private void writeCounters() {
        for (PortCounter counter : PortCounter.values()) {
            String name = counter.name().toLowerCase(Locale.ROOT);
            String unit = counter.unit;
            out.counter(name.substring(0, name.length() - unit.length() - 1), unit, counter.help);
            forEachFresh((reader, reading) ->
                out.sample(Long.toUnsignedString(counter.of(reading.statistics())), labels(reader)));
        }
    }

    private void gauge(String name, String help, ToLongFunction<Reading> value) {
        out.gauge(name, "", help);
        forEachFresh((reader, reading) ->
            out.sample(String.valueOf(value.applyAsLong(reading)), labels(reader)));
    }

    private void forEachReading(BiConsumer<AdapterReader, Reading> work) {
        for (AdapterReader reader : readers) {
            Reading reading = reader.latest();
            if (reading != null) {
                work.accept(reader, reading);
            }
        }
    }

    private void forEachFresh(BiConsumer<AdapterReader, Reading> work) {
        forEachReading((reader, reading) -> {
            if (!reader.isStale()) {
                work.accept(reader, reading);
            }
        });
    }

    private void forEachTarget(BiConsumer<String[], DevDBEntry> work) {
        forEachFresh((reader, reading) -> reading.targets().forEach(target ->
            work.accept(labels(reader, "target", String.valueOf(target.getTargetID())), target)));
    }

    private static String[] labels(AdapterReader reader, String... more) {
        Reading reading = reader.latest();
        String serial = reading == null ? "" : reading.hba().getSerialNumberStr();
        return extended(new String[] {"adapter", String.valueOf(reader.dev), "serial", serial}, more);
    }

    private static String[] extended(String[] labels, String... more) {
        String[] all = new String[labels.length + more.length];
        System.arraycopy(labels, 0, all, 0, labels.length);
        System.arraycopy(more, 0, all, labels.length, more.length);
        return all;
    }

    private static String seconds(Duration duration) {
        return BigDecimal.valueOf(duration.toNanos(), 9).setScale(SECONDS_DIGITS, RoundingMode.HALF_UP)
            .stripTrailingZeros().toPlainString();
    }
}
