package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.codes.ImageType;
import com.varden.tavo.iscsi.model.IPAddr;
import java.io.File;
import java.io.IOException;
import java.util.List;
import picocli.CommandLine.Model.OptionSpec;
import picocli.CommandLine.Model.PositionalParamSpec;

/** Service of the adapter: firmware update, reset, crash record, ping. */
final class Maintenance {
    private Maintenance() {}

    /** hba firmware update. */
    static final class Update extends WriteCommand {
        private final PositionalParamSpec image = parameter("FILE", "1", "The image.");
        private final OptionSpec type = option("--type", new NumberField("type", 16, "Type"),
            "Type of the image, 0 to 65535: " + ImageType.MEANINGS.describe(ImageType.FIRMWARE) + " without this "
                + "option, " + ImageType.MEANINGS.describe(ImageType.OPTION_ROM)
                + ". An adapter of another maker may have other types.");
        private File file;

        Update() {
            super("Writes a firmware image. The adapter runs it after its next reset.");
        }

        @Override
        void prepare() {
            file = UserInput.file(image.getValue());
            if (!file.isFile() || !file.canRead()) {
                throw new BadInput(file + " is not a file that can be read");
            }
            if (file.length() == 0) {
                throw new BadInput(file + " is empty");
            }
        }

        @Override
        List<String> losses(Adapter adapter) {
            return List.of("replaces the firmware of adapter " + adapter.dev + " by " + file);
        }

        @Override
        void write(Adapter adapter) {
            short imageType = (short) (type.getValue() == null ? 0 : number(type));
            boolean written = Progress.during("writing the image",
                () -> adapter.api.iSCSIUpdateFW(adapter.dev, file.getPath(), imageType));
            adapter.check("the firmware update", written);
        }

        @Override
        int report(Adapter adapter) throws IOException {
            done("The firmware image of adapter " + adapter.dev + " was written.");
            return DONE;
        }
    }

    /** hba reset. */
    static final class Reset extends WriteCommand {
        Reset() {
            super("Resets the adapter. Its sessions are interrupted.");
        }

        @Override
        List<String> losses(Adapter adapter) {
            return List.of("resets adapter " + adapter.dev + " and interrupts its sessions");
        }

        @Override
        void write(Adapter adapter) {
            adapter.check("the reset",
                Progress.during("resetting", () -> adapter.api.resetISCSIHBA(adapter.dev)));
        }

        @Override
        int report(Adapter adapter) throws IOException {
            done("Adapter " + adapter.dev + " was reset.", Logins.await(adapter, DeviceDatabaseEntry.readAll(adapter)));
            return DONE;
        }
    }

    /** hba crash. */
    static final class Crash extends DeviceCommand {
        private final PositionalParamSpec file = parameter("FILE", "1", "The file to write; an old one is replaced.");

        Crash() {
            super("Has the adapter's crash record written to a file.");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            String path = UserInput.file(file.getValue()).getPath();
            adapter.check("writing the crash record to " + path,
                adapter.api.retrieveCrashRecord(adapter.dev, path));
            done("The crash record of adapter " + adapter.dev + " stands in " + path + ".");
            return DONE;
        }
    }

    /** hba ping. */
    static final class Ping extends DeviceCommand {
        private static final int PACKETS = 4;

        private final PositionalParamSpec address =
            parameter("ADDRESS", new AddressField("address", "Address"), "IPv4 or IPv6 address.");
        private final OptionSpec count = option("--count", new NumberField("count", 16, "Packets"),
            "Number of packets, 0 to 65535; " + PACKETS + " without this option.");

        Ping() {
            super("Has the adapter send ping packets to an address.");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            IPAddr target = address.getValue();
            int packets = count.getValue() == null ? PACKETS : number(count);
            adapter.check("the ping of " + target, adapter.api.ping(adapter.dev, target, packets));
            done(target + " answers adapter " + adapter.dev + " (" + packets + " packets).");
            return DONE;
        }
    }
}
