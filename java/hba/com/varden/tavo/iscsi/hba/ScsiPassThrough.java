package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.codes.Status;
import com.varden.tavo.iscsi.model.Lun;
import com.varden.tavo.iscsi.model.SCSIInqInfo;
import com.varden.tavo.iscsi.model.TargetInfo;
import java.io.IOException;
import picocli.CommandLine.Model.OptionSpec;
import picocli.CommandLine.Model.PositionalParamSpec;

/** SCSI commands to the logical units of a target. */
final class ScsiPassThrough {
    /** The number of a unit; the property is the first level of its address. */
    static final NumberField UNIT = new NumberField("LUN", 16, "LUN") {
        @Override
        Long get(Object owner) {
            return (long) Lun.unitNumber(super.get(owner).intValue());
        }
    };
    static final RecordTable ADDRESS = new RecordTable(
        new NumberField("bus", 16, "Bus"),
        new NumberField("targetID", 16, "Target"),
        UNIT);

    static final RecordTable INQUIRY = new RecordTable(
        new TextField("vendorID", 8, "Vendor"),
        new TextField("productID", 16, "Product"),
        new TextField("revision", 4, "Revision"),
        new TextField("serialNumber", 8, "Serial number"),
        new TextField("inquiryHeader", 8, "Header"),
        new TextField("extraData", 211, "Extra data"));

    static final NumberField LAST_BLOCK = new NumberField("logicalBlockAddress", 32, "Last block");
    static final NumberField BLOCK_LENGTH = new NumberField("bytesPerBlock", 32, "Block length").unit("bytes");
    static final CapacityField CAPACITY = new CapacityField("capacity", "Capacity");
    static final FlagField CAPACITY_MINIMUM =
        (FlagField) new FlagField("capacityMinimum", "Capacity is a minimum").readOnly();
    static final RecordTable CAPACITIES = new RecordTable(LAST_BLOCK, BLOCK_LENGTH, CAPACITY, CAPACITY_MINIMUM);

    private static final int LAST_UNIT = 0x3FFF;

    private ScsiPassThrough() {}

    /** Whether a status says that the target answered, if only to refuse the command. */
    static boolean isAnswer(int status) {
        return status == 0 || Status.ERR_SCSI_CHECK_CONDITION.is(status);
    }

    /** Whether a target answers a command. */
    static boolean answers(Adapter adapter, int target) {
        TargetInfo address = new TargetInfo();
        address.setTargetID(target);
        return isAnswer(adapter.api.getScsiInquiryData(adapter.dev, address, new SCSIInqInfo()));
    }

    /** The arguments that name a logical unit. */
    static final class Unit {
        private final PositionalParamSpec target;
        private final PositionalParamSpec lun;
        private final OptionSpec bus;

        Unit(Command command) {
            target = command.parameter("TARGET", DeviceDatabaseEntry.TARGET_ID, "Target ID, 0 to 511.");
            lun = command.parameter("LUN", new NumberField("lun", 16, "LUN").max(LAST_UNIT),
                "Logical unit, 0 to " + LAST_UNIT + ".");
            bus = bus(command);
        }

        static OptionSpec bus(Command command) {
            return command.option("--bus", new NumberField("bus", 16, "Bus"), "Bus number, 0 to 65535; 0 without this "
                + "option.");
        }

        void fill(TargetInfo address) {
            address.setBus(bus.getValue() == null ? 0 : Command.number(bus));
            address.setTargetID(Command.number(target));
            address.setLUN(Lun.firstLevel(Command.number(lun)));
        }

        String name() {
            return "logical unit " + Command.number(lun) + " of target " + Command.number(target);
        }
    }

    /** hba lun inquiry. */
    static final class Inquiry extends DeviceCommand {
        private final Unit unit = new Unit(this);

        Inquiry() {
            super("Sends INQUIRY to a logical unit.");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            TargetInfo address = new TargetInfo();
            unit.fill(address);
            SCSIInqInfo inquiry = new SCSIInqInfo();
            adapter.check("asking " + unit.name() + " what it is",
                adapter.api.getScsiInquiryData(adapter.dev, address, inquiry));
            show(INQUIRY, inquiry);
            return DONE;
        }
    }

    /** hba lun capacity. */
    static final class Capacity extends DeviceCommand {
        private final Unit unit = new Unit(this);

        Capacity() {
            super("Sends READ CAPACITY to a logical unit.");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            Lun lun = new Lun();
            unit.fill(lun.getTargetInfo());
            adapter.check("asking " + unit.name() + " for its capacity",
                adapter.api.getScsiReadCapacityData(adapter.dev, lun));
            show(CAPACITIES, lun);
            return DONE;
        }
    }
}
