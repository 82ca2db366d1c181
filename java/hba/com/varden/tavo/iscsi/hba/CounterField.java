package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.model.PortStatistics;
import java.math.BigInteger;

/** An unsigned 64-bit counter, in the form in which counters cross. */
final class CounterField extends QuantityField<BigInteger> {
    CounterField(String name, String label) {
        super(name, label);
    }

    @Override
    BigInteger get(Object owner) {
        return PortStatistics.toBigInteger((byte[]) getProperty(owner));
    }
}
