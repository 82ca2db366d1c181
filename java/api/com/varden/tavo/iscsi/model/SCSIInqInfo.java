package com.varden.tavo.iscsi.model;

/**
 * What a logical unit says of itself when it is asked by INQUIRY.
 *
 * Text ends at the first zero byte of its field; blanks that pad a field are kept. null until the unit was asked.
 */
public final class SCSIInqInfo {
    private String inquiryHeader;
    private String vendorID;
    private String productID;
    private String revision;
    private String serialNumber;
    private String extraData;

    /** The first 8 bytes as text; empty for a disk, whose first byte is 0. */
    public String getInquiryHeader() {
        return inquiryHeader;
    }

    public void setInquiryHeader(String inquiryHeader) {
        this.inquiryHeader = inquiryHeader;
    }

    /** Vendor, up to 8 characters. */
    public String getVendorID() {
        return vendorID;
    }

    public void setVendorID(String vendorID) {
        this.vendorID = vendorID;
    }

    /** Product, up to 16 characters. */
    public String getProductID() {
        return productID;
    }

    public void setProductID(String productID) {
        this.productID = productID;
    }

    /** Product revision, up to 4 characters. */
    public String getRevision() {
        return revision;
    }

    public void setRevision(String revision) {
        this.revision = revision;
    }

    /** Serial number, up to 8 characters; empty when the unit does not tell it. */
    public String getSerialNumber() {
        return serialNumber;
    }

    public void setSerialNumber(String serialNumber) {
        this.serialNumber = serialNumber;
    }

    /** What follows, up to 211 characters; mostly empty. */
    public String getExtraData() {
        return extraData;
    }

    public void setExtraData(String extraData) {
        this.extraData = extraData;
    }
}
