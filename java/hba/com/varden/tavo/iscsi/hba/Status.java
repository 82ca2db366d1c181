package com.varden.tavo.iscsi.hba;

/** The status codes of the bridge and of the management library. */
enum Status {
    ERR_JNI_METHOD(0x1001, "a Java method was not found"),
    ERR_JNI_CLASS(0x1002, "a Java class was not found"),
    ERR_JNI_NULL(0x1003, "a Java object is missing, or the table could not be read"),
    ERR_NOT_SUPPORTED(0x2000001c, "the operation is not supported on this platform"),
    ERR_NO_MEMORY(0x2000001f, "there is not enough memory"),
    ERR_ISNS_NOT_SUPPORTED(0x2000002d, "iSNS discovery is not supported on this platform"),
    ERR_INVALID_PARAMETER(0x20000064, "an argument is out of range"),
    ERR_BUFFER_TOO_SMALL(0x20000072, "the list is too long"),
    ERR_BAD_DATA(0x20000075, "the target reports more than 256 logical units, which cannot be read. The bridge's line "
        + "gives the length of its list in hexadecimal, 8 bytes for each unit"),
    ERR_SCSI_TOLERATED(0x20000077, "the data is usable, but not all of it may be there"),
    ERR_INVALID_HANDLE(0x20000101, "the adapter is not open"),
    ERR_NO_SUCH_ADAPTER(0x20000102, "no adapter has this index"),
    ERR_NO_SUCH_ENTRY(0x20000103, "the table has no such entry"),
    ERR_NO_SUCH_TARGET(0x20000104, "no target answers under this ID"),
    ERR_SCSI_CHECK_CONDITION(0x20000105, "the unit refused the command"),
    ERR_FLASH_DAMAGED(0x20000106, "the adapter's flash file is damaged"),
    ERR_FLASH_READ(0x20000107, "the adapter's flash file cannot be read"),
    ERR_FLASH_WRITE(0x20000108, "the adapter's flash file cannot be written; the old contents stand"),
    ERR_IMAGE_FILE(0x20000109, "the firmware image is missing, empty or unreadable"),
    ERR_OUTPUT_FILE(0x2000010a, "the file cannot be written"),
    ERR_UNREACHABLE(0x2000010b, "nothing answers at this address");

    private final int code;
    private final String meaning;

    Status(int code, String meaning) {
        this.code = code;
        this.meaning = meaning;
    }

    boolean is(int status) {
        return code == status;
    }

    /** The status in hexadecimal, with its name and meaning when they are known. */
    static String describe(int status) {
        String hex = "0x" + Integer.toHexString(status);
        for (Status known : values()) {
            if (known.is(status)) {
                return hex + " " + known + ": " + known.meaning;
            }
        }
        return hex + " (a status of the management library)";
    }
}
