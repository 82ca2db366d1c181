package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.model.IPAddr;
import com.varden.tavo.iscsi.model.PortStatistics;
import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.math.BigInteger;
import java.util.List;
import picocli.CommandLine.ITypeConverter;
import picocli.CommandLine.TypeConversionException;

/**
 * One property of a model class: its name, which is also its name in JSON and, in another spelling, that of its option;
 * its kind with width or limit; a label for people. Values are read and written through the class's getter and setter.
 *
 * Numbers are unsigned here, whatever the Java type: a short of -32768 in a 16-bit field is 32768.
 */
final class Field implements ITypeConverter<Object> {
    enum Kind {
        /** An unsigned number of 1 to 32 bits. */
        NUMBER,
        /** The same, shown to people in hexadecimal. */
        BITS,
        /** An unsigned 64-bit number in the form that counters cross in. */
        COUNTER,
        /** An unsigned 64-bit number of bytes. */
        CAPACITY,
        /** Text with a limit in bytes. */
        TEXT,
        /** An IP address. */
        ADDRESS,
        /** Bytes in a short array, written as hexadecimal pairs with colons. */
        BYTES,
        /** Yes or no. The getter is boolean, the setter takes 0 or 1. */
        FLAG,
        /** An object with fields of its own, which its owner never replaces. */
        RECORD,
        /** A list of such objects. */
        LIST
    }

    final String name;
    final String label;
    final Kind kind;
    /** Bits of a number, bytes of a text or of an array. */
    final int size;
    /** The fields of a record or of a list's elements. */
    final RecordTable table;
    private boolean readOnly;
    private long maximum;
    private String unit = "";
    private Method getter;
    private Method setter;

    private Field(String name, String label, Kind kind, int size, RecordTable table) {
        this.name = name;
        this.label = label;
        this.kind = kind;
        this.size = size;
        this.table = table;
        this.maximum = isNumber() ? (1L << size) - 1 : 0;
    }

    static Field number(String name, int bits, String label) {
        return new Field(name, label, Kind.NUMBER, bits, null);
    }

    static Field bits(String name, int bits, String label) {
        return new Field(name, label, Kind.BITS, bits, null);
    }

    static Field counter(String name, String label) {
        return new Field(name, label, Kind.COUNTER, 0, null).readOnly();
    }

    static Field capacity(String name, String label) {
        return new Field(name, label, Kind.CAPACITY, 0, null).readOnly();
    }

    static Field text(String name, int limit, String label) {
        return new Field(name, label, Kind.TEXT, limit, null);
    }

    static Field address(String name, String label) {
        return new Field(name, label, Kind.ADDRESS, 0, null);
    }

    static Field bytes(String name, int length, String label) {
        return new Field(name, label, Kind.BYTES, length, null);
    }

    static Field flag(String name, String label) {
        return new Field(name, label, Kind.FLAG, 0, null);
    }

    static Field record(String name, RecordTable table, String label) {
        return new Field(name, label, Kind.RECORD, 0, table);
    }

    static Field list(String name, RecordTable table, String label) {
        return new Field(name, label, Kind.LIST, 0, table).readOnly();
    }

    /** A field that the adapter does not take back. */
    Field readOnly() {
        readOnly = true;
        return this;
    }

    Field max(long value) {
        maximum = value;
        return this;
    }

    Field unit(String text) {
        unit = " " + text;
        return this;
    }

    boolean isReadOnly() {
        return readOnly;
    }

    boolean isScalar() {
        return kind != Kind.RECORD && kind != Kind.LIST;
    }

    private boolean isNumber() {
        return kind == Kind.NUMBER || kind == Kind.BITS;
    }

    /** The name in the spelling of options: iSCSIOptions becomes --iscsi-options. */
    String option() {
        String words = name.replace("iSCSI", "Iscsi").replace("iSNS", "Isns");
        StringBuilder option = new StringBuilder("--");
        for (int i = 0; i < words.length(); i++) {
            char c = words.charAt(i);
            boolean startsWord = i > 0 && Character.isUpperCase(c)
                && (Character.isLowerCase(words.charAt(i - 1))
                    || Character.isUpperCase(words.charAt(i - 1)) && i + 1 < words.length()
                        && Character.isLowerCase(words.charAt(i + 1)));
            if (startsWord) {
                option.append('-');
            }
            option.append(Character.toLowerCase(c));
        }
        return option.toString();
    }

