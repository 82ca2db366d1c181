package com.varden.tavo.iscsi.hba.serve;

import com.varden.tavo.iscsi.hba.Adapter;
import com.varden.tavo.iscsi.hba.BadInput;
import com.varden.tavo.iscsi.hba.Command;
import com.varden.tavo.iscsi.hba.OutputFile;
import com.varden.tavo.iscsi.hba.Terminal;
import java.nio.charset.StandardCharsets;
import java.time.Duration;
import picocli.CommandLine.Model.OptionSpec;

/** hba metrics. */
public final class Metrics extends Command {
    private static final Duration NEVER_STALE = Duration.ofDays(1);

    private final OptionSpec output = option("--output", "FILE",
        "Write them to a file, which is replaced when it is complete. The node exporter reads those in its textfile "
            + "folder whose names end in .prom.");

    public Metrics() {
        super("Reads every adapter once and prints its metrics as Prometheus and the node exporter read them. An "
            + "adapter that could not be read is named on the standard error. 'hba serve' shows the same under "
            + "/metrics.");
    }

    @Override
    public Integer call() throws InterruptedException {
        if (wantsJson()) {
            throw new BadInput("--json: metrics are not written as JSON; the commands that show an adapter are");
        }
        String file = output.getValue();
        OutputFile outputFile = file == null ? null : new OutputFile(file);
        Adapter.api();
        AdapterReaders readers = new AdapterReaders(NEVER_STALE, false);
        int status = DONE;
        if (!readers.readOnce()) {
            Terminal.message("not all adapters answered in time");
            status = FAILED;
        }
        for (AdapterReader reader : readers.all()) {
            if (reader.failure() != null) {
                Terminal.message(reader.failure());
                status = FAILED;
            }
        }
        String text = MetricsText.write(Exposition.Form.PROMETHEUS, readers.all());
        if (outputFile == null) {
            System.out.print(text);
        } else {
            outputFile.replace(false, out -> out.write(text.getBytes(StandardCharsets.UTF_8)));
        }
        return status;
    }
}
