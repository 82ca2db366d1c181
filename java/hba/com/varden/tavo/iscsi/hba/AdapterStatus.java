package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.codes.AdapterState;
import com.varden.tavo.iscsi.codes.ErrorEntryType;
import com.varden.tavo.iscsi.codes.LinkState;
import com.varden.tavo.iscsi.codes.TargetState;
import com.varden.tavo.iscsi.model.ConnectionError;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import java.time.Duration;
import java.time.Instant;
import java.util.ArrayList;
import java.util.List;

/**
 * How an adapter is doing, in one reading.
 *
 * @param hba what was read of the adapter: model, name, state, link and its target entries; null when it could not be
 *     read
 * @param errors connection errors of the last day, repetitions counted in; null when the adapter does not tell the time
 * @param failure why the adapter could not be read; null when it was
 */
public record AdapterStatus(int dev, HBA hba, Integer errors, String failure) {
    private static final Duration DAY = Duration.ofDays(1);

    /** Reads the adapter; one that cannot be read has a status too. */
    static AdapterStatus read(Adapter adapter) {
        HBA hba = new HBA();
        try {
            adapter.check("reading the adapter", adapter.api.getiSCSIHBAData(adapter.dev, hba));
            return new AdapterStatus(adapter.dev, hba, errorsSince(Instant.now().minus(DAY), Logs.readErrors(adapter)),
                null);
        } catch (OperationFailed e) {
            return new AdapterStatus(adapter.dev, null, null, e.getMessage());
        }
    }

    private static Integer errorsSince(Instant begin, List<ConnectionError> log) {
        int count = 0;
        for (ConnectionError error : log) {
            Instant time = TimeField.of(error);
            if (time == null) {
                return null;
            }
            if (error.getEntryType() == ErrorEntryType.LOGIN_FAILED && time.isAfter(begin)) {
                count += 1 + error.getDupErrorCnt();
            }
        }
        return count;
    }

    private List<DevDBEntry> entries() {
        return hba == null ? List.of() : hba.getDeviceDataBaseEntries();
    }

    /** The target IDs of the entries in this state. */
    public List<Integer> targets(int state) {
        List<Integer> targets = new ArrayList<>();
        for (DevDBEntry entry : entries()) {
            if (entry.getState() == state) {
                targets.add(entry.getTargetID());
            }
        }
        return targets;
    }

    public int getDev() {
        return dev;
    }

    public HBA getHBA() {
        return hba;
    }

    public int getTargetCount() {
        return entries().size();
    }

    /** Targets that are logged in to. */
    public int getSessionCount() {
        return targets(TargetState.LOGGED_IN).size();
    }

    /** Whether a firmware image waits for a reset. */
    public boolean isResetPending() {
        return hba != null && hba.getState() == AdapterState.RESET_NEEDED;
    }

    /**
     * What keeps the adapter from its work, in words: nothing read, no link, targets that should have a session and
     * have none. A target that was logged out of on request is no trouble, nor is a link that is down while no target
     * is configured, a reset that is pending, or an error that is over.
     */
    public List<String> troubles() {
        if (failure != null) {
            return List.of(failure.replaceFirst("^adapter " + dev + ": ", ""));
        }
        List<String> troubles = new ArrayList<>();
        boolean noLink = hba.getLinkStatus() == LinkState.DOWN || hba.getState() == AdapterState.NO_LINK;
        if (noLink && getTargetCount() > 0) {
            troubles.add("no link");
        }
        List<Integer> without = targets(TargetState.CONFIGURED);
        if (!without.isEmpty()) {
            troubles.add("no session with target" + (without.size() == 1 ? " " : "s ")
                + DeviceDatabaseEntry.ranges(without));
        }
        return troubles;
    }
}
