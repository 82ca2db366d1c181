package com.varden.tavo.iscsi.hba;

/** A number that is compared with those above and below it: columns of such are aligned at the right. */
abstract class QuantityField<T extends Number> extends ScalarField<T> {
    QuantityField(String name, String label) {
        super(name, label);
        readOnly();
    }
}
