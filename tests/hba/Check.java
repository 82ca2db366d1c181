import com.google.gson.JsonElement;
import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.util.Map;
import java.util.Objects;
import java.util.Set;
import java.util.TreeSet;

/** Runs the test methods of a class, and what they check with. */
public final class Check {
    private Check() {}

    static void that(String what, boolean holds) {
        if (!holds) {
            throw new AssertionError("not so: " + what);
        }
    }

    static void equal(String what, Object expected, Object found) {
        if (!Objects.equals(expected, found)) {
            throw new AssertionError(what + ": expected " + expected + ", found " + found);
        }
    }

    /** Compares two documents field by field and names the place of the first difference. */
    static void equalJson(String place, JsonElement expected, JsonElement found) {
        if (expected.isJsonObject() && found.isJsonObject()) {
            Set<String> names = new TreeSet<>(expected.getAsJsonObject().keySet());
            equal(place + ": fields", names, new TreeSet<>(found.getAsJsonObject().keySet()));
            for (Map.Entry<String, JsonElement> member : expected.getAsJsonObject().entrySet()) {
                equalJson(place + "." + member.getKey(), member.getValue(),
                    found.getAsJsonObject().get(member.getKey()));
            }
        } else if (expected.isJsonArray() && found.isJsonArray()) {
            equal(place + ": length", expected.getAsJsonArray().size(), found.getAsJsonArray().size());
            for (int i = 0; i < expected.getAsJsonArray().size(); i++) {
                equalJson(place + "[" + i + "]", expected.getAsJsonArray().get(i), found.getAsJsonArray().get(i));
            }
        } else {
            equal(place, expected, found);
        }
    }

    /** Runs every public method without parameters of each class named; ends with status 1 when one failed. */
    public static void main(String[] classes) throws ReflectiveOperationException {
        int failed = 0;
        int run = 0;
        for (String name : classes) {
            Class<?> test = Class.forName(name);
            for (Method method : test.getDeclaredMethods()) {
                if (!Modifier.isPublic(method.getModifiers()) || method.getParameterCount() != 0) {
                    continue;
                }
                run++;
                try {
                    method.invoke(test.getDeclaredConstructor().newInstance());
                } catch (InvocationTargetException e) {
                    failed++;
                    System.out.println("FAILED " + name + "." + method.getName());
                    e.getCause().printStackTrace(System.out);
                }
            }
        }
        System.out.println(run + " tests, " + failed + " failed");
        System.exit(failed == 0 && run > 0 ? 0 : 1);
    }
}
