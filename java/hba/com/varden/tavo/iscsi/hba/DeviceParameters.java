package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.codes.IscsiOptions;

/** The parameters of a session. */
final class DeviceParameters {
    static final TextField TARGET_ADDRESS = new TextField("targetAddress", 32, "Target address");
    /** The port of a portal where nothing else is said. */
    static final int ISCSI_PORT = 3260;
    static final NumberField PORT = new NumberField("portNumber", 16, "TCP port").heading("Port");

    static final RecordTable TABLE = new RecordTable(
        TARGET_ADDRESS,
        PORT,
        new NumberField("deviceType", 16, "Device type"),
        new BitsField("iSCSIOptions", 16, "iSCSI options", IscsiOptions.MEANINGS),
        new BitsField("TCPOptions", 16, "TCP options"),
        new BitsField("IPOptions", 16, "IP options"),
        new NumberField("executionThrottle", 16, "Execution throttle"),
        new NumberField("retryCount", 8, "Retries"),
        new NumberField("retryDelay", 8, "Retry delay").unit("s"),
        new SizeField("maxRxDataSegmentLen", "Max. receive segment"),
        new SizeField("firstBurstSize", "First burst size"),
        new SizeField("maxBurstSize", "Max. burst size"),
        new NumberField("maxOutstandingR2T", 16, "Max. outstanding R2T"),
        new NumberField("defaultTime2Wait", 16, "Time to wait").unit("s"),
        new NumberField("defaultTime2Retain", 16, "Time to retain").unit("s"),
        new NumberField("keepAliveTO", 16, "Keep-alive timeout").unit("s"),
        new NumberField("taskManagementTimeout", 16, "Task mgmt. timeout").unit("s"));

    private DeviceParameters() {}
}
