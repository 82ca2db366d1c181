package com.varden.tavo.iscsi.codes;

import java.util.HexFormat;
import java.util.Locale;
import java.util.Optional;
import java.util.stream.Stream;

/**
 * Statuses of an iSCSI login, after RFC 7143, section 11.13.5: {@code ConnectionError.getErrorDetail} of a
 * refused login.
 */
public enum LoginStatus {
    SUCCESS(0x0000),
    TARGET_MOVED_TEMPORARILY(0x0101),
    TARGET_MOVED_PERMANENTLY(0x0102),
    INITIATOR_ERROR(0x0200),
    AUTHENTICATION_FAILED(0x0201),
    AUTHORIZATION_FAILED(0x0202),
    NOT_FOUND(0x0203),
    TARGET_REMOVED(0x0204),
    UNSUPPORTED_VERSION(0x0205),
    TOO_MANY_CONNECTIONS(0x0206),
    MISSING_PARAMETER(0x0207),
    CANNOT_INCLUDE_IN_SESSION(0x0208),
    SESSION_TYPE_NOT_SUPPORTED(0x0209),
    SESSION_DOES_NOT_EXIST(0x020A),
    INVALID_DURING_LOGIN(0x020B),
    TARGET_ERROR(0x0300),
    SERVICE_UNAVAILABLE(0x0301),
    OUT_OF_RESOURCES(0x0302);

    private final int status;

    LoginStatus(int status) {
        this.status = status;
    }

    /** The class of the status in the upper byte, its detail in the lower one. */
    public int status() {
        return status;
    }

    /** The known status of this number, if any. */
    public static Optional<LoginStatus> find(int status) {
        return Stream.of(values()).filter(known -> known.status == status).findFirst();
    }

    /** The meaning alone: "authentication failed", or "0999h". */
    public static String text(int status) {
        return find(status).map(known -> known.name().toLowerCase(Locale.ROOT).replace('_', ' '))
            .orElseGet(() -> hexadecimal(status));
    }

    /** The status as the standard writes it, with its meaning: "0201h authentication failed", or "0999h". */
    public static String describe(int status) {
        return find(status).isPresent() ? hexadecimal(status) + " " + text(status) : hexadecimal(status);
    }

    private static String hexadecimal(int status) {
        return HexFormat.of().withUpperCase().toHexDigits(status, 4) + "h";
    }
}
