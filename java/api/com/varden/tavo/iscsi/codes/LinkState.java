package com.varden.tavo.iscsi.codes;

/** States of an adapter's link: {@code HBA.getLinkStatus}. */
public final class LinkState {
    public static final int DOWN = 0;
    public static final int UP = 1;

    /** What the numbers mean. */
    public static final Meanings MEANINGS = Meanings.of(DOWN, "down").and(UP, "up");

    private LinkState() {}
}
