package com.varden.tavo.iscsi.bench;

import com.varden.tavo.iscsi.jni.ApiWrapper;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import java.lang.reflect.Method;
import java.net.URL;
import java.net.URLClassLoader;
import java.nio.file.Path;
import java.util.function.ToIntFunction;

/**
 * A way between the management library's records and the model objects; both operations return a status.
 *
 * @param snapshot adds all target entries to the object; the bridge's also carries portal and firmware block, which are
 *     three of its thousand JNI calls
 * @param write writes up to 511 entries one by one; null where only reading is compared
 */
record Peer(ToIntFunction<HBA> snapshot, ToIntFunction<DevDBEntry[]> write) {
    static final int DEV = 0;

    /** Loads what the named peer needs and opens the adapter. */
    static Peer open(String name) {
        try {
            return switch (name) {
                case "bridge" -> {
                    ApiWrapper bridge = new ApiWrapper();
                    bridge.openDevice(DEV);
                    yield new Peer(hba -> bridge.getiSCSIHBAData(DEV, hba),
                        entries -> bridge.setDDBsData(DEV, entries));
                }
                case "jna-structure" -> new Peer(new JnaStructure(), null);
                case "foreign" -> new Peer(foreign(), null);
                default -> library(Path.of("libbench_" + name + ".so").toAbsolutePath().toString());
            };
        } catch (ReflectiveOperationException e) {
            throw new IllegalStateException(e);
        }
    }

    /** Has a bridge package of its own: a class has its native methods from one file, and ApiWrapper has the bridge. */
    private static final class SecondBridge extends URLClassLoader {
        SecondBridge() {
            super(new URL[] {ApiWrapper.class.getProtectionDomain().getCodeSource().getLocation()});
        }

        @Override
        protected Class<?> loadClass(String name, boolean resolve) throws ClassNotFoundException {
            boolean own = name.startsWith(ApiWrapper.class.getPackageName());
            return own ? findClass(name) : super.loadClass(name, resolve);
        }
    }

    // The file's native methods, through an ApiWrapper of their own.
    private static Peer library(String file) throws ReflectiveOperationException {
        System.setProperty("tavo.iscsi.library", file);
        Class<?> type = new SecondBridge().loadClass(ApiWrapper.class.getName());
        Object api = type.getConstructor().newInstance();
        type.getMethod("openDevice", int.class).invoke(api, DEV);
        Method snapshot = type.getMethod("getiSCSIHBAData", int.class, HBA.class);
        Method write = type.getMethod("setDDBsData", int.class, DevDBEntry[].class);
        return new Peer(hba -> call(snapshot, api, hba), entries -> call(write, api, entries));
    }

    private static int call(Method method, Object api, Object argument) {
        try {
            return (int) method.invoke(api, DEV, argument);
        } catch (ReflectiveOperationException e) {
            throw new IllegalStateException(e);
        }
    }

    // Compiled for a later Java than the rest.
    @SuppressWarnings("unchecked")
    private static ToIntFunction<HBA> foreign() throws ReflectiveOperationException {
        return (ToIntFunction<HBA>) Class.forName("com.varden.tavo.iscsi.bench.Foreign").getDeclaredConstructor()
            .newInstance();
    }
}
