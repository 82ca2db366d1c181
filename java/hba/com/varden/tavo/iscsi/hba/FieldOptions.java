package com.varden.tavo.iscsi.hba;

import java.util.ArrayList;
import java.util.List;
import picocli.CommandLine.Model.OptionSpec;

/** One option for each field that can be written. */
final class FieldOptions {
    private final List<FieldOption<?>> options = new ArrayList<>();

    private record FieldOption<T>(SettingField<T> field, OptionSpec option) {
        static <T> FieldOption<T> of(Command command, SettingField<T> field) {
            return new FieldOption<>(field, command.option(field));
        }

        boolean isGiven() {
            return option.getValue() != null;
        }

        void apply(Object owner) {
            if (isGiven()) {
                field.set(owner, option.getValue());
            }
        }
    }

    FieldOptions(Command command, RecordTable table) {
        for (Field field : table.fields()) {
            if (field instanceof SettingField<?> setting && !field.isReadOnly()) {
                options.add(FieldOption.of(command, setting));
            }
        }
    }

    /** Sets what was given on the command line. */
    void apply(Object owner) {
        for (FieldOption<?> option : options) {
            option.apply(owner);
        }
    }

    boolean anyGiven() {
        for (FieldOption<?> option : options) {
            if (option.isGiven()) {
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
