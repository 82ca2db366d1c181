package com.varden.tavo.iscsi.jni;

/** There is no adapter with this index, or the management library refuses to open it. */
public final class AdapterNotOpenedException extends RuntimeException {
    private static final long serialVersionUID = 1;

    private final int dev;

    AdapterNotOpenedException(int dev) {
        super("adapter " + dev + " cannot be opened");
        this.dev = dev;
    }

    /** The adapter's index. */
    public int dev() {
        return dev;
    }
}
