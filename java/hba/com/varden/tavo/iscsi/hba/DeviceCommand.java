package com.varden.tavo.iscsi.hba;

import java.io.IOException;
import java.util.List;
import picocli.CommandLine.Model.OptionSpec;
import picocli.CommandLine.Model.PositionalParamSpec;

/** A command for one adapter: opens it, works on it, closes it. */
abstract class DeviceCommand extends Command {
    private final PositionalParamSpec dev;
    private final OptionSpec trace;
    private OptionSpec yes;

    DeviceCommand(String... description) {
        super(description);
        dev = parameter("DEV", Adapter.INDEX, "Adapter, 0 to 31.");
        trace = option("--trace", "FILE", "Have the operations of this command traced to the end of a file.");
    }

    /** For commands that destroy, interrupt or replace something. */
    final void needsConfirmation() {
        yes = flag("--yes", "Do it without asking.");
    }

    final boolean asks() {
        return !isSet(yes);
    }

    /** Asks before something is lost, unless --yes was given; the loss is a clause behind "this". */
    final void confirm(String loss) {
        confirm(List.of(loss));
    }

    final void confirm(List<String> losses) {
        if (asks()) {
            UserInput.confirm(losses);
        }
    }

    /** Checks what can be checked without the adapter; throws BadInput. */
    void prepare() throws IOException {}

    abstract int run(Adapter adapter) throws IOException;

    @Override
    public final Integer call() throws IOException {
        prepare();
        String traceFile = trace.getValue();
        try (Adapter adapter =
                 Adapter.open(number(dev), traceFile == null ? null : UserInput.file(traceFile).getPath())) {
            return run(adapter);
        }
    }
}
