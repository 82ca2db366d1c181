package com.varden.tavo.iscsi.codes;

/** Types of an IP address: {@code ArpEntry.getIPAddressType}. */
public final class AddressType {
    public static final int NONE = 0;
    public static final int IPV4 = 1;
    public static final int IPV6 = 2;

    /** What the numbers mean. */
    public static final Meanings MEANINGS = Meanings.of(NONE, "none")
        .and(IPV4, "IPv4")
        .and(IPV6, "IPv6");

    private AddressType() {}
}
