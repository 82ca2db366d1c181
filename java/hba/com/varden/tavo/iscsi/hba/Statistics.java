package com.varden.tavo.iscsi.hba;

import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.model.PortStatistics;
import java.io.IOException;
import java.math.BigInteger;
import picocli.CommandLine.Model.OptionSpec;

/** The counters of the port. */
final class Statistics {
    private static final RecordTable TABLE = new RecordTable(
        Field.counter("MACTxFramesCount", "MAC frames sent"),
        Field.counter("MACTxBytesCount", "MAC bytes sent"),
        Field.counter("MACRxFramesCount", "MAC frames received"),
        Field.counter("MACRxBytesCount", "MAC bytes received"),
        Field.counter("MACCRCErrorCount", "MAC CRC errors"),
        Field.counter("IPTxPacketsCount", "IP packets sent"),
        Field.counter("IPTxBytesCount", "IP bytes sent"),
        Field.counter("IPTxFragmentsCount", "IP fragments sent"),
        Field.counter("IPRxPacketsCount", "IP packets received"),
        Field.counter("IPRxBytesCount", "IP bytes received"),
        Field.counter("IPRxFragmentsCount", "IP fragments received"),
        Field.counter("IPDatagramReassemblyCount", "IP reassemblies"),
        Field.counter("IPv6RxPacketsCount", "IPv6 packets received"),
        Field.counter("IPRxPacketErrorCount", "IP packet errors"),
        Field.counter("IPReassemblyErrorCount", "IP reassembly errors"),
        Field.counter("TCPTxSegmentsCount", "TCP segments sent"),
        Field.counter("TCPTxBytesCount", "TCP bytes sent"),
        Field.counter("TCPRxSegmentsCount", "TCP segments received"),
        Field.counter("TCPRxBytesCount", "TCP bytes received"),
        Field.counter("TCPTimerExpiredCount", "TCP timers expired"),
        Field.counter("TCPRxACKCount", "TCP ACKs received"),
        Field.counter("TCPTxACKCount", "TCP ACKs sent"),
        Field.counter("TCPRxErrorSegmentCount", "TCP segment errors"),
        Field.counter("TCPWindowProbeUpdateCount", "TCP window probes"),
        Field.counter("iSCSITxPDUCount", "iSCSI PDUs sent"),
        Field.counter("iSCSITxBytesCount", "iSCSI bytes sent"),
        Field.counter("iSCSIRxPDUCount", "iSCSI PDUs received"),
        Field.counter("iSCSIRxBytesCount", "iSCSI bytes received"),
        Field.counter("iSCSICompleteIOsCount", "iSCSI I/Os completed"),
        Field.counter("iSCSIFormatErrorCount", "iSCSI format errors"),
        Field.counter("iSCSIHeaderDigestCount", "iSCSI header digests"),
        Field.counter("iSCSIDataDigestErrorCount", "iSCSI data digests"),
        Field.counter("iSCSISeqErrorCount", "iSCSI sequence errors"));

    private Statistics() {}

    static Command command(String name) {
        switch (name) {
            case "stats show":
                return new Show();
            default:
                return new Reset();
        }
    }

    private static PortStatistics read(Adapter adapter) {
        PortStatistics statistics = new PortStatistics();
        adapter.check("reading the counters", adapter.api.getiSCSIStatistics(adapter.dev, statistics));
        return statistics;
    }

    /** hba stats show. */
    static final class Show extends DeviceCommand {
        private final OptionSpec watch = option("--watch", Field.number("seconds", 16, "Seconds"),
            "Show them again every so many seconds, with what was added, until interrupted.");
        private final OptionSpec times = option("--times", Field.number("times", 31, "Times"),
            "With --watch: end after so many times.");

        Show() {
            super("Shows the counters of the adapter's port.");
        }

        @Override
        void prepare() {
            if (times.getValue() != null && watch.getValue() == null) {
                throw new BadInput("--times goes with --watch");
            }
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
                    Thread.sleep(1000L * number(watch));
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
                TABLE.write(json, now, false);
                finish(json);
                return;
            }
            boolean again = now != before;
            TextOutput.Columns columns = again ? new TextOutput.Columns("Counter", "Value", "Added")
                                               : new TextOutput.Columns("Counter", "Value");
            for (Field field : TABLE.fields()) {
                BigInteger value = (BigInteger) field.get(now);
                columns.row(field.label, value, value.subtract((BigInteger) field.get(before)));
            }
            columns.print(System.out);
        }
    }

    /** hba stats reset. */
    static final class Reset extends DeviceCommand {
        private final OptionSpec port = option("--port", Field.number("port", 16, "Port"),
            "Port, 0 to 65535; 0 without this option.");

        Reset() {
            super("Sets the counters of the adapter's port to zero.");
            needsConfirmation();
        }

        @Override
        void prepare() {
            confirm("sets the counters to zero");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            adapter.check("resetting the counters",
                adapter.api.resetISCSICounters(adapter.dev, port.getValue() == null ? 0 : number(port)));
            done("The counters of adapter " + adapter.dev + " were set to zero.");
            return DONE;
        }
    }
}
