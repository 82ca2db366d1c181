package com.varden.tavo.iscsi.hba;

/** The identity of an iSCSI node. */
final class NodeInfo {
    static final TextField NAME = new TextField("iSCSIName", 256, "iSCSI name");
    static final TextField ALIAS = new TextField("alias", 32, "Alias");

    static final RecordTable TABLE = new RecordTable(NAME, ALIAS, new AddressField("IPAddress", "IP address"),
        new NumberField("portalCount", 16, "Portals"));

    private NodeInfo() {}
}
