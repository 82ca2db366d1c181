package com.varden.tavo.iscsi.hba;

/** The status codes of the bridge and of the management library, each in words, with what to do about it. */
enum Status {
    ERR_JNI_METHOD(0x1001, "a Java method was not found", "Are tool and bridge of the same version?"),
    ERR_JNI_CLASS(0x1002, "a Java class was not found", "Are tool and bridge of the same version?"),
    ERR_JNI_NULL(0x1003, "a Java object is missing, or the table could not be read", ""),
    ERR_NOT_SUPPORTED(0x2000001c, "the operation is not supported on this platform", ""),
    ERR_NO_MEMORY(0x2000001f, "there is not enough memory", ""),
    ERR_ISNS_NOT_SUPPORTED(0x2000002d, "iSNS discovery is not supported on this platform", ""),
    ERR_INVALID_PARAMETER(0x20000064, "an argument is out of range", ""),
    ERR_BUFFER_TOO_SMALL(0x20000072, "the list is too long", ""),
    ERR_BAD_DATA(0x20000075, "the target reports more than 256 logical units, which cannot be read",
        "The bridge's line gives the length of its list in hexadecimal, 8 bytes for each unit."),
    ERR_SCSI_TOLERATED(0x20000077, "the data is usable, but not all of it may be there", ""),
    ERR_INVALID_HANDLE(0x20000101, "the adapter is not open", ""),
    ERR_NO_SUCH_ADAPTER(0x20000102, "no adapter has this index", "'hba adapters' lists them."),
    ERR_NO_SUCH_ENTRY(0x20000103, "the table has no such entry", ""),
    ERR_NO_SUCH_TARGET(0x20000104, "no target answers under this ID or name",
        "Compare the iSCSI name of the target entry with those that the portal offers."),
    ERR_SCSI_CHECK_CONDITION(0x20000105, "the unit refused the command", "'hba lun list' lists the target's units."),
    ERR_FLASH_DAMAGED(0x20000106, "the adapter's stored settings are damaged",
        "Put a good copy in their place, or remove them to start with the factory settings."),
    ERR_FLASH_READ(0x20000107, "the adapter's stored settings cannot be read", ""),
    ERR_FLASH_WRITE(0x20000108, "the adapter's settings cannot be written; the old ones stand", ""),
    ERR_IMAGE_FILE(0x20000109, "the firmware image is missing, empty or unreadable", ""),
    ERR_OUTPUT_FILE(0x2000010a, "the file cannot be written", ""),
    ERR_UNREACHABLE(0x2000010b, "nothing answers at this address",
        "Check the address and the port, the cable, and that the target is switched on; 'hba ping' helps."),
    ERR_TIMEOUT(0x2000010c, "the target was connected and then fell silent",
        "See whether the target is overloaded or hangs, then try again."),
    ERR_AUTHENTICATION(0x2000010d, "CHAP failed, on the adapter's side or on the target's",
        "Check the entry's CHAP index, the name and secret there, and for mutual CHAP its link."),
    ERR_LOGIN_REFUSED(0x2000010e, "the target refused the login",
        "'hba log errors' has the iSCSI login status; the target's own log may say why."),
    ERR_BUSY(0x2000010f, "another process is writing to this adapter", "Try again when it has ended."),
    ERR_DATABASE_FULL(0x20000110, "the device database has no free slot",
        "Free one with 'hba target set DEV TARGET --state=0'.");

    final int code;
    final String meaning;
    private final String cure;

    Status(int code, String meaning, String cure) {
        this.code = code;
        this.meaning = meaning;
        this.cure = cure;
    }

    boolean is(int status) {
        return code == status;
    }

    /** The known status of this code, or null. */
    static Status of(int code) {
        for (Status known : values()) {
            if (known.is(code)) {
                return known;
            }
        }
        return null;
    }

    /** The status in hexadecimal, with its name, its meaning and the cure when they are known. */
    static String describe(int code) {
        String hex = "0x" + Integer.toHexString(code);
        Status known = of(code);
        if (known == null) {
            return hex + " (a status of the management library)";
        }
        return hex + " " + known + ": " + known.meaning + (known.cure.isEmpty() ? "" : ". " + known.cure);
    }
}
