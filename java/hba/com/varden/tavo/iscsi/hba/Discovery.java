package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.codes.TargetState;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.IPAddr;
import java.io.IOException;
import java.util.ArrayList;
import java.util.List;
import picocli.CommandLine.Model.OptionSpec;
import picocli.CommandLine.Model.PositionalParamSpec;

/** Discovery of the targets that a portal offers (SendTargets). */
final class Discovery {
    private Discovery() {}

    /** hba discover. */
    static final class Discover extends WriteCommand {
        private final PositionalParamSpec address =
            parameter("ADDRESS", NodeInfo.ADDRESS, "Address of the portal, " + NodeInfo.ADDRESS.range() + ".");
        private final OptionSpec port = option("--port", DeviceParameters.PORT,
            "TCP port of the portal; " + DeviceParameters.ISCSI_PORT + " without this option.");
        private final OptionSpec chapIndex = option("--chap-index", DeviceDatabaseEntry.CHAP_INDEX,
            "CHAP entry for the discovery and for the targets found; none without this option.");
        private List<DevDBEntry> known;
        private final List<DevDBEntry> added = new ArrayList<>();

        Discover() {
            super("Asks a portal for its targets (SendTargets), adds those that are not configured yet, each under a "
                + "free target ID, and lists what is now known of the portal.");
            DeviceDatabaseEntryCommands.listTargets(this);
        }

        @Override
        List<String> losses(Adapter adapter) {
            return List.of();
        }

        @Override
        void write(Adapter adapter) {
            List<DevDBEntry> before = DeviceDatabaseEntry.readAll(adapter);
            // An entry with an address and no name is a discovery. Its ID is the first that is tried.
            DevDBEntry request =
                DeviceDatabaseEntry.readInitial(adapter, Math.max(0, DeviceDatabaseEntry.firstFree(before)));
            request.setState(TargetState.CONFIGURED);
            NodeInfo.NAME.set(request.getNodeInfo(), "");
            NodeInfo.ADDRESS.set(request.getNodeInfo(), address.getValue());
            request.getDeviceEntry().setPortNumber(port());
            if (chapIndex.getValue() != null) {
                request.setChapIndex(number(chapIndex));
            }
            adapter.check("discovery at " + portal(), Progress.during("asking " + portal(),
                () -> adapter.api.setDDBData(adapter.dev, request, request.getTargetID())));
            known = new ArrayList<>();
            for (DevDBEntry entry : DeviceDatabaseEntry.readAll(adapter)) {
                boolean isNew = DeviceDatabaseEntry.find(before, entry.getTargetID()) == null;
                if (isNew) {
                    added.add(entry);
                }
                if (isNew || leadsThere(entry)) {
                    known.add(entry);
                }
            }
        }

        @Override
        int report(Adapter adapter) throws IOException {
            Logins logins = Logins.await(adapter, added);
            // Their states have changed with the logins.
            List<DevDBEntry> now = DeviceDatabaseEntry.readAll(adapter);
            known.replaceAll(entry -> {
                DevDBEntry found = DeviceDatabaseEntry.find(now, entry.getTargetID());
                return found == null ? entry : found;
            });
            if (wantsWords()) {
                System.out.println(known.size() + (known.size() == 1 ? " target is" : " targets are") + " known at "
                    + portal() + ", " + added.size() + " of them new.");
            }
            showList(known, "The portal offers no target.");
            if (wantsWords()) {
                logins.lines().forEach(System.out::println);
            }
            return DONE;
        }

        private int port() {
            return port.getValue() == null ? DeviceParameters.ISCSI_PORT : number(port);
        }

        private String portal() {
            return address.getValue() + ", port " + port();
        }

        private boolean leadsThere(DevDBEntry entry) {
            IPAddr there = entry.getNodeInfo().getIPAddress();
            return address.getValue().equals(there) && (entry.getDeviceEntry().getPortNumber() & 0xFFFF) == port();
        }
    }
}
