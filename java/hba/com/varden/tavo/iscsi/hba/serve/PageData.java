package com.varden.tavo.iscsi.hba.serve;

import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.codes.AdapterState;
import com.varden.tavo.iscsi.codes.LinkState;
import com.varden.tavo.iscsi.codes.TargetState;
import com.varden.tavo.iscsi.hba.AdapterStatus;
import com.varden.tavo.iscsi.hba.TimeField;
import com.varden.tavo.iscsi.model.ConnectionError;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import java.io.IOException;
import java.time.Duration;
import java.time.Instant;
import java.util.Comparator;
import java.util.HashMap;
import java.util.List;
import java.util.Locale;
import java.util.Map;

/** What the page shows, from the last readings. No adapter is asked for it. */
final class PageData {
    /** How a state is to be looked upon; the page has a colour for each. */
    private enum Level { GOOD, WARNING, BAD, OFF }

    private final AdapterReaders readers;
    private final Duration interval;

    PageData(AdapterReaders readers, Duration interval) {
        this.readers = readers;
        this.interval = interval;
    }

    /** All adapters, for the cards. */
    Reply adapters() {
        return Reply.json(json -> {
            json.beginObject().name("intervalMillis").value(interval.toMillis());
            json.name("adapters").beginArray();
            for (AdapterReader reader : readers.all()) {
                writeCard(json, reader);
            }
            json.endArray().endObject();
        });
    }

    private static void writeCard(JsonWriter json, AdapterReader reader) throws IOException {
        Reading reading = reader.latest();
        json.beginObject().name("dev").value(reader.dev);
        json.name("stale").value(reader.isStale());
        json.name("ageMillis").value(reader.age().toMillis());
        json.name("failure").value(reader.failure());
        if (reading != null) {
            HBA hba = reading.hba();
            json.name("model").value(hba.getModel()).name("serial").value(hba.getSerialNumberStr());
            json.name("name").value(hba.getiSCSIName());
            json.name("address").value(hba.getIPAddress().isUnspecified() ? null : hba.getIPAddress().toString());
            json.name("firmware").value(hba.getFirmwareVersion());
            AdapterStatus status = new AdapterStatus(reader.dev, hba, null, null);
            // Without targets nobody misses the link.
            Level withoutLink = status.getTargetCount() > 0 ? Level.BAD : Level.OFF;
            writeState(json, "state", AdapterState.MEANINGS.text(hba.getState()), switch (hba.getState()) {
                case AdapterState.READY -> Level.GOOD;
                case AdapterState.NO_LINK -> withoutLink;
                default -> Level.WARNING;
            });
            boolean up = hba.getLinkStatus() == LinkState.UP;
            writeState(json, "link", LinkState.MEANINGS.text(hba.getLinkStatus()), up ? Level.GOOD : withoutLink);
            writeSessions(json, status);
            json.name("errors").value(reader.errors.counts().values().stream().mapToLong(Long::longValue).sum());
            json.name("lastError").value(ConnectionErrors.last(reading.errors()).orElse(0));
        }
        json.endObject();
    }

    private static void writeSessions(JsonWriter json, AdapterStatus status) throws IOException {
        if (status.getTargetCount() == 0) {
            writeState(json, "sessions", "no targets", Level.OFF);
        } else {
            boolean missing = !status.targets(TargetState.CONFIGURED).isEmpty();
            writeState(json, "sessions", status.getSessionCount() + " of " + status.getTargetCount(),
                missing ? Level.BAD : Level.GOOD);
        }
    }

    private static Level level(int targetState) {
        return switch (targetState) {
            case TargetState.LOGGED_IN -> Level.GOOD;
            case TargetState.LOGGED_OUT -> Level.OFF;
            case TargetState.CONFIGURED -> Level.BAD;
            default -> Level.WARNING;
        };
    }

    private static void writeState(JsonWriter json, String name, String text, Level level) throws IOException {
        json.name(name).beginObject().name("text").value(text);
        json.name("level").value(level.name().toLowerCase(Locale.ROOT)).endObject();
    }

    /** What an adapter's port did after a time, in milliseconds since 1970. */
    Reply history(AdapterReader reader, long after) {
        return Reply.json(json -> reader.history.write(json, after));
    }

    /** An adapter's targets with their state, and how often each of them failed. */
    Reply targets(AdapterReader reader) {
        Map<Integer, Long> errors = new HashMap<>();
        reader.errors.counts().forEach((kind, count) -> errors.merge(kind.target(), count, Long::sum));
        Reading reading = reader.latest();
        List<DevDBEntry> targets = reading == null ? List.of() : reading.targets();
        return Reply.json(json -> {
            json.beginArray();
            for (DevDBEntry target : targets) {
                json.beginObject().name("id").value(target.getTargetID());
                json.name("name").value(target.getNodeInfo().getiSCSIName());
                json.name("address").value(target.getNodeInfo().getIPAddress().toString());
                json.name("port").value(target.getDeviceEntry().getPortNumber());
                writeState(json, "state", TargetState.MEANINGS.text(target.getState()), level(target.getState()));
                json.name("errors").value(errors.getOrDefault(target.getTargetID(), 0L)).endObject();
            }
            json.endArray();
        });
    }

    /** What the log tells of one target, the newest first. */
    Reply log(AdapterReader reader, int targetID) {
        Reading reading = reader.latest();
        List<ConnectionError> errors = reading == null ? List.of() : reading.errors().stream()
            .filter(error -> error.getDeviceIndex() == targetID)
            .sorted(Comparator.comparingLong(ConnectionErrors::milliseconds).reversed()).toList();
        return Reply.json(json -> {
            json.beginArray();
            for (ConnectionError error : errors) {
                boolean failure = ConnectionErrors.isFailure(error);
                Instant time = TimeField.of(error);
                json.beginObject().name("time").value(time == null ? null : time.toEpochMilli());
                json.name("count").value(1 + error.getDupErrorCnt());
                writeState(json, "what", failure ? ConnectionErrors.describe(error) : "logged out",
                    failure ? Level.BAD : Level.OFF);
                json.endObject();
            }
            json.endArray();
        });
    }
}
