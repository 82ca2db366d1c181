package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.model.ConnectionError;
import java.math.BigDecimal;
import java.time.Instant;
import java.time.LocalDateTime;
import java.time.ZoneId;

/**
 * When something was logged. People see date and time of the place where they are, documents RFC 3339. It is made of
 * the entry's seconds and milliseconds; an adapter that does not count from 1970 has no times, and people then see what
 * it counts.
 */
public final class TimeField extends ScalarField<Instant> {
    /** In September 2001. Nothing was logged before; a count of seconds below this began somewhere else. */
    private static final long EARLIEST = 1_000_000_000;

    TimeField() {
        super("time", "Time");
        readOnly();
    }

    /** The time of an entry, or null. */
    public static Instant of(ConnectionError error) {
        return error.getSeconds() < EARLIEST ? null
            : Instant.ofEpochSecond(error.getSeconds()).plusMillis(error.getMilliseconds());
    }

    @Override
    Instant get(Object owner) {
        return of((ConnectionError) owner);
    }

    @Override
    String show(Object owner) {
        Instant time = get(owner);
        if (time == null) {
            ConnectionError error = (ConnectionError) owner;
            return BigDecimal.valueOf(error.getSeconds() * 1000 + error.getMilliseconds(), 3) + " s";
        }
        return String.format("%1$tF %1$tT", LocalDateTime.ofInstant(time, ZoneId.systemDefault()));
    }
}
