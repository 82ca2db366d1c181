package com.varden.tavo.iscsi.hba.serve;

import com.varden.tavo.iscsi.codes.TargetState;
import com.varden.tavo.iscsi.hba.Adapter;
import com.varden.tavo.iscsi.model.ConnectionError;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.PortStatistics;
import java.time.Duration;
import java.util.List;
import java.util.Map;
import java.util.TreeMap;

/**
 * What one reading of an adapter found. It is not changed any more.
 *
 * @param hba versions, state, addresses and target entries
 * @param errors the log of connection errors
 * @param nanoseconds when it was complete, on the clock of {@link System#nanoTime}
 * @param epochMillis the same in milliseconds since 1970
 * @param took how long it took
 */
record Reading(HBA hba, PortStatistics statistics, List<ConnectionError> errors, long nanoseconds, long epochMillis,
               Duration took) {
    static Reading of(Adapter adapter) {
        long start = System.nanoTime();
        HBA hba = new HBA();
        adapter.check("reading the adapter", adapter.api.getiSCSIHBAData(adapter.dev, hba));
        adapter.check("reading the identity", adapter.api.getiSCSIAdapterInfo(adapter.dev, hba));
        PortStatistics statistics = new PortStatistics();
        adapter.check("reading the counters", adapter.api.getiSCSIStatistics(adapter.dev, statistics));
        HBA log = new HBA();
        adapter.check("reading the log", adapter.api.getConnectErrorLog(adapter.dev, log));
        long end = System.nanoTime();
        return new Reading(hba, statistics, log.getConnectErrorLog(), end, System.currentTimeMillis(),
            Duration.ofNanos(end - start));
    }

    Duration age() {
        return Duration.ofNanos(System.nanoTime() - nanoseconds);
    }

    List<DevDBEntry> targets() {
        return hba.getDeviceDataBaseEntries();
    }

    /** How many targets are in each state, known states first that no target is in. */
    Map<Integer, Integer> targetsByState() {
        Map<Integer, Integer> counts = new TreeMap<>();
        for (int state = TargetState.CONFIGURED; state <= TargetState.LOGGING_IN; state++) {
            counts.put(state, 0);
        }
        targets().forEach(target -> counts.merge(target.getState(), 1, Integer::sum));
        return counts;
    }
}
