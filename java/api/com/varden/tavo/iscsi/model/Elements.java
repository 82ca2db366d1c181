package com.varden.tavo.iscsi.model;

/** Checks the arrays of fixed length that setters take. */
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

    private static void require(int actual, int expected, String name) {
        if (actual != expected) {
            throw new IllegalArgumentException(name + " has " + actual + " elements, expected " + expected);
        }
    }
}
