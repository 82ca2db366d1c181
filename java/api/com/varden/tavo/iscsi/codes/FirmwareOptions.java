package com.varden.tavo.iscsi.codes;

/** Bits of the firmware options: {@code InitFW.getFWOptionsUnsigned}. */
public final class FirmwareOptions {
    public static final int DHCP = 0x0001;

    /** What the bits mean. */
    public static final BitMeanings MEANINGS = BitMeanings.ofDigits(4)
        .and(DHCP, "addresses by DHCP");

    private FirmwareOptions() {}
}
