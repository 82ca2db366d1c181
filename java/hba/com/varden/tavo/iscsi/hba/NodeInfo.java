package com.varden.tavo.iscsi.hba;

/** The identity of an iSCSI node. */
final class NodeInfo {
    static final Field NAME = Field.text("iSCSIName", 256, "iSCSI name");
    static final Field ALIAS = Field.text("alias", 32, "Alias");

    static final RecordTable TABLE = new RecordTable(NAME, ALIAS, Field.address("IPAddress", "IP address"),
        Field.number("portalCount", 16, "Portals"));

    private NodeInfo() {}
}
