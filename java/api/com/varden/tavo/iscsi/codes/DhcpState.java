package com.varden.tavo.iscsi.codes;

/** Whether an adapter has its addresses from DHCP: {@code HBA.getDhcpState}. */
public final class DhcpState {
    public static final int OFF = 0;
    public static final int ON = 1;

    /** What the numbers mean. */
    public static final Meanings MEANINGS = Meanings.of(OFF, "off").and(ON, "on");

    private DhcpState() {}
}
