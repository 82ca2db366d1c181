import com.varden.tavo.iscsi.model.CHAPTableEntry;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.IPAddr;
import java.lang.reflect.Field;
import java.nio.charset.StandardCharsets;
import java.util.Arrays;
import java.util.HexFormat;
import java.util.function.ToIntFunction;

/** Java objects that mean no good, on the VM's own environment. Each test returns an empty text, or what went wrong. */
final class HostileJava {
    private static final int DEV = 5;
    private static final int ERR_JNI_NULL = 0x1003;

    private HostileJava() {}

    /** An adapter whose second setter throws and whose getters return null. */
    static final class Adapter {
        void setState(int v) {}

        void setDhcpState(int v) {
            throw new IllegalStateException("of the setter");
        }

        void setLinkStatus(int v) {}

        IPAddr getIPAddress() {
            return null;
        }
    }

    /** The caller gets the exception that its own object threw; a getter that returns null is a status. */
    static String throwingAndNull() {
        try {
            return "no exception, but status " + Calls.getiSCSIHBAState(DEV, new Adapter());
        } catch (IllegalStateException e) {
            int status = Calls.setFWData(DEV, new Adapter());
            return status == ERR_JNI_NULL && e.getMessage().equals("of the setter") ? "" : e + ", status " + status;
        }
    }

    private static String arrays(Object entry, String name, int least, ToIntFunction<Object> write)
            throws ReflectiveOperationException {
        Field field = entry.getClass().getDeclaredField(name);
        field.setAccessible(true);
        for (int length : new int[] {0, 1, least - 1, least, least + 1, 5000}) {
            field.set(entry, new short[length]);
            Calls.lastRecord();
            int status = write.applyAsInt(entry);
            if (status != (length >= least ? 0 : ERR_JNI_NULL) || Calls.lastRecord().isEmpty() == length >= least) {
                return length + " elements of " + name + ": status " + Integer.toHexString(status);
            }
        }
        return "";
    }

    /** Arrays too short are refused before anything is written; longer ones serve. */
    static String arrayLengths() throws ReflectiveOperationException {
        return arrays(new DevDBEntry(), "initiatorSessionID", 6, entry -> Calls.setDDBData(DEV, entry, 0))
                + arrays(new CHAPTableEntry(), "chapSecret", 100,
                        entry -> Calls.setCHAPTableData(DEV, new Object[] {entry}));
    }

    /** Texts of every length around a field's width, characters of two and three bytes too, end with the field. */
    static String textLengths() {
        HBA hba = new HBA();
        for (String character : new String[] {"k", "\u00e4", "\u20ac"}) {
            for (int length = 0; length <= 40; length++) {
                hba.getNodeInfo().setAlias(character.repeat(length));
                Calls.setFWData(DEV, hba);
                byte[] alias = Arrays.copyOf(character.repeat(length).getBytes(StandardCharsets.UTF_8), 32);
                if (!Calls.lastRecord().startsWith(HexFormat.of().formatHex(alias), 2 * 412)) {
                    return length + " times '" + character + "'";
                }
            }
        }
        return "";
    }
}
