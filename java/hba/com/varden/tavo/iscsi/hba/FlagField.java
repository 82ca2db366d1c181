package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonPrimitive;

/** Yes or no. The getter is boolean, the setter takes 0 or 1. */
final class FlagField extends SettingField<Boolean> {
    FlagField(String name, String label) {
        super(name, label);
    }

    @Override
    String range() {
        return "yes or no";
    }

    @Override
    String valueLabel() {
        return "yes|no";
    }

    @Override
    Boolean parse(String text) {
        return switch (text) {
            case "yes", "true" -> true;
            case "no", "false" -> false;
            default -> throw wrong(text);
        };
    }

    @Override
    boolean accepts(JsonPrimitive value) {
        return value.isBoolean();
    }

    @Override
    Boolean get(Object owner) {
        return (Boolean) getProperty(owner);
    }

    @Override
    void set(Object owner, Boolean value) {
        setProperty(owner, value ? 1 : 0);
    }

    @Override
    String format(Boolean value) {
        return value ? "yes" : "no";
    }
}
