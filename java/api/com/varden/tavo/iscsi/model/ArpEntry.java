package com.varden.tavo.iscsi.model;

import java.util.ArrayList;
import java.util.List;

/** One entry of the adapter's ARP table. */
public final class ArpEntry {
    /** Values of one entry in the flat array that the adapter's table arrives in. */
    public static final int STRIDE = 26;

    private final long[] values = new long[STRIDE];

    ArpEntry(long[] log, int from) {
        System.arraycopy(log, from, values, 0, STRIDE);
    }

    /** Cuts the flat array into entries; values that do not make a whole entry are left out. */
    static List<ArpEntry> list(long[] log) {
        List<ArpEntry> entries = new ArrayList<>(log.length / STRIDE);
        for (int i = 0; i + STRIDE <= log.length; i += STRIDE) {
            entries.add(new ArpEntry(log, i));
        }
        return entries;
    }

    private short[] bytes(int from, int length) {
        short[] bytes = new short[length];
        for (int i = 0; i < length; i++) {
            bytes[i] = (short) values[from + i];
        }
        return bytes;
    }

    /** The IP address. */
    public IPAddr getIPAddress() {
        return IPAddr.ofBytes(bytes(0, IPAddr.LENGTH));
    }

    /** Type of the IP address, 16 bits; its values are the adapter's. */
    public int getIPAddressType() {
        return (int) values[16];
    }

    /** Reserved word beside the IP address, 16 bits. */
    public int getIPAddressReserved() {
        return (int) values[17];
    }

    /** The hardware address: six bytes, one (0 to 255) per element. */
    public short[] getMACAddress() {
        return bytes(18, HBA.MAC_ADDRESS_LENGTH);
    }

    /** Validity flag, 8 bits. */
    public int getValid() {
        return (int) values[24];
    }

    /** Time value, 8 bits. */
    public int getTimeIn() {
        return (int) values[25];
    }
}
