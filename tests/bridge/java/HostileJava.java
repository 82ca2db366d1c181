import com.varden.tavo.iscsi.model.*;
import java.io.ByteArrayOutputStream;
import java.io.DataOutputStream;
import java.lang.reflect.Field;
import java.lang.reflect.Proxy;
import java.util.Arrays;
import java.util.LinkedHashMap;
import java.util.Map;
import java.util.function.ToIntFunction;

/** Java objects that mean no good. Each test returns an empty text, or tells what went wrong. */
final class HostileJava {
    private static final int DEV = 5;
    private static final int ERR_JNI_NULL = 0x1003;
    private static int invocations;
    private static int throwAt;
    private static int nullAt;
    private static int arrayLength = 6;

    private static final Map<String, ToIntFunction<Everything>> CALLS = new LinkedHashMap<>();

    static {
        CALLS.put("getiSCSIAdapterInfo", o -> Calls.getiSCSIAdapterInfo(DEV, o));
        CALLS.put("getiSCSIFWInfo", o -> Calls.getiSCSIFWInfo(DEV, o));
        CALLS.put("getiSCSIDriverInfo", o -> Calls.getiSCSIDriverInfo(DEV, o));
        CALLS.put("getChipInfo", o -> Calls.getChipInfo(DEV, o));
        CALLS.put("getiSCSIHBAState", o -> Calls.getiSCSIHBAState(DEV, o));
        CALLS.put("getiSCSIHBAData", o -> Calls.getiSCSIHBAData(DEV, o));
        CALLS.put("setDDBData", o -> Calls.setDDBData(DEV, o, 0));
        CALLS.put("setDDBsData", o -> Calls.setDDBsData(DEV, new Object[] {o, o, o}));
        CALLS.put("getiSCSITargetData", o -> Calls.getiSCSITargetData(DEV, o, o));
        CALLS.put("getiSCSILunData", o -> Calls.getiSCSILunData(DEV, o));
        CALLS.put("getFWData", o -> Calls.getFWData(DEV, o));
        CALLS.put("getISCSIFWDefaults", o -> Calls.getISCSIFWDefaults(DEV, o));
        CALLS.put("setFWData", o -> Calls.setFWData(DEV, o));
        CALLS.put("getScsiReportLUNsData", o -> Calls.getScsiReportLUNsData(DEV, o, o));
        CALLS.put("getScsiInquiryData", o -> Calls.getScsiInquiryData(DEV, o, o));
        CALLS.put("getScsiReadCapacityData", o -> Calls.getScsiReadCapacityData(DEV, o));
        CALLS.put("getiSCSIStatistics", o -> Calls.getiSCSIStatistics(DEV, o));
        CALLS.put("getConnectErrorLog", o -> Calls.getConnectErrorLog(DEV, o));
        CALLS.put("getARPLog", o -> Calls.getARPLog(DEV, o));
        CALLS.put("getCHAPTableData", o -> Calls.getCHAPTableData(DEV, o));
        CALLS.put("getiSNSDiscoveryConfig", o -> Calls.getiSNSDiscoveryConfig(DEV, o));
        CALLS.put("setiSNSDiscoveryConfig", o -> Calls.setiSNSDiscoveryConfig(DEV, o));
        CALLS.put("getiSNSTargets", o -> Calls.getiSNSTargets(DEV, o));
    }

    private HostileJava() {}

    /** An object with every method. The throwAt-th invocation throws, the nullAt-th returns null. */
    private static Everything object() {
        return (Everything) Proxy.newProxyInstance(Everything.class.getClassLoader(), new Class<?>[] {Everything.class},
                (proxy, method, arguments) -> {
                    if (++invocations == throwAt) {
                        throw new IllegalStateException(method.getName());
                    }
                    Class<?> type = method.getReturnType();
                    if (type == int.class) {
                        return 3;
                    } else if (type == byte.class) {
                        return (byte) 3;
                    } else if (type == boolean.class) {
                        return true;
                    } else if (type == void.class || invocations == nullAt) {
                        return null;
                    } else if (type == short[].class) {
                        return arrayLength < 0 ? null : new short[arrayLength];
                    }
                    return type.getConstructor().newInstance();
                });
    }

    private static int call(ToIntFunction<Everything> call, int throwing, int returningNull) {
        invocations = 0;
        throwAt = throwing;
        nullAt = returningNull;
        return call.applyAsInt(object());
    }

    /** Every getter and setter in turn throws: the caller has to get that very exception. */
    static String throwing() {
        int thrown = 0;
        for (var entry : CALLS.entrySet()) {
            for (int n = 1;; n++) {
                String got = "nothing";
                try {
                    call(entry.getValue(), n, 0);
                } catch (IllegalStateException e) {
                    got = e.getMessage();
                } catch (Throwable e) {
                    return entry.getKey() + ", invocation " + n + ": " + e + " in place of the caller's own";
                }
                if (invocations < n) {
                    break;
                }
                if (got.equals("nothing")) {
                    return entry.getKey() + ", invocation " + n + ": the exception was lost";
                }
                thrown++;
            }
        }
        return thrown >= 120 ? "" : "only " + thrown + " exceptions";
    }

