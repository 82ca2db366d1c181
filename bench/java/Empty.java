package com.varden.tavo.iscsi.bench;

/** Does nothing: what the Java VM itself takes. */
final class Empty {
    private Empty() {}

    public static void main(String[] arguments) {}
}
