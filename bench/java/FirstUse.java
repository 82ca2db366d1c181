package com.varden.tavo.iscsi.bench;

import com.varden.tavo.iscsi.model.HBA;

/** A peer's first use in this process, from before its first class is loaded to the end of a snapshot. */
final class FirstUse {
    private FirstUse() {}

    /** Prints the nanoseconds that the named peer took. */
    public static void main(String[] arguments) {
        long start = System.nanoTime();
        HBA hba = new HBA();
        int status = Peer.open(arguments[0]).snapshot().applyAsInt(hba);
        long time = System.nanoTime() - start;
        Measured.require(status == 0 && hba.getDeviceDataBaseEntries().size() == Fixture.ENTRIES, "no full snapshot");
        System.out.println(time);
    }
}
