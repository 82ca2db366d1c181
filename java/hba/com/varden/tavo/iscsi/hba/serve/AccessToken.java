package com.varden.tavo.iscsi.hba.serve;

import com.varden.tavo.iscsi.hba.BadInput;
import com.varden.tavo.iscsi.hba.UserInput;
import java.nio.charset.StandardCharsets;
import java.security.MessageDigest;

/** What a client has to know. It is kept in a file, of which the first line counts. */
final class AccessToken {
    private static final String SCHEME = "Bearer ";
    private static final int LEAST_LENGTH = 16;

    private final byte[] token;

    private AccessToken(byte[] token) {
        this.token = token;
    }

    static AccessToken read(String file) {
        byte[] line = UserInput.firstLine(file);
        if (line.length < LEAST_LENGTH) {
            throw new BadInput(file + ": the token in the first line is too short: at least " + LEAST_LENGTH
                + " characters. 'openssl rand -hex 32' makes one.");
        }
        for (byte b : line) {
            if (b <= ' ' || b > '~') {
                throw new BadInput(file + ": the token may have letters, digits and signs of ASCII, and no blanks");
            }
        }
        return new AccessToken(line);
    }

    /** Whether an Authorization header holds the token; how long that takes does not tell how much of it was right. */
    boolean isIn(String authorization) {
        if (authorization == null || !authorization.regionMatches(true, 0, SCHEME, 0, SCHEME.length())) {
            return false;
        }
        byte[] given = authorization.substring(SCHEME.length()).trim().getBytes(StandardCharsets.UTF_8);
        return MessageDigest.isEqual(given, token);
    }
}
