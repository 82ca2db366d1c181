package com.varden.tavo.iscsi.hba;

/** A number that is shown to people in hexadecimal, with all its digits. */
final class BitsField extends NumberField {
    BitsField(String name, int width, String label) {
        super(name, width, label);
    }

    @Override
    String format(Long value) {
        String digits = Long.toHexString(value);
        return "0x" + "0".repeat(Math.max(0, width / 4 - digits.length())) + digits;
    }
}
