package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.codes.Units;
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

    @Override
    String format(BigInteger bytes) {
        return Units.describeBytes(bytes.longValue());
    }
}
