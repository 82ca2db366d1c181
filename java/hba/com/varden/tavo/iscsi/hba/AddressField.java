package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonPrimitive;
import com.varden.tavo.iscsi.model.IPAddr;

/** An IP address. */
final class AddressField extends SettingField<IPAddr> {
    AddressField(String name, String label) {
        super(name, label);
    }

    @Override
    String range() {
        return "an IPv4 or IPv6 address";
    }

    @Override
    String valueLabel() {
        return "ADDRESS";
    }

    @Override
    IPAddr parse(String text) {
        return IPAddr.parse(text);
    }

    @Override
    boolean accepts(JsonPrimitive value) {
        return value.isString();
    }

    @Override
    IPAddr get(Object owner) {
        return (IPAddr) getProperty(owner);
    }

    // IPv4 before IPv6, and 10.20.0.9 before 10.20.0.11.
    @Override
    Comparable<?> sortKey(Object owner) {
        IPAddr address = get(owner);
        StringBuilder key = new StringBuilder(address.isIPv4() ? "4" : "6");
        for (short part : address.getAddress()) {
            key.append((char) (part & 0xFF));
        }
        return key.toString();
    }

    @Override
    String plain(Object owner) {
        return get(owner).isUnspecified() ? "" : get(owner).toString();
    }

    @Override
    void set(Object owner, IPAddr value) {
        setProperty(owner, value);
    }
}
