package com.varden.tavo.iscsi.hba;

import java.util.ArrayList;
import java.util.List;
import picocli.CommandLine.Model.OptionSpec;

/** One option for each field that can be written. */
final class FieldOptions {
    private final List<Field> fields = new ArrayList<>();
    private final List<OptionSpec> options = new ArrayList<>();

    FieldOptions(Command command, RecordTable table) {
        for (Field field : table.fields()) {
            if (field.isScalar() && !field.isReadOnly()) {
                fields.add(field);
                options.add(command.option(field));
            }
        }
    }

    /** Sets what was given on the command line. */
    void apply(Object owner) {
        for (int i = 0; i < fields.size(); i++) {
            Object value = options.get(i).getValue();
            if (value != null) {
                fields.get(i).set(owner, value);
            }
        }
    }

    boolean anyGiven() {
        for (OptionSpec option : options) {
            if (option.getValue() != null) {
                return true;
            }
        }
        return false;
    }

    static void requireOne(FieldOptions... groups) {
        for (FieldOptions group : groups) {
            if (group.anyGiven()) {
                return;
            }
        }
        throw new BadInput("nothing to change: no option names a setting");
    }
}
