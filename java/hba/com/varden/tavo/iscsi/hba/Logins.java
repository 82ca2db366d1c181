package com.varden.tavo.iscsi.hba;

import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.codes.ConnectionState;
import com.varden.tavo.iscsi.codes.ErrorEntryType;
import com.varden.tavo.iscsi.codes.ErrorType;
import com.varden.tavo.iscsi.codes.LinkState;
import com.varden.tavo.iscsi.codes.LoginStatus;
import com.varden.tavo.iscsi.codes.Status;
import com.varden.tavo.iscsi.codes.TargetState;
import com.varden.tavo.iscsi.model.ConnectionError;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import java.io.IOException;
import java.util.ArrayList;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.TreeMap;

/** What became of the logins that follow when target entries are written. */
final class Logins {
    private static final int DEFAULT_DEADLINE = 10;
    private static final long MARGIN = 2_000_000_000L;
    private static final long PAUSE_MILLIS = 50;

    private int sessions;
    /** The targets without a session, with the reason. */
    private final Map<Integer, Reason> failed = new TreeMap<>();

    private record Reason(String text, String cure) {
        @Override
        public String toString() {
            return text + "." + (cure.isEmpty() ? "" : " " + cure);
        }
    }

    private Logins() {}

    /** Waits until the logins to these targets have ended, at most a little longer than the longest may take. */
    static Logins await(Adapter adapter, List<DevDBEntry> written) {
        List<DevDBEntry> found = DeviceDatabaseEntry.readAll(adapter);
        long end = System.nanoTime() + deadline(written);
        int left = count(found, written, TargetState.LOGGING_IN);
        int all = left;
        while (left > 0 && System.nanoTime() < end && !Interruption.isRequested()) {
            Progress.show("logging in", all - left, all);
            try {
                Thread.sleep(PAUSE_MILLIS);
            } catch (InterruptedException e) {
                break;
            }
            found = DeviceDatabaseEntry.readAll(adapter);
            left = count(found, written, TargetState.LOGGING_IN);
        }
        Progress.end();
        Logins logins = new Logins();
        logins.sessions = count(found, written, TargetState.LOGGED_IN);
        logins.explain(adapter, found, written);
        return logins;
    }

    /** Logs in to a target that the adapter has; ends the command when that fails. */
    static void logIn(Adapter adapter, DevDBEntry present) {
        DevDBEntry entry = DeviceDatabaseEntry.copy(present);
        entry.setState(TargetState.CONFIGURED);
        adapter.check("the login to target " + entry.getTargetID(),
            adapter.api.setDDBData(adapter.dev, entry, entry.getTargetID()));
        Logins logins = await(adapter, List.of(entry));
        if (logins.sessions == 0) {
            Reason reason = logins.failed.get(entry.getTargetID());
            throw new OperationFailed("adapter " + adapter.dev + " did not log in to "
                + DeviceDatabaseEntry.describe(entry) + (reason == null ? "" : ": " + reason));
        }
        Differences differences = new Differences("written");
        DeviceDatabaseEntry.TABLE.compare(entry, DeviceDatabaseEntry.read(adapter, entry.getTargetID()),
            "targets[targetID " + entry.getTargetID() + "]", differences);
        WriteCommand.verify("target " + entry.getTargetID() + " was written", differences);
    }

    /** Ends the session with a target. */
    static void logOut(Adapter adapter, int target, int options, int newIndex) {
        adapter.check("the logout", adapter.api.logoutDDB(adapter.dev, target, options, newIndex));
        DevDBEntry there = DeviceDatabaseEntry.find(DeviceDatabaseEntry.readAll(adapter), target);
        if (there != null && there.getState() == TargetState.LOGGED_IN) {
            throw new OperationFailed("adapter " + adapter.dev + ": the logout was accepted, but the session with "
                + DeviceDatabaseEntry.describe(there) + " goes on");
        }
    }

    private static long deadline(List<DevDBEntry> written) {
        long seconds = 0;
        for (DevDBEntry entry : written) {
            int timeout = entry.getDeviceEntry().getTaskManagementTimeout() & 0xFFFF;
            seconds = Math.max(seconds, timeout == 0 ? DEFAULT_DEADLINE : timeout);
        }
        return seconds * 1_000_000_000L + MARGIN;
    }