    /** What may be written, in words: "0 to 65535", "text of at most 32 bytes". */
    String range() {
        switch (kind) {
            case NUMBER:
            case BITS:
                return "0 to " + maximum + unit;
            case TEXT:
                return "text of at most " + size + " bytes";
            case ADDRESS:
                return "an IPv4 or IPv6 address";
            case BYTES:
                return size + " hexadecimal bytes such as 00:1f:a0...";
            case FLAG:
                return "yes or no";
            default:
                return "";
        }
    }

    /** What stands for a value in the help. */
    String valueLabel() {
        switch (kind) {
            case TEXT:
                return "TEXT";
            case ADDRESS:
                return "ADDRESS";
            case BYTES:
                return "BYTES";
            case FLAG:
                return "yes|no";
            default:
                return "N";
        }
    }

    /** The value: a Long, String, IPAddr, Boolean, a BigInteger for a counter or capacity, a record or a List. */
    Object get(Object owner) {
        if (getter == null || getter.getDeclaringClass() != owner.getClass()) {
            getter = method(owner.getClass(), "get");
        }
        Object value = invoke(getter, owner);
        switch (kind) {
            case NUMBER:
            case BITS:
                return ((Number) value).longValue() & (1L << size) - 1;
            case COUNTER:
                return PortStatistics.toBigInteger((byte[]) value);
            case CAPACITY:
                return new BigInteger(Long.toUnsignedString((Long) value));
            case BYTES:
                return hex((short[]) value, ":");
            default:
                return value;
        }
    }

    /** Sets a value that parse has returned. */
    void set(Object owner, Object value) {
        if (setter == null || setter.getDeclaringClass() != owner.getClass()) {
            setter = method(owner.getClass(), "set");
        }
        Object argument = value;
        Class<?> type = setter.getParameterTypes()[0];
        if (kind == Kind.FLAG) {
            argument = (Boolean) value ? 1 : 0;
        } else if (kind == Kind.BYTES) {
            argument = parseHex((String) value);
        } else if (isNumber()) {
            long number = (Long) value;
            argument = type == byte.class ? (Object) (byte) number
                : type == short.class ? (Object) (short) number
                : (Object) (int) number;
        }
        invoke(setter, owner, argument);
    }

    /**
     * Reads a value in the form that people and documents write it.
     *
     * @throws IllegalArgumentException when it is not permitted; the message quotes it and names what is
     */
    Object parse(String text) {
        switch (kind) {
            case NUMBER:
            case BITS:
                return parseNumber(text);
            case TEXT:
                int length = encodedLength(text);
                if (length > size) {
                    throw new IllegalArgumentException(
                        "the text has " + length + " bytes in UTF-8, at most " + size + " are permitted");
                }
                if (text.indexOf('\0') >= 0) {
                    throw new IllegalArgumentException("the text holds a zero character");
                }
                return text;
            case ADDRESS:
                return IPAddr.parse(text);
            case BYTES:
                return hex(parseHex(text), ":");
            case FLAG:
                if (text.equals("yes") || text.equals("true")) {
                    return true;
                }
                if (text.equals("no") || text.equals("false")) {
                    return false;
                }
                throw wrong(text);
            default:
                throw new IllegalStateException(name);
        }
    }

    /** Reads the value of an option or parameter; the message of a failure is put behind its name. */
    @Override
    public Object convert(String text) {
        try {
            return parse(text);
        } catch (IllegalArgumentException e) {
            throw new TypeConversionException(e.getMessage());
        }
    }

