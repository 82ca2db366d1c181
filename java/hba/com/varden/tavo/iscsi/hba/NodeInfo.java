package com.varden.tavo.iscsi.hba;

/** The identity of an iSCSI node. */
final class NodeInfo {
    static final TextField NAME = new TextField("iSCSIName", 256, "iSCSI name");
    static final TextField ALIAS = new TextField("alias", 32, "Alias");
    static final AddressField ADDRESS = new AddressField("IPAddress", "IP address");

    static final RecordTable TABLE = new RecordTable(NAME, ALIAS, ADDRESS,
        new NumberField("portalCount", 16, "Portals"));

    private NodeInfo() {}
}
