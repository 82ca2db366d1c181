package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.jni.AdapterNotOpenedException;
import com.varden.tavo.iscsi.jni.ApiWrapper;
import com.varden.tavo.iscsi.jni.OpenAdapter;

/** An open adapter. It may be open several times in one process. */
public final class Adapter implements AutoCloseable {
    /** Indices run from 0 to this. */
    public static final int LAST_INDEX = OpenAdapter.LAST_INDEX;
    static final NumberField INDEX = new NumberField("dev", 16, "DEV").max(LAST_INDEX);

    private static ApiWrapper shared;

    public final ApiWrapper api;
    public final int dev;
    private final OpenAdapter open;

    private Adapter(OpenAdapter open) {
        this.open = open;
        api = open.api();
        dev = open.dev();
    }

    /** The operations; loads the libraries when it is called first. */
    public static synchronized ApiWrapper api() {
        if (shared == null) {
            shared = new ApiWrapper();
            shared.initJNINative();
        }
        return shared;
    }

    /** Opens an adapter, or returns null. */
    public static Adapter tryOpen(int dev) {
        api();
        try {
            return new Adapter(OpenAdapter.open(dev));
        } catch (AdapterNotOpenedException e) {
            return null;
        }
    }

    /** Opens an adapter and, with a trace file, has its operations traced. */
    public static Adapter open(int dev, String traceFile) {
        Adapter adapter = tryOpen(dev);
        if (adapter == null) {
            throw new OperationFailed(
                "adapter " + dev + " cannot be opened. 'hba adapters' lists those that can be opened.");
        }
        if (traceFile != null) {
            adapter.check("switching the trace to " + traceFile + " on", adapter.api.enableSdmTrace(dev, traceFile));
        }
        return adapter;
    }

    /** Ends the command when the operation failed. */
    public void check(String operation, int status) {
        if (status != 0) {
            throw new OperationFailed("adapter " + dev + ": " + operation + " failed: " + Cure.describe(status),
                status);
        }
    }

    /** The same for an operation that says only whether it was done. */
    void check(String operation, boolean done) {
        if (!done) {
            throw new OperationFailed("adapter " + dev + ": " + operation + " failed: the adapter refused it");
        }
    }

    @Override
    public void close() {
        try {
            open.close();
        } catch (IllegalStateException e) {
            Terminal.message(e.getMessage());
        }
    }
}
