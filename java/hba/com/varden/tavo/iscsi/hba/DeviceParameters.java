package com.varden.tavo.iscsi.hba;

/** The parameters of a session. */
final class DeviceParameters {
    static final Field PORT = Field.number("portNumber", 16, "TCP port");

    static final RecordTable TABLE = new RecordTable(
        Field.text("targetAddress", 32, "Target address"),
        PORT,
        Field.number("deviceType", 16, "Device type"),
        Field.bits("iSCSIOptions", 16, "iSCSI options"),
        Field.bits("TCPOptions", 16, "TCP options"),
        Field.bits("IPOptions", 16, "IP options"),
        Field.number("executionThrottle", 16, "Execution throttle"),
        Field.number("retryCount", 8, "Retries"),
        Field.number("retryDelay", 8, "Retry delay").unit("s"),
        Field.number("maxRxDataSegmentLen", 16, "Max. receive segment"),
        Field.number("firstBurstSize", 16, "First burst size"),
        Field.number("maxBurstSize", 16, "Max. burst size"),
        Field.number("maxOutstandingR2T", 16, "Max. outstanding R2T"),
        Field.number("defaultTime2Wait", 16, "Time to wait").unit("s"),
        Field.number("defaultTime2Retain", 16, "Time to retain").unit("s"),
        Field.number("keepAliveTO", 16, "Keep-alive timeout").unit("s"),
        Field.number("taskManagementTimeout", 16, "Task mgmt. timeout").unit("s"));

    private DeviceParameters() {}
}
