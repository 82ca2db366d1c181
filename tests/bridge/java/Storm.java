import com.varden.tavo.iscsi.model.*;
import java.util.SplittableRandom;
import java.util.concurrent.atomic.AtomicReference;

/**
 * Many threads, mixed methods, the same and different adapters, opened and closed meanwhile. The library answers for
 * each adapter with bytes of its own, and with NOT_OPEN for one that is not open.
 */
final class Storm {
    private static final int NOT_OPEN = 0x20000101;

    private Storm() {}

    private static int pattern(int dev) {
        return (0x41 + dev) * 0x01010101;
    }

    private static String text(int dev, int length) {
        return String.valueOf((char) (0x41 + dev)).repeat(length);
    }

    static String run(int threads, int calls) throws InterruptedException {
        AtomicReference<String> wrong = new AtomicReference<>("");
        Thread[] all = new Thread[threads];
        for (int t = 0; t < threads; t++) {
            int seed = t;
            all[t] = new Thread(() -> {
                SplittableRandom random = new SplittableRandom(seed);
                for (int i = 0; i < calls && wrong.get().isEmpty(); i++) {
                    // Half of the calls go to an adapter of the thread's own, half to those that all share.
                    int dev = random.nextBoolean() ? 16 + seed : random.nextInt(4);
                    String what;
                    try {
                        what = one(dev, random.nextInt(8));
                    } catch (Throwable e) {
                        what = e.toString();
                    }
                    if (!what.isEmpty()) {
                        wrong.compareAndSet("", "adapter " + dev + ": " + what);
                    }
                }
            });
        }
        for (Thread thread : all) {
            thread.start();
        }
        for (Thread thread : all) {
            thread.join();
        }
        return wrong.get();
    }

    /** One call. What it read has to be the adapter's own. */
    private static String one(int dev, int kind) {
        HBA hba = new HBA();
        int status = 0;
        boolean right = true;
        switch (kind) {
            case 0 -> Calls.openDevice(dev);
            case 1 -> Calls.closeDevice(dev);
            case 2 -> {
                status = Calls.getiSCSIDriverInfo(dev, hba);
                right = status != 0
                        || hba.getDriverVersion().equals(text(dev, 128)) && hba.getDriverAttribute() == pattern(dev);
            }
            case 3 -> {
                status = Calls.getiSCSIAdapterInfo(dev, hba);
                right = status != 0 || hba.getiSCSIName().equals(text(dev, 256)) && hba.getAlias().equals(text(dev, 32))
                        && hba.getIPAddress().getAddressElement((short) 15) == 0x41 + dev;
            }
            case 4 -> {
                DevDBEntry entry = new DevDBEntry();
                entry.setTargetID(dev); // the library refuses an entry that comes with another adapter's handle
                entry.getNodeInfo().setAlias(text(dev, 20));
                status = Calls.setDDBData(dev, entry, 0);
            }
            case 5 -> {
                status = Calls.getCHAPTableData(dev, hba);
                right = status != 0 || hba.getCHAPTableEntries().size() == 5
                        && hba.getCHAPTableEntries().get(4).getChapName().equals(text(dev, 256));
                status = status == 0x1003 ? NOT_OPEN : status;
            }
            case 6 -> {
                status = Calls.getARPLog(dev, hba);
                long[] log = status != 0 ? null : hba.getARPLogEntries();
                right = status != 0 || log.length == 130 && log[129] == 0x41 + dev;
            }
            default -> {
                status = Calls.getiSCSIHBAData(dev, hba);
                right = status != 0 || hba.getModel().equals(text(dev, 128))
                        && hba.getDeviceDataBaseEntries().stream().allMatch(e -> e.getTargetID() == pattern(dev));
            }
        }
        return !right ? "call " + kind + " read another adapter's data"
                : status != 0 && status != NOT_OPEN ? "call " + kind + ": status " + Integer.toHexString(status) : "";
    }
}
