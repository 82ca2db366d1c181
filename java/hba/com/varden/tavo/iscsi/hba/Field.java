package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonElement;
import com.google.gson.stream.JsonWriter;
import java.io.IOException;
import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.util.List;

/**
 * One property of a model class: its name, which is also its name in JSON, and a label for people. Values are read and
 * written through the class's getter and setter. Each kind of property is a class of its own.
 */
public abstract class Field {
    final String name;
    final String label;
    private boolean readOnly;
    private volatile Method getter;
    private volatile Method setter;

    Field(String name, String label) {
        this.name = name;
        this.label = label;
    }

    /** Marks a field that the adapter does not take back. */
    final Field readOnly() {
        readOnly = true;
        return this;
    }

    final boolean isReadOnly() {
        return readOnly;
    }

    /** Writes the value to a document. */
    abstract void write(JsonWriter json, Object owner) throws IOException;

    /** The member that stands beside the value in a document, for readers alone; null when there is none. */
    String asideName() {
        return null;
    }

    void writeAside(JsonWriter json, Object owner) throws IOException {
        throw new IllegalStateException(name + " has nothing beside it");
    }

    /**
     * Writes name and value to a document that is to be read again. What a reader would refuse stays out of it and is
     * noted.
     */
    void writeBack(JsonWriter json, Object owner, String place, List<String> leftOut) throws IOException {
        throw new IllegalStateException(name + " cannot be set");
    }

    /**
     * Sets the value from a document.
     *
     * @param place where the value stands in the document
     * @throws BadInput when it is not permitted; the message names the place
     */
    abstract void read(JsonElement value, Object owner, String place);

    /** Gives one object the value of another. */
    abstract void copy(Object from, Object to);

    /** Notes where the two objects differ in this field. */
    abstract void compare(Object wanted, Object found, String place, Differences differences);

    final Object getProperty(Object owner) {
        // One field may serve several classes, and several threads.
        Method method = getter;
        if (method == null || method.getDeclaringClass() != owner.getClass()) {
            method = method(owner.getClass(), 0, "get", "is");
            getter = method;
        }
        return invoke(method, owner);
    }

    final void setProperty(Object owner, Object value) {
        invoke(setter(owner), owner, value);
    }

    /** The type that the setter takes. */
    final Class<?> propertyType(Object owner) {
        return setter(owner).getParameterTypes()[0];
    }

    private Method setter(Object owner) {
        Method method = setter;
        if (method == null || method.getDeclaringClass() != owner.getClass()) {
            method = method(owner.getClass(), 1, "set");
            setter = method;
        }
        return method;
    }

    private Method method(Class<?> owner, int parameters, String... prefixes) {
        String property = name.startsWith("i") && name.length() > 1 && Character.isUpperCase(name.charAt(1))
            ? name : Character.toUpperCase(name.charAt(0)) + name.substring(1);
        for (Method method : owner.getMethods()) {
            for (String prefix : prefixes) {
                if (method.getParameterCount() == parameters && method.getName().equals(prefix + property)) {
                    return method;
                }
            }
        }
        throw new IllegalStateException(owner.getName() + " has no method " + prefixes[0] + property);
    }

    private static Object invoke(Method method, Object owner, Object... arguments) {
        try {
            return method.invoke(owner, arguments);
        } catch (IllegalAccessException | InvocationTargetException e) {
            throw new IllegalStateException(method.toString(), e);
        }
    }
}
