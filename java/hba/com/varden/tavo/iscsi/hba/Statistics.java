package com.varden.tavo.iscsi.hba;

import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.model.PortStatistics;
import java.io.IOException;
import java.math.BigDecimal;
import java.math.BigInteger;
import java.util.List;
import picocli.CommandLine.Model.OptionSpec;

/** The counters of the port. */
final class Statistics {
    private static final CounterField[] COUNTERS = {
        new CounterField("MACTxFramesCount", "MAC frames sent"),
        new CounterField("MACTxBytesCount", "MAC bytes sent"),
        new CounterField("MACRxFramesCount", "MAC frames received"),
        new CounterField("MACRxBytesCount", "MAC bytes received"),
        new CounterField("MACCRCErrorCount", "MAC CRC errors"),
        new CounterField("IPTxPacketsCount", "IP packets sent"),
        new CounterField("IPTxBytesCount", "IP bytes sent"),
        new CounterField("IPTxFragmentsCount", "IP fragments sent"),
        new CounterField("IPRxPacketsCount", "IP packets received"),
        new CounterField("IPRxBytesCount", "IP bytes received"),
        new CounterField("IPRxFragmentsCount", "IP fragments received"),
        new CounterField("IPDatagramReassemblyCount", "IP reassemblies"),
        new CounterField("IPv6RxPacketsCount", "IPv6 packets received"),
        new CounterField("IPRxPacketErrorCount", "IP packet errors"),
        new CounterField("IPReassemblyErrorCount", "IP reassembly errors"),
        new CounterField("TCPTxSegmentsCount", "TCP segments sent"),
        new CounterField("TCPTxBytesCount", "TCP bytes sent"),
        new CounterField("TCPRxSegmentsCount", "TCP segments received"),
        new CounterField("TCPRxBytesCount", "TCP bytes received"),
        new CounterField("TCPTimerExpiredCount", "TCP timers expired"),
        new CounterField("TCPRxACKCount", "TCP ACKs received"),
        new CounterField("TCPTxACKCount", "TCP ACKs sent"),
        new CounterField("TCPRxErrorSegmentCount", "TCP segment errors"),
        new CounterField("TCPWindowProbeUpdateCount", "TCP window probes"),
        new CounterField("iSCSITxPDUCount", "iSCSI PDUs sent"),
        new CounterField("iSCSITxBytesCount", "iSCSI bytes sent"),
        new CounterField("iSCSIRxPDUCount", "iSCSI PDUs received"),
        new CounterField("iSCSIRxBytesCount", "iSCSI bytes received"),
        new CounterField("iSCSICompleteIOsCount", "iSCSI I/Os completed"),
        new CounterField("iSCSIFormatErrorCount", "iSCSI format errors"),
        new CounterField("iSCSIHeaderDigestCount", "iSCSI header digests"),
        new CounterField("iSCSIDataDigestErrorCount", "iSCSI data digests"),
        new CounterField("iSCSISeqErrorCount", "iSCSI sequence errors"),
    };
    private static final RecordTable TABLE = new RecordTable(COUNTERS);

    private Statistics() {}

    private static PortStatistics read(Adapter adapter) {
        PortStatistics statistics = new PortStatistics();
        adapter.check("reading the counters", adapter.api.getiSCSIStatistics(adapter.dev, statistics));
        return statistics;
    }

    /** hba stats show. */
    static final class Show extends DeviceCommand {
        private static final long LEAST_PAUSE = 100;
        private static final long LONGEST_PAUSE = 65_535_000;

        private final OptionSpec watch = option("--watch", "SECONDS",
            "Show them again every so many seconds, at least 0.1, with what was added, until interrupted.");
        private final OptionSpec times = option("--times", new NumberField("times", 31, "Times"),
            "With --watch: end after so many times.");
        private long pause;

        Show() {
            super("Shows the counters of the adapter's port.");
        }

        @Override
        void prepare() {
            if (watch.getValue() != null) {
                pause = milliseconds(watch.getValue());
            } else if (times.getValue() != null) {
                throw new BadInput("--times goes with --watch");
            }
        }

        private static long milliseconds(String seconds) {
            long value = seconds.matches("\\d{1,9}(\\.\\d{1,9})?")
                ? new BigDecimal(seconds).movePointRight(3).longValue() : 0;
            if (value < LEAST_PAUSE || value > LONGEST_PAUSE) {
                throw new BadInput("--watch: '" + seconds + "' is not permitted: 0.1 to 65535 s");
            }
            return value;
        }

        @Override
        int run(Adapter adapter) throws IOException {
            PortStatistics before = read(adapter);
            show(before, before);
            if (watch.getValue() == null) {
                return DONE;
            }
            long left = times.getValue() == null ? Long.MAX_VALUE : number(times);
            while (--left > 0) {
                System.out.flush();
                try {
                    Thread.sleep(pause);
                } catch (InterruptedException e) {
                    return DONE;
                }
                PortStatistics now = read(adapter);
                if (!wantsJson()) {
                    System.out.println();
                }
                show(now, before);
                if (System.out.checkError()) {
                    return DONE;
                }
                before = now;
            }
            return DONE;
        }

        // In JSON one document follows the other.
        private void show(PortStatistics now, PortStatistics before) throws IOException {
            if (wantsJson()) {
                JsonWriter json = jsonWriter();
                TABLE.write(json, now);
                finish(json);
                return;
            }
            boolean again = now != before;
            TextOutput.Columns columns = again ? new TextOutput.Columns("Counter", "Value", "Added")
                                               : new TextOutput.Columns("Counter", "Value");
            for (CounterField counter : COUNTERS) {
                BigInteger value = counter.get(now);
                columns.row(counter.label, value, value.subtract(counter.get(before)));
            }
            columns.print(System.out);
        }
    }

    /** hba stats reset. */
    static final class Reset extends WriteCommand {
        private final OptionSpec port = option("--port", new NumberField("port", 16, "Port"),
            "Port, 0 to 65535; 0 without this option.");

        Reset() {
            super("Sets the counters of the adapter's port to zero.");
        }

        @Override
        List<String> losses(Adapter adapter) {
            return List.of("sets the counters of adapter " + adapter.dev + " to zero");
        }

        @Override
        void write(Adapter adapter) {
            adapter.check("resetting the counters",
                adapter.api.resetISCSICounters(adapter.dev, port.getValue() == null ? 0 : number(port)));
        }

        @Override
        int report(Adapter adapter) throws IOException {
            done("The counters of adapter " + adapter.dev + " were set to zero.");
            return DONE;
        }
    }
}
