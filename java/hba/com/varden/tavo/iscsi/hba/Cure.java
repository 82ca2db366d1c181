package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.codes.Status;

/** What to do about a status. */
final class Cure {
    private Cure() {}

    /** The status in hexadecimal, with its name, its meaning and the cure when they are known. */
    static String describe(int code) {
        String cure = Status.find(code).map(Cure::of).orElse("");
        return Status.describe(code) + (cure.isEmpty() ? "" : ". " + cure);
    }

    /** What to do about a known status; empty when nothing is known. */
    static String of(Status status) {
        return switch (status) {
            case ERR_JNI_METHOD, ERR_JNI_CLASS -> "Are tool and bridge of the same version?";
            case ERR_BAD_DATA ->
                "The bridge's line gives the length of its list in hexadecimal, 8 bytes for each unit.";
            case ERR_NO_SUCH_ADAPTER -> "'hba adapters' lists them.";
            case ERR_NO_SUCH_TARGET ->
                "Compare the iSCSI name of the target entry with those that the portal offers.";
            case ERR_SCSI_CHECK_CONDITION -> "'hba lun list' lists the target's units.";
            case ERR_FLASH_DAMAGED ->
                "Put a good copy in their place, or remove them to start with the factory settings.";
            case ERR_UNREACHABLE ->
                "Check the address and the port, the cable, and that the target is switched on; 'hba ping' helps.";
            case ERR_TIMEOUT -> "See whether the target is overloaded or hangs, then try again.";
            case ERR_AUTHENTICATION ->
                "Check the entry's CHAP index, the name and secret there, and for mutual CHAP its link.";
            case ERR_LOGIN_REFUSED ->
                "'hba log errors' has the iSCSI login status; the target's own log may say why.";
            case ERR_BUSY -> "Try again when it has ended.";
            case ERR_DATABASE_FULL -> "Free one with 'hba target remove DEV TARGET'.";
            default -> "";
        };
    }
}