    /** Every getter in turn returns null: a status, no exception. */
    static String returningNull() {
        for (var entry : CALLS.entrySet()) {
            for (int n = 1; n <= 1 || invocations >= n; n++) {
                int status = call(entry.getValue(), 0, n);
                if (status != 0 && status != ERR_JNI_NULL) {
                    return entry.getKey() + ", invocation " + n + ": status " + Integer.toHexString(status);
                }
            }
        }
        return "";
    }

    /** Arrays too short are refused before anything is written; longer ones serve. */
    static String arrayLengths() throws ReflectiveOperationException {
        for (int length : new int[] {-1, 0, 1, 5, 6, 7, 1000}) {
            arrayLength = length;
            Calls.lastRecord();
            int status = call(CALLS.get("setDDBData"), 0, 0);
            boolean good = length >= 6;
            if (status != (good ? 0 : ERR_JNI_NULL) || Calls.lastRecord().isEmpty() == good) {
                return "a session identifier of " + length + " elements: status " + Integer.toHexString(status);
            }
        }
        arrayLength = 6;
        Field secret = CHAPTableEntry.class.getDeclaredField("chapSecret");
        secret.setAccessible(true);
        for (int length : new int[] {0, 1, 99, 100, 101, 5000}) {
            CHAPTableEntry entry = new CHAPTableEntry();
            secret.set(entry, new short[length]);
            Calls.lastRecord();
            int status = Calls.setCHAPTableData(DEV, new Object[] {entry});
            boolean good = length >= 100;
            if (status != (good ? 0 : ERR_JNI_NULL) || Calls.lastRecord().isEmpty() == good) {
                return "a secret of " + length + " elements: status " + Integer.toHexString(status);
            }
        }
        return "";
    }

    private static String inField(String text, int size) throws java.io.IOException {
        ByteArrayOutputStream bytes = new ByteArrayOutputStream();
        new DataOutputStream(bytes).writeUTF(text); // two bytes of length, then modified UTF-8
        byte[] field = Arrays.copyOf(Arrays.copyOfRange(bytes.toByteArray(), 2, bytes.size()), size);
        // A text ends at its first zero byte; modified UTF-8 has none.
        StringBuilder digits = new StringBuilder();
        for (byte b : field) {
            digits.append(String.format("%02x", b));
        }
        return digits.toString();
    }

    /** Texts of every length around the fields' widths, also with characters of two, three and six bytes. */
    static String textLengths() throws Exception {
        HBA hba = new HBA();
        DevDBEntry entry = new DevDBEntry();
        CHAPTableEntry chap = new CHAPTableEntry();
        iSNSDiscoveryConfig config = new iSNSDiscoveryConfig();
        for (String character : new String[] {"k", "\u00e4", "\u20ac", "\ud83d\udcbe", "\u0000"}) {
            for (int length = 0; length <= 270; length++) {
                String text = "xy".substring(0, length % 3 % 2) + character.repeat(length);
                hba.getNodeInfo().setAlias(text);
                hba.getNodeInfo().setiSCSIName(text);
                hba.getInitFW().getDevEntry().setTargetAddress(text);
                entry.getNodeInfo().setAlias(text);
                entry.getNodeInfo().setiSCSIName(text);
                entry.getDeviceEntry().setTargetAddress(text);
                chap.setChapSecretStr(text);
                chap.setChapName(text);
                config.setHBAiSCSIName(text);
                String wrong = "";
                Calls.setFWData(DEV, hba);
                wrong += check(text, 412, 32, 444, 256, 732, 32);
                Calls.setDDBData(DEV, entry, 0);
                wrong += check(text, 416, 32, 160, 256, 108, 32);
                Calls.setCHAPTableData(DEV, new Object[] {chap});
                wrong += check(text, 364, 100, 464, 256);
                Calls.setiSNSDiscoveryConfig(DEV, config);
                wrong += check(text, 4, 256);
                if (!wrong.isEmpty()) {
                    return length + " times '" + character + "': " + wrong;
                }
            }
        }
        return "";
    }

    /** Compares fields of the last record, given by offset and size, with the text. */
    private static String check(String text, int... fields) throws java.io.IOException {
        String record = Calls.lastRecord();
        for (int i = 0; i < fields.length; i += 2) {
            String actual = record.substring(2 * fields[i], 2 * (fields[i] + fields[i + 1]));
            if (!actual.equals(inField(text, fields[i + 1]))) {
                return "field at " + fields[i] + " holds " + actual + ". ";
            }
        }
        return "";
    }
}
