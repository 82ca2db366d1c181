package com.varden.tavo.iscsi.hba;

/** Names and meanings of the status codes. */
final class Status {
    private Status() {}

    /** The status in hexadecimal, with its name and meaning when they are known. */
    static String describe(int status) {
        String hex = "0x" + Integer.toHexString(status);
        String meaning = meaning(status);
        return meaning == null ? hex + " (a status of the management library)" : hex + " " + meaning;
    }

    private static String meaning(int status) {
        switch (status) {
            case 0x1001:
                return "ERR_JNI_METHOD: a Java method was not found";
            case 0x1002:
                return "ERR_JNI_CLASS: a Java class was not found";
            case 0x1003:
                return "ERR_JNI_NULL: a Java object is missing, or the table could not be read";
            case 0x2000001c:
                return "ERR_NOT_SUPPORTED: the operation is not supported on this platform";
            case 0x2000001f:
                return "ERR_NO_MEMORY: there is not enough memory";
            case 0x2000002d:
                return "ERR_ISNS_NOT_SUPPORTED: iSNS discovery is not supported on this platform";
            case 0x20000064:
                return "ERR_INVALID_PARAMETER: an argument is out of range";
            case 0x20000072:
                return "ERR_BUFFER_TOO_SMALL: the list is too long";
            case 0x20000075:
                return "ERR_BAD_DATA: the target reported an impossible number of LUNs";
            case 0x20000077:
                return "ERR_SCSI_TOLERATED: the data is usable, but not all of it may be there";
            case 0x20000101:
                return "ERR_INVALID_HANDLE: the adapter is not open";
            case 0x20000102:
                return "ERR_NO_SUCH_ADAPTER: no adapter has this index";
            case 0x20000103:
                return "ERR_NO_SUCH_ENTRY: the table has no such entry";
            case 0x20000104:
                return "ERR_NO_SUCH_TARGET: no target answers under this ID";
            case 0x20000105:
                return "ERR_SCSI_CHECK_CONDITION: the unit refused the command";
            case 0x20000106:
                return "ERR_FLASH_DAMAGED: the adapter's flash file is damaged";
            case 0x20000107:
                return "ERR_FLASH_READ: the adapter's flash file cannot be read";
            case 0x20000108:
                return "ERR_FLASH_WRITE: the adapter's flash file cannot be written; the old contents stand";
            case 0x20000109:
                return "ERR_IMAGE_FILE: the firmware image is missing, empty or unreadable";
            case 0x2000010a:
                return "ERR_OUTPUT_FILE: the file cannot be written";
            case 0x2000010b:
                return "ERR_UNREACHABLE: nothing answers at this address";
            default:
                return null;
        }
    }
}
