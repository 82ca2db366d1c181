package com.varden.tavo.iscsi.jni;

/**
 * An adapter that is open until {@link #close}:
 *
 * <pre>{@code
 * try (var adapter = OpenAdapter.open(0)) {
 *     HBA hba = new HBA();
 *     int status = adapter.api().getiSCSIHBAData(adapter.dev(), hba);
 * }
 * }</pre>
 *
 * An adapter may be opened several times, from any threads: the first one opens it, and it is closed with the last.
 * Whoever uses this class leaves {@link ApiWrapper#initJNINative}, {@link ApiWrapper#openDevice} and {@link
 * ApiWrapper#closeDevice} to it.
 */
public final class OpenAdapter implements AutoCloseable {
    /** Indices run from 0 to this. */
    public static final int LAST_INDEX = 31;

    // How often an adapter is open; also the lock under which it is opened and closed, each adapter by itself.
    private static final class Users {
        private int count;
    }

    private static final Users[] USERS = new Users[LAST_INDEX + 1];

    static {
        for (int dev = 0; dev <= LAST_INDEX; dev++) {
            USERS[dev] = new Users();
        }
    }

    private final ApiWrapper api;
    private final int dev;
    private boolean closed;

    private OpenAdapter(ApiWrapper api, int dev) {
        this.api = api;
        this.dev = dev;
    }

    /**
     * Opens an adapter; loads the libraries when it is called first.
     *
     * @param dev the adapter's index, 0 to 31
     * @throws BridgeNotLoadedException when the native library or the management library cannot be loaded
     * @throws IllegalArgumentException when the index is out of range
     * @throws AdapterNotOpenedException when there is no such adapter, or the management library refuses to open it
     */
    public static OpenAdapter open(int dev) {
        if (dev < 0 || dev > LAST_INDEX) {
            throw new IllegalArgumentException("adapter " + dev + ": indices run from 0 to " + LAST_INDEX);
        }
        ApiWrapper api = new ApiWrapper();
        Users users = USERS[dev];
        synchronized (users) {
            if (users.count == 0 && !api.openDevice(dev)) {
                throw new AdapterNotOpenedException(dev);
            }
            users.count++;
        }
        return new OpenAdapter(api, dev);
    }

    /** The operations. */
    public ApiWrapper api() {
        return api;
    }

    /** The adapter's index, the first argument of the operations. */
    public int dev() {
        return dev;
    }

    /**
     * Closes the adapter, unless it is still open for others; a second call does nothing.
     *
     * @throws IllegalStateException when the management library refuses to close it; it is then open still, and may be
     *     closed once more
     */
    @Override
    public void close() {
        Users users = USERS[dev];
        synchronized (users) {
            if (closed) {
                return;
            }
            if (users.count == 1 && !api.closeDevice(dev)) {
                throw new IllegalStateException("adapter " + dev + " cannot be closed");
            }
            users.count--;
            closed = true;
        }
    }
}