    private static int count(List<DevDBEntry> found, List<DevDBEntry> written, int state) {
        int count = 0;
        for (DevDBEntry entry : written) {
            DevDBEntry there = DeviceDatabaseEntry.find(found, entry.getTargetID());
            count += there != null && there.getState() == state ? 1 : 0;
        }
        return count;
    }

    private void explain(Adapter adapter, List<DevDBEntry> found, List<DevDBEntry> written) {
        boolean linkUp = true;
        HBA hba = null;
        for (DevDBEntry entry : written) {
            int target = entry.getTargetID();
            DevDBEntry there = DeviceDatabaseEntry.find(found, target);
            if (there != null && there.getState() == TargetState.LOGGING_IN) {
                failed.put(target, new Reason("still logging in", ""));
            } else if (there != null && there.getState() == TargetState.CONFIGURED) {
                if (hba == null) {
                    hba = new HBA();
                    adapter.check("reading the state", adapter.api.getiSCSIHBAState(adapter.dev, hba));
                    adapter.check("reading the log", adapter.api.getConnectErrorLog(adapter.dev, hba));
                    linkUp = hba.getLinkStatus() != LinkState.DOWN;
                }
                failed.put(target, linkUp ? reason(hba.getConnectErrorLog(), target)
                    : new Reason("the adapter has no link", "Check its cable and the switch."));
            }
        }
    }

    // The newest entry of the log stands last.
    private static Reason reason(List<ConnectionError> log, int target) {
        for (int i = log.size() - 1; i >= 0; i--) {
            ConnectionError error = log.get(i);
            if (error.getDeviceIndex() == target && error.getEntryType() == ErrorEntryType.LOGIN_FAILED) {
                return reason(error);
            }
        }
        return new Reason("the connection-error log has no reason", "");
    }

    private static Reason reason(ConnectionError error) {
        int detail = error.getErrorDetail();
        return switch (error.getErrorType()) {
            case ErrorType.NO_ANSWER -> new Reason(Status.ERR_UNREACHABLE.meaning(), Cure.of(Status.ERR_UNREACHABLE));
            case ErrorType.TIMEOUT -> new Reason(Status.ERR_TIMEOUT.meaning(), Cure.of(Status.ERR_TIMEOUT));
            default -> detail == 0
                ? new Reason("the target did not prove itself, or there is nothing to prove this side with",
                    Cure.of(Status.ERR_AUTHENTICATION))
                : new Reason("the login was refused: " + LoginStatus.describe(detail), Cure.of(status(detail)));
        };
    }

    private static Status status(int detail) {
        if (detail == LoginStatus.NOT_FOUND.status()) {
            return Status.ERR_NO_SUCH_TARGET;
        }
        boolean chap = detail == LoginStatus.AUTHENTICATION_FAILED.status()
            || detail == LoginStatus.AUTHORIZATION_FAILED.status();
        return chap ? Status.ERR_AUTHENTICATION : Status.ERR_LOGIN_REFUSED;
    }

    /** For people: how many logged in, and for each reason the targets that did not. */
    List<String> lines() {
        List<String> lines = new ArrayList<>();
        if (sessions + failed.size() == 1) {
            lines.add(failed.isEmpty() ? "It logged in." : "It did not log in: " + failed.values().iterator().next());
        } else if (sessions + failed.size() > 0) {
            lines.add(sessions + " logged in, " + failed.size() + " did not" + (failed.isEmpty() ? "." : ":"));
            Map<Reason, List<Integer>> targets = new LinkedHashMap<>();
            for (Map.Entry<Integer, Reason> each : failed.entrySet()) {
                targets.computeIfAbsent(each.getValue(), reason -> new ArrayList<>()).add(each.getKey());
            }
            for (Map.Entry<Reason, List<Integer>> each : targets.entrySet()) {
                lines.add((each.getValue().size() == 1 ? "  target " : "  targets ")
                    + DeviceDatabaseEntry.ranges(each.getValue()) + ": " + each.getKey());
            }
        }
        return lines;
    }

    void write(JsonWriter json) throws IOException {
        json.beginObject().name("sessions").value(sessions).name("failed").beginArray();
        for (Map.Entry<Integer, Reason> each : failed.entrySet()) {
            json.beginObject().name("targetID").value(each.getKey());
            json.name("reason").value(each.getValue().text()).endObject();
        }
        json.endArray().endObject();
    }
}
