package com.varden.tavo.iscsi.codes;

/** Kinds of firmware image: the last argument of {@code ApiWrapper.iSCSIUpdateFW}. */
public final class ImageType {
    public static final int FIRMWARE = 0;
    public static final int OPTION_ROM = 1;

    /** What the numbers mean. */
    public static final Meanings MEANINGS = Meanings.of(FIRMWARE, "firmware").and(OPTION_ROM, "option ROM");

    private ImageType() {}
}
