package com.varden.tavo.iscsi.codes;

import java.util.Optional;
import java.util.stream.Stream;

/**
 * What the methods of {@code ApiWrapper} return: 0 for success, else one of these, or a status that only the management
 * library in use knows. The names are those of {@code vdsdm/Status.h}.
 */
public enum Status {
    ERR_JNI_METHOD(0x1001, "a Java method was not found"),
    ERR_JNI_CLASS(0x1002, "a Java class was not found"),
    ERR_JNI_NULL(0x1003, "a Java object is missing, or the table could not be read"),
    ERR_NOT_SUPPORTED(0x2000001c, "the operation is not supported on this platform"),
    ERR_NO_MEMORY(0x2000001f, "there is not enough memory"),
    ERR_ISNS_NOT_SUPPORTED(0x2000002d, "iSNS discovery is not supported on this platform"),
    ERR_INVALID_PARAMETER(0x20000064, "an argument is out of range"),
    ERR_BUFFER_TOO_SMALL(0x20000072, "the list is too long"),
    ERR_BAD_DATA(0x20000075, "the target reports more than 256 logical units, which cannot be read"),
    ERR_SCSI_TOLERATED(0x20000077, "the data is usable, but not all of it may be there"),
    ERR_INVALID_HANDLE(0x20000101, "the adapter is not open"),
    ERR_NO_SUCH_ADAPTER(0x20000102, "no adapter has this index"),
    ERR_NO_SUCH_ENTRY(0x20000103, "the table has no such entry"),
    ERR_NO_SUCH_TARGET(0x20000104, "no target answers under this ID or name"),
    ERR_SCSI_CHECK_CONDITION(0x20000105, "the unit refused the command"),
    ERR_FLASH_DAMAGED(0x20000106, "the stored settings are damaged, or not of this adapter"),
    ERR_FLASH_READ(0x20000107, "the stored settings cannot be read"),
    ERR_FLASH_WRITE(0x20000108, "the settings cannot be written; the old ones stand"),
    ERR_IMAGE_FILE(0x20000109, "the firmware image is missing, empty or unreadable"),
    ERR_OUTPUT_FILE(0x2000010a, "the file cannot be written"),
    ERR_UNREACHABLE(0x2000010b, "nothing answers at this address"),
    ERR_TIMEOUT(0x2000010c, "the target was reached but did not answer in time"),
    ERR_AUTHENTICATION(0x2000010d, "CHAP failed: the target or the adapter did not accept the other's credentials"),
    ERR_LOGIN_REFUSED(0x2000010e, "the target refused the login"),
    ERR_BUSY(0x2000010f, "another process is writing to this adapter"),
    ERR_DATABASE_FULL(0x20000110, "the device database has no free slot");

    private final int code;
    private final String meaning;

    Status(int code, String meaning) {
        this.code = code;
        this.meaning = meaning;
    }

    /** The number that the methods return. */
    public int code() {
        return code;
    }

    /** What it means, in words. */
    public String meaning() {
        return meaning;
    }

    /** Whether a method returned this status. */
    public boolean is(int status) {
        return code == status;
    }

    /** The known status of this number, if any. */
    public static Optional<Status> find(int status) {
        return Stream.of(values()).filter(known -> known.is(status)).findFirst();
    }

    /**
     * The status in hexadecimal, with its name and meaning when they are known: "0x20000102 ERR_NO_SUCH_ADAPTER: no
     * adapter has this index".
     */
    public static String describe(int status) {
        String hexadecimal = "0x" + Integer.toHexString(status);
        return find(status).map(known -> hexadecimal + " " + known + ": " + known.meaning)
            .orElse(status == 0 ? hexadecimal + " success" : hexadecimal + " (a status of the management library)");
    }
}
