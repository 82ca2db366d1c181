package com.varden.tavo.iscsi.hba.serve;

import com.varden.tavo.iscsi.codes.ErrorEntryType;
import com.varden.tavo.iscsi.codes.ErrorType;
import com.varden.tavo.iscsi.codes.LoginStatus;
import com.varden.tavo.iscsi.hba.TimeField;
import com.varden.tavo.iscsi.model.ConnectionError;
import java.time.Instant;
import java.util.HashMap;
import java.util.List;
import java.util.Map;
import java.util.Objects;
import java.util.OptionalLong;
import java.util.TreeMap;

/**
 * Counts connection errors by target and kind. The adapter's log forgets its oldest entries, and of an error that comes
 * again it keeps the last time and a number that ends at 255; these counts only grow.
 */
final class ConnectionErrors {
    private static final int MOST_REPEATS = 255;

    /** What is counted. */
    record Kind(int target, String name) implements Comparable<Kind> {
        @Override
        public int compareTo(Kind other) {
            return target != other.target ? Integer.compare(target, other.target) : name.compareTo(other.name);
        }
    }

    private record Identity(int target, int state, int type, int detail) {}

    private record Seen(int count, long milliseconds) {}

    private final Map<Kind, Long> counts = new TreeMap<>();
    private Map<Identity, Seen> seen = Map.of();

    /** Takes a log into account and returns how many errors are new in it. */
    synchronized long add(List<ConnectionError> log) {
        Map<Identity, Seen> now = new HashMap<>();
        long added = 0;
        for (ConnectionError error : log) {
            if (!isFailure(error)) {
                continue;
            }
            Identity identity = new Identity(error.getDeviceIndex(), error.getConnState(), error.getErrorType(),
                error.getErrorDetail());
            Seen entry = new Seen(1 + error.getDupErrorCnt(), milliseconds(error));
            now.put(identity, entry);
            long more = difference(seen.get(identity), entry);
            if (more > 0) {
                counts.merge(new Kind(error.getDeviceIndex(), describe(error)), more, Long::sum);
                added += more;
            }
        }
        seen = now;
        return added;
    }

    private static long difference(Seen before, Seen now) {
        if (before == null || now.count < before.count) {
            return now.count;
        }
        boolean again = now.count > MOST_REPEATS && now.milliseconds > before.milliseconds;
        return again ? Math.max(1, now.count - before.count) : now.count - before.count;
    }

    synchronized Map<Kind, Long> counts() {
        return new TreeMap<>(counts);
    }

    /** Whether an entry of the log tells of an error; logouts on request are logged as well. */
    static boolean isFailure(ConnectionError error) {
        return error.getEntryType() != ErrorEntryType.LOGGED_OUT;
    }

    /** When it happened last, in milliseconds from where the adapter counts. */
    static long milliseconds(ConnectionError error) {
        return error.getSeconds() * 1000 + error.getMilliseconds();
    }

    /** When the last error of a log happened, in milliseconds since 1970, if the adapter tells. */
    static OptionalLong last(List<ConnectionError> log) {
        return log.stream().filter(ConnectionErrors::isFailure).map(TimeField::of).filter(Objects::nonNull)
            .mapToLong(Instant::toEpochMilli).max();
    }

    /** "no answer", "authentication failed". */
    static String describe(ConnectionError error) {
        return error.getErrorType() == ErrorType.REFUSED && error.getErrorDetail() != 0
            ? LoginStatus.text(error.getErrorDetail()) : ErrorType.MEANINGS.text(error.getErrorType());
    }
}
