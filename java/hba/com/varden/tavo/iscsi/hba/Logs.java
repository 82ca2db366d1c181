package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.model.ArpEntry;
import com.varden.tavo.iscsi.model.ConnectionError;
import com.varden.tavo.iscsi.model.HBA;
import java.io.IOException;
import java.util.List;

/** The adapter's logs. */
final class Logs {
    private static final RecordTable ERROR = new RecordTable(
        new NumberField("seconds", 32, "Seconds"),
        new NumberField("milliseconds", 32, "Milliseconds"),
        new NumberField("deviceIndex", 16, "Device"),
        new NumberField("connState", 16, "Connection state"),
        new NumberField("entryType", 8, "Entry type"),
        new NumberField("errorType", 8, "Error type"),
        new NumberField("errorDetail", 16, "Error detail"),
        new NumberField("dupErrorCnt", 8, "Repeated"),
        new BytesField("reserved", 3, "Reserved"));

    private static final RecordTable NEIGHBOUR = new RecordTable(
        new AddressField("IPAddress", "IP address"),
        new NumberField("IPAddressType", 16, "Address type"),
        new NumberField("IPAddressReserved", 16, "Reserved"),
        new BytesField("MACAddress", HBA.MAC_ADDRESS_LENGTH, "MAC address"),
        new NumberField("valid", 8, "Valid"),
        new NumberField("timeIn", 8, "Time"));

    private Logs() {}

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
                columns.row(entry.getIPAddress(), BytesField.format(entry.getMACAddress()), entry.getIPAddressType(),
                    entry.getValid(), entry.getTimeIn());
            }
            showList(NEIGHBOUR, log, columns, "The ARP table is empty.");
            return DONE;
        }
    }
}
