package com.varden.tavo.iscsi.hba;

/** The names of iSCSI nodes, as RFC 7143, section 4.2.7, forms them. */
final class IscsiName {
    private static final int LONGEST = 223;

    private IscsiName() {}

    /**
     * Refuses what is no iSCSI name, null among it.
     *
     * @throws BadInput the message names the place, and --force as the way to have it all the same
     */
    static void require(String name, String place) {
        String given = name == null ? "" : name;
        String fault = fault(given);
        if (fault != null) {
            throw new BadInput(place + ": '" + given + "' is no iSCSI name: " + fault + ". --force writes it all the "
                + "same.");
        }
    }

    private static String fault(String name) {
        if (name.codePointCount(0, name.length()) > LONGEST) {
            return "it is longer than " + LONGEST + " characters";
        }
        for (int i = 0; i < name.length(); i++) {
            char c = name.charAt(i);
            if (!Character.isLetterOrDigit(c) && "-.:".indexOf(c) < 0) {
                return "'" + c + "' is neither a letter nor a digit, '-', '.' or ':'";
            }
        }
        String rest = name.substring(Math.min(4, name.length()));
        return switch (name.substring(0, name.length() - rest.length())) {
            case "iqn." -> rest.matches("\\d{4}-(0[1-9]|1[0-2])\\.[^:]+(:.+)?") ? null
                : "a year and month and a domain come behind 'iqn.', as in iqn.2004-07.com.example:disk";
            case "eui." -> rest.matches("\\p{XDigit}{16}") ? null : "16 hexadecimal digits come behind 'eui.'";
            case "naa." -> rest.matches("\\p{XDigit}{16}|\\p{XDigit}{32}") ? null
                : "16 or 32 hexadecimal digits come behind 'naa.'";
            default -> "it begins with none of 'iqn.', 'eui.' and 'naa.'";
        };
    }
}
