import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.IPAddr;
import java.lang.reflect.Method;

/** Sets values of model objects by a path of method names, for the tests of the bridge. */
public final class ModelValues {
    private ModelValues() {}

    /** Calls the getters of the path and then its last step, a setter. */
    public static void set(Object root, String path, String value) throws ReflectiveOperationException {
        int slash = path.indexOf('/');
        if (slash >= 0) {
            set(root.getClass().getMethod(path.substring(0, slash)).invoke(root), path.substring(slash + 1), value);
            return;
        }
        for (Method method : root.getClass().getMethods()) {
            if (method.getName().equals(path) && method.getParameterCount() == 1) {
                method.invoke(root, parsed(method.getParameterTypes()[0], value));
                return;
            }
        }
        throw new NoSuchMethodException(root.getClass() + "." + path);
    }

    private static Object parsed(Class<?> type, String value) {
        if (value.equals("null")) {
            return null;
        } else if (type == int.class) {
            return Integer.parseInt(value);
        } else if (type == short.class) {
            return Short.parseShort(value);
        } else if (type == byte.class) {
            return Byte.parseByte(value);
        } else if (type == short[].class) {
            return shorts(value);
        } else if (type == IPAddr.class) {
            IPAddr address = new IPAddr();
            address.setAddress(shorts(value));
            return address;
        } else if (type == DevDBEntry.class) { // a new entry with this target ID
            DevDBEntry entry = new DevDBEntry();
            entry.setTargetID(Integer.parseInt(value));
            return entry;
        }
        return value;
    }

    private static short[] shorts(String value) {
        String[] words = value.split(" ");
        short[] out = new short[words.length];
        for (int i = 0; i < out.length; i++) {
            out[i] = Short.parseShort(words[i]);
        }
        return out;
    }
}
