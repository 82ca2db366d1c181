package com.varden.tavo.iscsi.model;

import java.util.Arrays;

/** Checks and copies the arrays that setters take. */
final class Elements {
    private Elements() {}

    static short[] copy(short[] source, int length, String name) {
        require(source.length, length, name);
        return source.clone();
    }

    static byte[] copy(byte[] source, int length, String name) {
        require(source.length, length, name);
        return source.clone();
    }

    /** A copy filled up with zeros; null is all zeros. */
    static short[] filledUp(short[] source, int length, String name) {
        if (source == null) {
            return new short[length];
        }
        if (source.length > length) {
            throw new IllegalArgumentException(name + " has " + source.length + " elements, expected up to " + length);
        }
        return Arrays.copyOf(source, length);
    }

    private static void require(int actual, int expected, String name) {
        if (actual != expected) {
            throw new IllegalArgumentException(name + " has " + actual + " elements, expected " + expected);
        }
    }
}
