package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.model.ArpEntry;
import com.varden.tavo.iscsi.model.ConnectionError;
import com.varden.tavo.iscsi.model.HBA;
import java.io.IOException;
import java.util.List;

/** The adapter's logs. */
final class Logs {
    private static final RecordTable ERROR = new RecordTable(
        Field.number("seconds", 32, "Seconds"),
        Field.number("milliseconds", 32, "Milliseconds"),
        Field.number("deviceIndex", 16, "Device"),
        Field.number("connState", 16, "Connection state"),
        Field.number("entryType", 8, "Entry type"),
        Field.number("errorType", 8, "Error type"),
        Field.number("errorDetail", 16, "Error detail"),
        Field.number("dupErrorCnt", 8, "Repeated"),
        Field.bytes("reserved", 3, "Reserved"));

    private static final RecordTable NEIGHBOUR = new RecordTable(
        Field.address("IPAddress", "IP address"),
        Field.number("IPAddressType", 16, "Address type"),
        Field.number("IPAddressReserved", 16, "Reserved"),
        Field.bytes("MACAddress", HBA.MAC_ADDRESS_LENGTH, "MAC address"),
        Field.number("valid", 8, "Valid"),
        Field.number("timeIn", 8, "Time"));

    private Logs() {}

    static Command command(String name) {
        switch (name) {
            case "log errors":
                return new Errors();
            default:
                return new Arp();
        }
    }

    /** hba log errors. */
    static final class Errors extends DeviceCommand {
        Errors() {
            super("Shows the log of connection errors. Times count from where the adapter counts; the codes are the "
                + "adapter's.");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            HBA hba = new HBA();
            adapter.check("reading the log", adapter.api.getConnectErrorLog(adapter.dev, hba));
            List<ConnectionError> log = hba.getConnectErrorLog();
            TextOutput.Columns columns =
                new TextOutput.Columns("Time in s", "Device", "State", "Entry", "Error", "Detail", "Repeated");
            for (ConnectionError error : log) {
                columns.row(error.getSeconds() + "." + padded(error.getMilliseconds()), error.getDeviceIndex(),
                    error.getConnState(), error.getEntryType(), error.getErrorType(), error.getErrorDetail(),
                    error.getDupErrorCnt());
            }
            showList(ERROR, log, columns, "No connection error is logged.");
            return DONE;
        }

        private static String padded(long milliseconds) {
            return milliseconds > 999 ? String.valueOf(milliseconds)
                                      : String.valueOf(1000 + milliseconds).substring(1);
        }
    }

    /** hba log arp. */
    static final class Arp extends DeviceCommand {
        Arp() {
            super("Shows the adapter's ARP table.");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            HBA hba = new HBA();
            adapter.check("reading the ARP table", adapter.api.getARPLog(adapter.dev, hba));
            List<ArpEntry> log = hba.getARPLog();
            TextOutput.Columns columns =
                new TextOutput.Columns("IP address", "MAC address", "Type", "Valid", "Time");
            for (ArpEntry entry : log) {
                columns.row(entry.getIPAddress(), Field.hex(entry.getMACAddress(), ":"), entry.getIPAddressType(),
                    entry.getValid(), entry.getTimeIn());
            }
            showList(NEIGHBOUR, log, columns, "The ARP table is empty.");
            return DONE;
        }
    }
}