    private Long parseNumber(String text) {
        try {
            long value = Long.decode(text.startsWith("0x") || text.startsWith("0X") ? text : decimal(text));
            if (value >= 0 && value <= maximum) {
                return value;
            }
        } catch (NumberFormatException e) {
            // Said below, like a number that is too large.
        }
        throw wrong(text);
    }

    // Long.decode would read a leading zero as octal.
    private static String decimal(String text) {
        int start = 0;
        while (start < text.length() - 1 && text.charAt(start) == '0') {
            start++;
        }
        return text.startsWith("+") ? "" : text.substring(start);
    }

    private IllegalArgumentException wrong(String text) {
        return new IllegalArgumentException("'" + text + "' is not permitted: " + range());
    }

    private short[] parseHex(String text) {
        String[] parts = text.split(":", -1);
        if (parts.length != size) {
            throw wrong(text);
        }
        short[] bytes = new short[size];
        for (int i = 0; i < size; i++) {
            int high = parts[i].length() == 2 ? Character.digit(parts[i].charAt(0), 16) : -1;
            int low = parts[i].length() == 2 ? Character.digit(parts[i].charAt(1), 16) : -1;
            if (high < 0 || low < 0) {
                throw wrong(text);
            }
            bytes[i] = (short) (high << 4 | low);
        }
        return bytes;
    }

    static String hex(short[] bytes, String separator) {
        StringBuilder text = new StringBuilder();
        for (short value : bytes) {
            if (text.length() > 0) {
                text.append(separator);
            }
            text.append(Character.forDigit(value >> 4 & 0xF, 16)).append(Character.forDigit(value & 0xF, 16));
        }
        return text.toString();
    }

    /** A value for people: bits in hexadecimal with all their digits, yes or no, a dash for nothing. */
    String format(Object value) {
        if (value == null) {
            return "-";
        }
        switch (kind) {
            case BITS:
                StringBuilder digits = new StringBuilder(Long.toHexString((Long) value));
                while (digits.length() < size / 4) {
                    digits.insert(0, '0');
                }
                return "0x" + digits;
            case NUMBER:
                return value + unit;
            case CAPACITY:
                return readable((BigInteger) value);
            case FLAG:
                return (Boolean) value ? "yes" : "no";
            default:
                return TextOutput.text(value);
        }
    }

    // Bytes in the largest binary unit of which there is one, with one decimal, cut and not rounded.
    private static String readable(BigInteger bytes) {
        int order = Math.max(0, bytes.bitLength() - 1) / 10;
        if (order == 0) {
            return bytes + " bytes";
        }
        long tenths = bytes.multiply(BigInteger.TEN).shiftRight(10 * order).longValue();
        return tenths / 10 + "." + tenths % 10 + " " + "KMGTPE".charAt(order - 1) + "iB (" + bytes + " bytes)";
    }

    /** Bytes that the text takes when it crosses to the adapter. */
    static int encodedLength(String text) {
        int length = 0;
        for (int i = 0; i < text.length(); i++) {
            char c = text.charAt(i);
            length += c < 0x80 ? 1 : c < 0x800 ? 2 : 3;
        }
        return length;
    }

    List<?> elements(Object owner) {
        return (List<?>) get(owner);
    }

    private Method method(Class<?> owner, String prefix) {
        String wanted = prefix + (name.startsWith("i") && name.length() > 1 && Character.isUpperCase(name.charAt(1))
            ? name : Character.toUpperCase(name.charAt(0)) + name.substring(1));
        String alternative = kind == Kind.FLAG ? "is" + wanted.substring(prefix.length()) : wanted;
        int parameters = prefix.equals("set") ? 1 : 0;
        for (Method method : owner.getMethods()) {
            String found = method.getName();
            if (method.getParameterCount() == parameters && (found.equals(wanted) || found.equals(alternative))) {
                return method;
            }
        }
        throw new IllegalStateException(owner.getName() + " has no method " + wanted);
    }

    private static Object invoke(Method method, Object owner, Object... arguments) {
        try {
            return method.invoke(owner, arguments);
        } catch (IllegalAccessException | InvocationTargetException e) {
            throw new IllegalStateException(method.toString(), e);
        }
    }
}
