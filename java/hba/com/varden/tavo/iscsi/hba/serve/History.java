package com.varden.tavo.iscsi.hba.serve;

import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.model.PortStatistics;
import java.io.IOException;
import java.time.Duration;
import java.util.List;

/** What an adapter's port did per second over the last hour: a ring of fixed size with one point for each reading. */
final class History {
    private static final Duration SPAN = Duration.ofHours(1);
    /** Between two readings a counter that goes on grows by less; one that was reset seems to grow by more. */
    private static final long LARGEST_STEP = 1L << 62;

    /** A line of the plot: the sum of some counters. */
    private record Series(String name, PortCounter counter) {}

    private static final List<Series> SERIES = List.of(
        new Series("framesSent", PortCounter.MAC_SENT_FRAMES),
        new Series("framesReceived", PortCounter.MAC_RECEIVED_FRAMES),
        new Series("bytesSent", PortCounter.MAC_SENT_BYTES),
        new Series("bytesReceived", PortCounter.MAC_RECEIVED_BYTES),
        new Series("pdusSent", PortCounter.ISCSI_SENT_PDUS),
        new Series("pdusReceived", PortCounter.ISCSI_RECEIVED_PDUS));

    private final long[] times;
    private final float[][] rates;
    private final int[] errors;
    private int next;
    private int size;

    History(Duration interval) {
        int capacity = (int) Math.max(2, SPAN.dividedBy(interval));
        times = new long[capacity];
        rates = new float[SERIES.size()][capacity];
        errors = new int[capacity];
    }

    /** Adds the time between two readings. */
    synchronized void add(Reading before, Reading now, long newErrors) {
        double seconds = (now.nanoseconds() - before.nanoseconds()) / 1e9;
        for (int i = 0; i < rates.length; i++) {
            PortCounter counter = SERIES.get(i).counter;
            rates[i][next] = (float) (step(counter, before.statistics(), now.statistics()) / seconds);
        }
        advance(now.epochMillis(), newErrors);
    }

    /** Adds a point at which nothing is known. */
    synchronized void addGap(long epochMillis) {
        for (float[] line : rates) {
            line[next] = Float.NaN;
        }
        advance(epochMillis, 0);
    }

    private void advance(long epochMillis, long newErrors) {
        times[next] = epochMillis;
        errors[next] = (int) Math.min(newErrors, Integer.MAX_VALUE);
        next = (next + 1) % times.length;
        size = Math.min(size + 1, times.length);
    }

    // Counters go on at 0 after the end of their 64 bits; one that was reset began at 0.
    private static double step(PortCounter counter, PortStatistics before, PortStatistics now) {
        long difference = counter.of(now) - counter.of(before);
        return difference >= 0 && difference < LARGEST_STEP ? difference : Math.max(0, counter.of(now));
    }

    /** Writes the points after a time, oldest first, as one array for each line. */
    synchronized void write(JsonWriter json, long after) throws IOException {
        int first = size;
        while (first > 0 && times[place(first - 1)] > after) {
            first--;
        }
        json.beginObject().name("times").beginArray();
        for (int i = first; i < size; i++) {
            json.value(times[place(i)]);
        }
        json.endArray();
        for (int line = 0; line < rates.length; line++) {
            json.name(SERIES.get(line).name).beginArray();
            for (int i = first; i < size; i++) {
                float rate = rates[line][place(i)];
                if (Float.isNaN(rate)) {
                    json.nullValue();
                } else {
                    json.value(Math.round(rate * 10.0) / 10.0);
                }
            }
            json.endArray();
        }
        json.name("errors").beginArray();
        for (int i = first; i < size; i++) {
            json.value(errors[place(i)]);
        }
        json.endArray().endObject();
    }

    private int place(int i) {
        return (next - size + i + times.length) % times.length;
    }
}
