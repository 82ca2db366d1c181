package com.varden.tavo.iscsi.hba;

import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.model.PortStatistics;
import java.io.IOException;
import java.math.BigDecimal;
import java.math.BigInteger;
import java.math.RoundingMode;
import java.util.ArrayList;
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

    /** One counter as it is listed: what it stands at, and what it was at before, when there was a before. */
    private record Row(CounterField counter, PortStatistics now, PortStatistics before, double seconds) {
        /** What was added in a second; null at the first look and after the counter was set back. */
        BigDecimal perSecond() {
            BigInteger added = before == null ? BigInteger.ONE.negate()
                : counter.get(now).subtract(counter.get(before));
            return added.signum() < 0 ? null
                : new BigDecimal(added).divide(BigDecimal.valueOf(seconds), 1, RoundingMode.HALF_UP);
        }

        boolean countsErrors() {
            return counter.name.contains("Error");
        }
    }

    private static final RecordTable ROW = new RecordTable(
        new ScalarField<String>("name", "Name") {
            @Override
            String get(Object row) {
                return ((Row) row).counter.name;
            }
        },
        new ScalarField<String>("counter", "Counter") {
            @Override
            String get(Object row) {
                return ((Row) row).counter.label;
            }
        },
        new QuantityField<BigInteger>("value", "Value") {
            @Override
            BigInteger get(Object row) {
                return ((Row) row).counter.get(((Row) row).now);
            }
        },
        new QuantityField<BigDecimal>("perSecond", "Per second") {
            @Override
            BigDecimal get(Object row) {
                return ((Row) row).perSecond();
            }

            @Override
            boolean isTrouble(Object row) {
                BigDecimal rate = get(row);
                return ((Row) row).countsErrors() && rate != null && rate.signum() > 0;
            }
        });

    /** hba stats show. */
    static final class Show extends DeviceCommand {
        private static final double NANOSECONDS = 1e9;

        private final Listing listing = listing(ROW, "counter", "value");
        private final Watch watch = watch(false);
        private PortStatistics before;
        private long readBefore;

        Show() {
            super("Shows the counters of the adapter's port; with --watch also what is added in a second.");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            if (watch.isOn()) {
                listing.alsoShow("perSecond");
            }
            return watch.run(() -> showOnce(adapter));
        }

        private int showOnce(Adapter adapter) throws IOException {
            PortStatistics now = read(adapter);
            long readNow = System.nanoTime();
            List<Row> rows = new ArrayList<>();
            for (CounterField counter : COUNTERS) {
                rows.add(new Row(counter, now, before, (readNow - readBefore) / NANOSECONDS));
            }
            if (wantsJson()) {
                write(now, rows);
            } else {
                showList(rows, "");
            }
            before = now;
            readBefore = readNow;
            return DONE;
        }

        private void write(PortStatistics now, List<Row> rows) throws IOException {
            JsonWriter json = jsonWriter();
            json.beginObject();
            TABLE.writeMembers(json, now);
            if (before != null) {
                json.name("perSecond").beginObject();
                for (Row row : rows) {
                    json.name(row.counter.name).value(row.perSecond());
                }
                json.endObject();
            }
            json.endObject();
            finish(json);
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
