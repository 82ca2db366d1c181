package com.varden.tavo.iscsi.hba;

import java.math.BigInteger;

/** An unsigned 64-bit number of bytes. */
final class CapacityField extends ScalarField<BigInteger> {
    CapacityField(String name, String label) {
        super(name, label);
        readOnly();
    }

    @Override
    BigInteger get(Object owner) {
        return new BigInteger(Long.toUnsignedString((Long) getProperty(owner)));
    }

    // In the largest binary unit of which there is one, with one decimal, cut and not rounded.
    @Override
    String format(BigInteger bytes) {
        int order = Math.max(0, bytes.bitLength() - 1) / 10;
        if (order == 0) {
            return bytes + " bytes";
        }
        long tenths = bytes.multiply(BigInteger.TEN).shiftRight(10 * order).longValue();
        return tenths / 10 + "." + tenths % 10 + " " + "KMGTPE".charAt(order - 1) + "iB (" + bytes + " bytes)";
    }
}
