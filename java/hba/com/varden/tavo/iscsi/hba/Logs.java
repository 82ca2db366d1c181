package com.varden.tavo.iscsi.hba;

import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.codes.AddressType;
import com.varden.tavo.iscsi.codes.ArpState;
import com.varden.tavo.iscsi.codes.ConnectionState;
import com.varden.tavo.iscsi.codes.ErrorEntryType;
import com.varden.tavo.iscsi.codes.ErrorType;
import com.varden.tavo.iscsi.codes.LoginStatus;
import com.varden.tavo.iscsi.codes.Units;
import com.varden.tavo.iscsi.model.ConnectionError;
import com.varden.tavo.iscsi.model.HBA;
import java.io.IOException;
import java.util.List;

/** The adapter's logs. */
final class Logs {
    private static final RecordTable ERROR = new RecordTable(
        new NumberField("seconds", 32, "Seconds"),
        new NumberField("milliseconds", 32, "Milliseconds"),
        new TimeField(),
        new NumberField("deviceIndex", 16, "Target"),
        new CodeField("connState", 16, "Connection", ConnectionState.MEANINGS),
        new CodeField("entryType", 8, "Entry", ErrorEntryType.MEANINGS),
        new CodeField("errorType", 8, "Error", ErrorType.MEANINGS),
        new DetailField(),
        new NumberField("dupErrorCnt", 8, "Repeated"),
        new BytesField("reserved", 3, "Reserved"));

    private static final RecordTable NEIGHBOUR = new RecordTable(
        new AddressField("IPAddress", "IP address"),
        new CodeField("IPAddressType", 16, "Type", AddressType.MEANINGS),
        new NumberField("IPAddressReserved", 16, "Reserved"),
        new BytesField("MACAddress", HBA.MAC_ADDRESS_LENGTH, "MAC address"),
        new CodeField("valid", 8, "Valid", ArpState.MEANINGS),
        new NumberField("timeIn", 8, "Last heard of") {
            @Override
            String format(Long minutes) {
                return Units.describeSilence(minutes.intValue());
            }
        });

    private Logs() {}

    /** The detail of an error: the status of the login when the target refused it. */
    private static final class DetailField extends NumberField {
        DetailField() {
            super("errorDetail", 16, "Detail");
        }

        @Override
        String show(Object owner) {
            return TerminalText.of(plain(owner));
        }

        @Override
        boolean canBeCut() {
            return true;
        }

        @Override
        String plain(Object owner) {
            int detail = get(owner).intValue();
            if (detail == 0) {
                return "";
            }
            boolean refused = ((ConnectionError) owner).getErrorType() == ErrorType.REFUSED;
            return refused ? LoginStatus.describe(detail) : "0x" + Integer.toHexString(detail);
        }

        @Override
        String asideName() {
            return name + TEXT;
        }

        @Override
        void writeAside(JsonWriter json, Object owner) throws IOException {
            json.value(plain(owner));
        }
    }

    /** The log of connection errors, oldest entries first. */
    static List<ConnectionError> readErrors(Adapter adapter) {
        HBA hba = new HBA();
        adapter.check("reading the log", adapter.api.getConnectErrorLog(adapter.dev, hba));
        return hba.getConnectErrorLog();
    }

    /** hba log errors. */
    static final class Errors extends DeviceCommand {
        private final Watch watch = watch(true);

        Errors() {
            super("Shows the log of connection errors, oldest first, in local time. An adapter that does not count "
                + "from 1970 has its seconds shown instead.");
            listing(ERROR, "time", "deviceIndex", "entryType", "errorType", "errorDetail", "dupErrorCnt");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            return watch.run(() -> {
                showList(readErrors(adapter), "No connection error is logged.");
                return DONE;
            });
        }
    }

    /** hba log arp. */
    static final class Arp extends DeviceCommand {
        Arp() {
            super("Shows the adapter's ARP table.");
            listing(NEIGHBOUR, "IPAddress", "MACAddress", "IPAddressType", "valid", "timeIn");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            HBA hba = new HBA();
            adapter.check("reading the ARP table", adapter.api.getARPLog(adapter.dev, hba));
            showList(hba.getARPLog(), "The ARP table is empty.");
            return DONE;
        }
    }
}
