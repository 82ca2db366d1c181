package com.varden.tavo.iscsi.hba;

import picocli.AutoComplete;

/** hba completion. */
final class Completion extends Command {
    static Command command() {
        return new Completion();
    }

    Completion() {
        super("Writes a completion script for bash to the standard output. Load it with: source <(hba completion)");
    }

    @Override
    public Integer call() {
        System.out.print(AutoComplete.bash("hba", Commands.build(new String[0])));
        return DONE;
    }
}
