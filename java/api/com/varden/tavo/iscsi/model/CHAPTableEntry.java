package com.varden.tavo.iscsi.model;

import java.util.Arrays;

/**
 * One entry of the adapter's CHAP table: a name and its secret.
 *
 * Reading fills both forms of the secret from the same bytes. A device database entry refers to an entry by its index.
 */
public final class CHAPTableEntry {
    /** Bytes of a secret. */
    public static final int SECRET_LENGTH = 100;

    private int flags;
    private int link;
    private int chapSecretLength;
    private short[] chapSecret = new short[SECRET_LENGTH];
    private String chapSecretStr;
    private String chapName;

    /** Flag bits of the entry, 0 to 255. */
    public int getFlags() {
        return flags;
    }

    public void setFlags(int flags) {
        this.flags = flags;
    }

    /** Link of the entry. 16 bits are read; 8 bits, 0 to 255, are written. */
    public int getLink() {
        return link;
    }

    public void setLink(int link) {
        this.link = link;
    }

    /** Length of the secret in bytes, 0 to 100; carried as it is. */
    public int getChapSecretLength() {
        return chapSecretLength;
    }

    public void setChapSecretLength(int chapSecretLength) {
        this.chapSecretLength = chapSecretLength;
    }

    /**
     * The secret: always 100 bytes, one (0 to 255) per element, zero-filled. Written only when
     * {@link #getChapSecretStr} is null.
     */
    public short[] getChapSecret() {
        return chapSecret.clone();
    }

    /** Takes up to 100 bytes; a shorter secret is filled up with zeros, and null is all zeros. */
    public void setChapSecret(short[] chapSecret) {
        short[] present = this.chapSecret;
        this.chapSecret = Elements.filledUp(chapSecret, SECRET_LENGTH, "chapSecret");
        Arrays.fill(present, (short) 0);
    }

    /**
     * The secret as text, at most 100 bytes of UTF-8. When it is not null it is written in place of {@link
     * #getChapSecret}.
     */
    public String getChapSecretStr() {
        return chapSecretStr;
    }

    public void setChapSecretStr(String chapSecretStr) {
        this.chapSecretStr = chapSecretStr;
    }

    /** CHAP name, at most 256 bytes of UTF-8; null when not supplied. */
    public String getChapName() {
        return chapName;
    }

    public void setChapName(String chapName) {
        this.chapName = chapName;
    }
}
