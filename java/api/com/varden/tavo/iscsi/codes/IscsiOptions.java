package com.varden.tavo.iscsi.codes;

/** Bits of the iSCSI options: {@code DevEntry.getiSCSIOptionsUnsigned}. The software adapter has no use for them. */
public final class IscsiOptions {
    public static final int HEADER_DIGEST = 0x2000;
    public static final int NO_IMMEDIATE_DATA = 0x0800;
    public static final int INITIAL_R2T = 0x0400;

    /** What the bits mean. */
    public static final BitMeanings MEANINGS = BitMeanings.ofDigits(4)
        .and(HEADER_DIGEST, "header digest")
        .and(NO_IMMEDIATE_DATA, "no immediate data")
        .and(INITIAL_R2T, "initial R2T");

    private IscsiOptions() {}
}
