package com.varden.tavo.iscsi.hba.serve;

import java.util.HashSet;
import java.util.List;
import java.util.Locale;
import java.util.Set;
import java.util.regex.Pattern;

/**
 * The names under which the server may be asked. A page of somebody else's whose name was made to lead here cannot read
 * what is served, since its browser names that page's host in the request. An address names no such page.
 */
final class HostNames {
    private static final Pattern ADDRESS = Pattern.compile("\\d+\\.\\d+\\.\\d+\\.\\d+|\\[[0-9a-f:.]+]");
    private static final Pattern PORT = Pattern.compile(":\\d{1,5}$");

    private final Set<String> names = new HashSet<>(Set.of("localhost"));

    HostNames(List<String> more) {
        more.forEach(name -> names.add(name.toLowerCase(Locale.ROOT)));
    }

    /** Whether a Host header is one of ours; HTTP/1.0 needs none, and no browser leaves it out. */
    boolean accept(String host) {
        if (host == null) {
            return true;
        }
        String name = PORT.matcher(host.toLowerCase(Locale.ROOT)).replaceFirst("");
        return names.contains(name) || ADDRESS.matcher(name).matches();
    }
}
