package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.jni.ApiWrapper;

/** An open adapter. */
final class Adapter implements AutoCloseable {
    /** Indices run from 0 to this. */
    static final int LAST_INDEX = 31;
    static final NumberField INDEX = new NumberField("dev", 16, "DEV").max(LAST_INDEX);

    private static ApiWrapper shared;

    final ApiWrapper api;
    final int dev;

    private Adapter(ApiWrapper api, int dev) {
        this.api = api;
        this.dev = dev;
    }

    /** The operations; loads the libraries when it is called first. */
    static ApiWrapper api() {
        if (shared == null) {
            shared = new ApiWrapper();
            shared.initJNINative();
        }
        return shared;
    }

    /** Opens an adapter, or returns null. */
    static Adapter tryOpen(int dev) {
        ApiWrapper api = api();
        return api.openDevice(dev) ? new Adapter(api, dev) : null;
    }

    /** Opens an adapter and, with a trace file, has its operations traced. */
    static Adapter open(int dev, String traceFile) {
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
    void check(String operation, int status) {
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
        api.closeDevice(dev);
    }
}
