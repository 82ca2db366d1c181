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

    @Override
    void set(Object owner, IPAddr value) {
        setProperty(owner, value);
    }
}
