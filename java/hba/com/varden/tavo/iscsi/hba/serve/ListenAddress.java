package com.varden.tavo.iscsi.hba.serve;

import com.varden.tavo.iscsi.hba.BadInput;
import com.varden.tavo.iscsi.model.IPAddr;
import java.net.InetAddress;
import java.net.InetSocketAddress;
import java.net.UnknownHostException;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

/** Where the server listens: an IP address and a port, as in 127.0.0.1:9860 or [::1]:9860. */
record ListenAddress(InetAddress address, int port) {
    static final String USUAL = "127.0.0.1:9860";

    private static final Pattern FORM = Pattern.compile("(?:\\[([0-9A-Fa-f:.]+)]|([0-9.]+)):(\\d{1,5})");
    private static final int LAST_PORT = 65535;

    static ListenAddress parse(String text) {
        Matcher parts = FORM.matcher(text);
        if (parts.matches() && Integer.parseInt(parts.group(3)) <= LAST_PORT) {
            String address = parts.group(1) != null ? parts.group(1) : parts.group(2);
            try {
                IPAddr.parse(address);
                return new ListenAddress(InetAddress.getByName(address), Integer.parseInt(parts.group(3)));
            } catch (IllegalArgumentException | UnknownHostException e) {
                // Said below.
            }
        }
        throw new BadInput("--listen: '" + text + "' is not permitted: an IP address and a port, as in " + USUAL
            + " or [::1]:9860");
    }

    boolean isLoopback() {
        return address.isLoopbackAddress();
    }

    InetSocketAddress socketAddress() {
        return new InetSocketAddress(address, port);
    }

    /** As it stands in a URL. */
    static String show(InetSocketAddress listening) {
        String address = listening.getAddress().getHostAddress();
        return (address.contains(":") ? "[" + address + "]" : address) + ":" + listening.getPort();
    }
}
