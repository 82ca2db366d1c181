package com.varden.tavo.iscsi.hba.serve;

import com.varden.tavo.iscsi.hba.Adapter;
import com.varden.tavo.iscsi.hba.BadInput;
import com.varden.tavo.iscsi.hba.Command;
import com.varden.tavo.iscsi.hba.NumberField;
import com.varden.tavo.iscsi.hba.OperationFailed;
import java.io.IOException;
import java.net.BindException;
import java.time.Duration;
import java.util.List;
import java.util.concurrent.CountDownLatch;
import picocli.CommandLine.Model.OptionSpec;

/** hba serve. */
public final class Serve extends Command {
    private static final int USUAL_INTERVAL = 5;

    private final OptionSpec listen = option("--listen", "ADDRESS:PORT",
        "Listen there; " + ListenAddress.USUAL + " without this option. An address other than this machine's own, "
            + "127.0.0.1 or ::1, needs --token-file. With port 0 a free one is taken.");
    private final OptionSpec interval = option("--interval", new NumberField("interval", 16, "Interval").min(1).max(300)
        .unit("s"), "Read every adapter so often: 1 to 300 s, " + USUAL_INTERVAL + " s without this option.");
    private final OptionSpec askTargets = flag("--ask-targets", "Ask each target for its logical units every 30 s, "
        + "so that one that went down is noticed when nobody uses it.");
    private final OptionSpec tokenFile = option("--token-file", "FILE",
        "Serve only clients that send the token in the first line of the file: Authorization: Bearer ...");
    private final OptionSpec hostNames = option("--host-name", "NAME[,NAME...]",
        "Names under which browsers reach this server, besides its address and localhost.");

    public Serve() {
        super("Shows all adapters on a web page, their metrics to Prometheus under /metrics, and the documents of "
            + "--json under /api. Runs until it is ended by a signal. Nothing can be changed through it.");
    }

    @Override
    public Integer call() throws IOException, InterruptedException {
        if (wantsJson()) {
            throw new BadInput("--json: 'hba serve' has no result; it serves the documents of other commands under "
                + "/api");
        }
        String where = listen.getValue() == null ? ListenAddress.USUAL : listen.getValue();
        ListenAddress address = ListenAddress.parse(where);
        AccessToken token = tokenFile.getValue() == null ? null : AccessToken.read(tokenFile.getValue());
        if (token == null && !address.isLoopback()) {
            throw new BadInput("--listen: " + where + " can be reached from other machines: give --token-file as well");
        }
        String names = hostNames.getValue();
        Duration pause = Duration.ofSeconds(interval.getValue() == null ? USUAL_INTERVAL : number(interval));
        Adapter.api();
        // Documents come from commands that would draw how far they are.
        System.clearProperty("hba.progress");
        AdapterReaders readers = new AdapterReaders(pause, isSet(askTargets));
        WebServer server = open(address, new Site(readers, pause),
            new HostNames(names == null ? List.of() : List.of(names.split(","))), token);
        Runtime.getRuntime().addShutdownHook(new Thread(readers::close));
        readers.start();
        System.out.println("Serving http://" + ListenAddress.show(server.start()) + "/");
        System.out.flush();
        new CountDownLatch(1).await();
        return DONE;
    }

    private static WebServer open(ListenAddress address, Site site, HostNames names, AccessToken token)
        throws IOException {
        try {
            return new WebServer(address, site, names, token);
        } catch (BindException e) {
            throw new OperationFailed("cannot listen at " + ListenAddress.show(address.socketAddress()) + ": "
                + e.getMessage());
        }
    }
}
