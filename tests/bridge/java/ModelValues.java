import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.IPAddr;
import java.lang.reflect.Method;
import java.util.Arrays;
import java.util.List;

/** Sets and reads values of model objects by a path of method names, for the tests of the bridge. */
public final class ModelValues {
    private ModelValues() {}

    /** Follows all steps of the path but the last. A number picks the element of a list, {@code name:n} passes n. */
    private static Object walk(Object root, String[] steps, int end) throws ReflectiveOperationException {
        Object at = root;
        for (int i = 0; i < end; i++) {
            at = step(at, steps[i]);
        }
        return at;
    }

    private static Object step(Object at, String step) throws ReflectiveOperationException {
        if (at instanceof List<?> list) {
            return list.get(Integer.parseInt(step));
        }
        int colon = step.indexOf(':');
        return colon < 0
                ? at.getClass().getMethod(step).invoke(at)
                : at.getClass().getMethod(step.substring(0, colon), int.class)
                        .invoke(at, Integer.parseInt(step.substring(colon + 1)));
    }

    public static void set(Object root, String path, String value) throws ReflectiveOperationException {
        String[] steps = path.split("/");
        String name = steps[steps.length - 1];
        Object at = walk(root, steps, steps.length - 1);
        for (Method method : at.getClass().getMethods()) {
            if (method.getName().equals(name) && method.getParameterCount() == 1) {
                method.invoke(at, parsed(method.getParameterTypes()[0], value));
                return;
            }
        }
        throw new NoSuchMethodException(at.getClass() + "." + name);
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

    public static String get(Object root, String path) throws ReflectiveOperationException {
        String[] steps = path.split("/");
        Object value = walk(root, steps, steps.length);
        if (value instanceof IPAddr address) {
            value = address.getAddress();
        }
        if (value instanceof short[] array) {
            return Arrays.toString(array).replace(",", "");
        } else if (value instanceof byte[] array) {
            return Arrays.toString(array).replace(",", "");
        } else if (value instanceof long[] array) {
            return Arrays.toString(array).replace(",", "");
        }
        return String.valueOf(value);
    }
}
