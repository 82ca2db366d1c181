package com.varden.tavo.iscsi.model;

import java.util.Arrays;
import java.util.Objects;

/**
 * An IP address as the adapter keeps it: 16 bytes, of which an IPv4 address uses the first four.
 *
 * The adapter's records do not say which kind an address is. An address whose last twelve bytes are zero is taken as
 * IPv4; an IPv6 address of that form (a bare prefix of 32 bits or less) cannot be told from it.
 *
 * The setters of the model classes keep a copy of the address that they are given.
 */
public final class IPAddr {
    /** Bytes of an address. */
    public static final int LENGTH = 16;

    private static final int IPV4_LENGTH = 4;
    private static final int GROUPS = 8;

    private short[] address = new short[LENGTH];

    /** The address 0.0.0.0, which stands for none. */
    public IPAddr() {}

    // For setters: two objects that share an address would change each other's.
    static IPAddr copy(IPAddr source, String name) {
        return ofBytes(Objects.requireNonNull(source, name).address);
    }

    static IPAddr ofBytes(short[] address) {
        IPAddr result = new IPAddr();
        result.setAddress(address);
        return result;
    }

    /**
     * Reads an IPv4 address in dotted form or an IPv6 address. Names are not looked up.
     *
     * @throws IllegalArgumentException when the text is neither; the message quotes it
     */
    public static IPAddr parse(String text) {
        short[] bytes = new short[LENGTH];
        if (text.indexOf(':') < 0) {
            if (!parseIPv4(text, bytes, 0)) {
                throw new IllegalArgumentException("'" + text + "' is not an IPv4 or IPv6 address");
            }
        } else {
            if (!parseIPv6(text, bytes)) {
                throw new IllegalArgumentException("'" + text + "' is not an IPv6 address");
            }
            if (isIPv4(bytes) && !isZero(bytes, 0)) {
                throw new IllegalArgumentException("'" + text + "' has only 32 bits that are not zero: "
                    + "the adapter cannot tell it from an IPv4 address");
            }
        }
        return ofBytes(bytes);
    }

    /** The 16 bytes, one (0 to 255) per element. */
    public short[] getAddress() {
        return address.clone();
    }

    /** Takes the 16 bytes, one per element; of each element the low 8 bits reach the adapter. */
    public void setAddress(short[] address) {
        this.address = Elements.copy(address, LENGTH, "address");
    }

    /** Byte i of the address, i from 0 to 15. */
    public short getAddressElement(short i) {
        return address[i];
    }

    /** Whether the last twelve bytes are zero. */
    public boolean isIPv4() {
        return isIPv4(address);
    }

    /** Whether all bytes are zero: no address. */
    public boolean isUnspecified() {
        return isZero(address, 0);
    }

    @Override
    public boolean equals(Object other) {
        return other instanceof IPAddr that && Arrays.equals(address, that.address);
    }

    @Override
    public int hashCode() {
        return Arrays.hashCode(address);
    }

    /** The address in dotted form, or as an IPv6 address in its shortest form. */
    @Override
    public String toString() {
        if (isIPv4()) {
            return (address[0] & 0xFF) + "." + (address[1] & 0xFF) + "." + (address[2] & 0xFF) + "."
                + (address[3] & 0xFF);
        }
        return formatIPv6();
    }

    private static boolean isIPv4(short[] bytes) {
        return isZero(bytes, IPV4_LENGTH);
    }

    private static boolean isZero(short[] bytes, int from) {
        for (int i = from; i < LENGTH; i++) {
            if ((bytes[i] & 0xFF) != 0) {
                return false;
            }
        }
        return true;
    }

    private int group(int i) {
        return (address[2 * i] & 0xFF) << 8 | address[2 * i + 1] & 0xFF;
    }

    // The longest run of at least two zero groups, the first of equals, becomes "::".
    private String formatIPv6() {
        int runStart = -1;
        int runLength = 1;
        for (int i = 0; i < GROUPS; i++) {
            int end = i;
            while (end < GROUPS && group(end) == 0) {
                end++;
            }
            if (end - i > runLength) {
                runStart = i;
                runLength = end - i;
            }
            i = Math.max(i, end);
        }
        StringBuilder text = new StringBuilder();
        for (int i = 0; i < GROUPS; i++) {
            if (i == runStart) {
                text.append("::");
                i += runLength - 1;
                continue;
            }
            if (i > 0 && text.charAt(text.length() - 1) != ':') {
                text.append(':');
            }
            text.append(Integer.toHexString(group(i)));
        }
        return text.toString();
    }

    private static boolean parseIPv4(String text, short[] bytes, int offset) {
        int part = 0;
        int digits = 0;
        int value = 0;
        for (int i = 0; i <= text.length(); i++) {
            char c = i < text.length() ? text.charAt(i) : '.';
            if (c == '.') {
                if (digits == 0 || part == IPV4_LENGTH) {
                    return false;
                }
                bytes[offset + part++] = (short) value;
                digits = 0;
                value = 0;
            } else if (c >= '0' && c <= '9') {
                value = value * 10 + c - '0';
                // No leading zeros: some programs read them as octal.
                if (++digits > 1 && value < 10 || value > 255) {
                    return false;
                }
            } else {
                return false;
            }
        }
        return part == IPV4_LENGTH;
    }

    private static boolean parseIPv6(String text, short[] bytes) {
        int gap = text.indexOf("::");
        if (gap < 0) {
            return parseGroups(text, bytes, 0) == LENGTH;
        }
        String head = text.substring(0, gap);
        String tail = text.substring(gap + 2);
        int headLength = head.isEmpty() ? 0 : head.indexOf('.') >= 0 ? -1 : parseGroups(head, bytes, 0);
        short[] end = new short[LENGTH];
        int tailLength = tail.isEmpty() ? 0 : parseGroups(tail, end, 0);
        if (headLength < 0 || tailLength < 0 || headLength + tailLength > LENGTH - 2) {
            return false;
        }
        System.arraycopy(end, 0, bytes, LENGTH - tailLength, tailLength);
        return true;
    }

    // Reads groups of hexadecimal digits, the last of which may be an IPv4 address; returns the bytes or -1.
    private static int parseGroups(String text, short[] bytes, int from) {
        int length = from;
        int start = 0;
        while (true) {
            int colon = text.indexOf(':', start);
            String group = colon < 0 ? text.substring(start) : text.substring(start, colon);
            if (colon < 0 && group.indexOf('.') >= 0) {
                return length <= LENGTH - IPV4_LENGTH && parseIPv4(group, bytes, length) ? length + IPV4_LENGTH : -1;
            }
            if (group.isEmpty() || group.length() > 4 || length > LENGTH - 2) {
                return -1;
            }
            int value = 0;
            for (int i = 0; i < group.length(); i++) {
                int digit = Character.digit(group.charAt(i), 16);
                if (digit < 0 || group.charAt(i) > 'f') {
                    return -1;
                }
                value = value << 4 | digit;
            }
            bytes[length++] = (short) (value >> 8);
            bytes[length++] = (short) (value & 0xFF);
            if (colon < 0) {
                return length;
            }
            start = colon + 1;
        }
    }
}
