package com.varden.tavo.iscsi.model;

/**
 * The iSCSI and TCP parameters of a session: those of one target, or the adapter's defaults.
 *
 * Every number is unsigned and has 8 or 16 bits in the adapter; what a setter is given beyond that is cut when it is
 * written. Where the Java type is too narrow for the unsigned value, the method that ends in Unsigned gives it. Times
 * are in seconds; sizes are in the units that the adapter's documentation gives.
 */
public final class DevEntry {
    private int deviceType;
    private int executionThrottle;
    private short retryCount;
    private short retryDelay;
    private short iscsiOptions;
    private int tcpOptions;
    private int ipOptions;
    private int maxRxDataSegmentLen;
    private int firstBurstSize;
    private int defaultTime2Wait;
    private int defaultTime2Retain;
    private int maxOutstandingR2T;
    private int keepAliveTO;
    private int portNumber;
    private short maxBurstSize;
    private short taskManagementTimeout;
    private String targetAddress;

    /** Device type, 16 bits. */
    public int getDeviceType() {
        return deviceType;
    }

    public void setDeviceType(int deviceType) {
        this.deviceType = deviceType;
    }

    /** Number of commands that may be outstanding, 16 bits. */
    public int getExecutionThrottle() {
        return executionThrottle;
    }

    public void setExecutionThrottle(int executionThrottle) {
        this.executionThrottle = executionThrottle;
    }

    /** Number of retries of a login, 0 to 255. */
    public short getRetryCount() {
        return retryCount;
    }

    public void setRetryCount(short retryCount) {
        this.retryCount = retryCount;
    }

    /** Delay between two retries in seconds, 0 to 255. */
    public short getRetryDelay() {
        return retryDelay;
    }

    public void setRetryDelay(short retryDelay) {
        this.retryDelay = retryDelay;
    }

    /** iSCSI option bits: 16 bits in a short, 0x8000 and above arrive negative. */
    public short getiSCSIOptions() {
        return iscsiOptions;
    }

    public void setiSCSIOptions(short iscsiOptions) {
        this.iscsiOptions = iscsiOptions;
    }

    /** iSCSI option bits as a number from 0 to 65535. */
    public int getiSCSIOptionsUnsigned() {
        return Short.toUnsignedInt(iscsiOptions);
    }

    /** TCP option bits, 16 bits. */
    public int getTCPOptions() {
        return tcpOptions;
    }

    public void setTCPOptions(int tcpOptions) {
        this.tcpOptions = tcpOptions;
    }

    /** IP option bits, 16 bits. */
    public int getIPOptions() {
        return ipOptions;
    }

    public void setIPOptions(int ipOptions) {
        this.ipOptions = ipOptions;
    }

    /** Longest data segment that is received, 16 bits, in units of the adapter. */
    public int getMaxRxDataSegmentLen() {
        return maxRxDataSegmentLen;
    }

    public void setMaxRxDataSegmentLen(int maxRxDataSegmentLen) {
        this.maxRxDataSegmentLen = maxRxDataSegmentLen;
    }

    /** Longest first burst, 16 bits, in units of the adapter. */
    public int getFirstBurstSize() {
        return firstBurstSize;
    }

    public void setFirstBurstSize(int firstBurstSize) {
        this.firstBurstSize = firstBurstSize;
    }

    /** DefaultTime2Wait of the session in seconds, 16 bits. */
    public int getDefaultTime2Wait() {
        return defaultTime2Wait;
    }

    public void setDefaultTime2Wait(int defaultTime2Wait) {
        this.defaultTime2Wait = defaultTime2Wait;
    }

    /** DefaultTime2Retain of the session in seconds, 16 bits. */
    public int getDefaultTime2Retain() {
        return defaultTime2Retain;
    }

    public void setDefaultTime2Retain(int defaultTime2Retain) {
        this.defaultTime2Retain = defaultTime2Retain;
    }

    /** Number of R2Ts that may be outstanding, 16 bits. */
    public int getMaxOutstandingR2T() {
        return maxOutstandingR2T;
    }

    public void setMaxOutstandingR2T(int maxOutstandingR2T) {
        this.maxOutstandingR2T = maxOutstandingR2T;
    }

    /** Keep-alive timeout in seconds, 16 bits. */
    public int getKeepAliveTO() {
        return keepAliveTO;
    }

    public void setKeepAliveTO(int keepAliveTO) {
        this.keepAliveTO = keepAliveTO;
    }

    /** TCP port, 0 to 65535. */
    public int getPortNumber() {
        return portNumber;
    }

    public void setPortNumber(int portNumber) {
        this.portNumber = portNumber;
    }

    /** Longest burst in units of the adapter: 16 bits in a short, 0x8000 and above arrive negative. */
    public short getMaxBurstSize() {
        return maxBurstSize;
    }

    public void setMaxBurstSize(short maxBurstSize) {
        this.maxBurstSize = maxBurstSize;
    }

    /** Longest burst as a number from 0 to 65535. */
    public int getMaxBurstSizeUnsigned() {
        return Short.toUnsignedInt(maxBurstSize);
    }

    /** Task management timeout in seconds: 16 bits in a short, 0x8000 and above arrive negative. */
    public short getTaskManagementTimeout() {
        return taskManagementTimeout;
    }

    public void setTaskManagementTimeout(short taskManagementTimeout) {
        this.taskManagementTimeout = taskManagementTimeout;
    }

    /** Task management timeout as a number from 0 to 65535. */
    public int getTaskManagementTimeoutUnsigned() {
        return Short.toUnsignedInt(taskManagementTimeout);
    }

    /** Target address as text of at most 32 bytes of UTF-8; null when not supplied. */
    public String getTargetAddress() {
        return targetAddress;
    }

    public void setTargetAddress(String targetAddress) {
        this.targetAddress = targetAddress;
    }
}
