package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonArray;
import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.model.CHAPTableEntry;
import com.varden.tavo.iscsi.model.HBA;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.charset.CharacterCodingException;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import picocli.CommandLine.Model.OptionSpec;
import picocli.CommandLine.Model.PositionalParamSpec;

/**
 * The CHAP table. The adapter takes it only as a whole, and always with an empty entry 0.
 *
 * In documents a secret is the text chapSecretStr or, when it is no text, the bytes chapSecret. Unless secrets are to
 * be revealed, chapSecretStr is "********", which stands for the secret that the adapter has at this index already.
 */
final class ChapTable {
    static final int LAST_ENTRY = 127;
    static final String HIDDEN = "********";
    private static final String TEXT_NAME = "chapSecretStr";
    private static final String BYTES_NAME = "chapSecret";

    private static final Field NAME = Field.text("chapName", 256, "CHAP name");
    private static final Field FLAGS = Field.bits("flags", 8, "Flags");
    private static final Field LINK = Field.number("link", 16, "Link");
    /** 16 bits of a link are read, 8 are written. */
    private static final int LAST_WRITABLE_LINK = 255;
    private static final Field SECRET = Field.text(TEXT_NAME, CHAPTableEntry.SECRET_LENGTH, "CHAP secret");
    private static final Field LENGTH =
        Field.number("chapSecretLength", 8, "Secret length").max(CHAPTableEntry.SECRET_LENGTH);
    private static final RecordTable TABLE = new RecordTable(NAME, FLAGS, LINK, LENGTH);

    private ChapTable() {}

    static Command command(String name) {
        switch (name) {
            case "chap list":
                return new ListAll();
            case "chap set":
                return new SetOne();
            default:
                return new Clear();
        }
    }

    static List<CHAPTableEntry> readAll(Adapter adapter) {
        HBA hba = new HBA();
        adapter.check("reading the CHAP table", adapter.api.getCHAPTableData(adapter.dev, hba));
        for (CHAPTableEntry entry : hba.getCHAPTableEntries()) {
            // The bytes say all; the text would win when the entry is written back.
            entry.setChapSecretStr(null);
        }
        return hba.getCHAPTableEntries();
    }

    /** Writes the entries from 1 on; entry 0 becomes empty, whatever the list holds there. */
    static void write(Adapter adapter, List<CHAPTableEntry> table) {
        List<CHAPTableEntry> entries =
            new ArrayList<>(table.size() > 1 ? table.subList(1, table.size()) : List.of(new CHAPTableEntry()));
        adapter.check("writing the CHAP table",
            adapter.api.setCHAPTableData(adapter.dev, entries.toArray(new CHAPTableEntry[0])));
    }

    private static boolean isEmpty(CHAPTableEntry entry) {
        return (entry.getChapName() == null || entry.getChapName().isEmpty()) && secret(entry).length == 0
            && entry.getFlags() == 0 && entry.getLink() == 0;
    }

    /** The bytes of the secret without the zeros behind it. */
    private static byte[] secret(CHAPTableEntry entry) {
        short[] elements = entry.getChapSecret();
        int length = elements.length;
        while (length > 0 && elements[length - 1] == 0) {
            length--;
        }
        byte[] bytes = new byte[length];
        for (int i = 0; i < length; i++) {
            bytes[i] = (byte) elements[i];
        }
        return bytes;
    }

    private static void setSecret(CHAPTableEntry entry, byte[] bytes) {
        short[] elements = new short[CHAPTableEntry.SECRET_LENGTH];
        for (int i = 0; i < bytes.length; i++) {
            elements[i] = (short) (bytes[i] & 0xFF);
        }
        entry.setChapSecret(elements);
    }

    /** The secret as text, or null when it is not printable text. */
    private static String text(byte[] secret) {
        try {
            String text = StandardCharsets.UTF_8.newDecoder().decode(ByteBuffer.wrap(secret)).toString();
            return text.chars().anyMatch(Character::isISOControl) || text.equals(HIDDEN) ? null : text;
        } catch (CharacterCodingException e) {
            return null;
        }
    }

    static void write(JsonWriter json, List<CHAPTableEntry> table, boolean reveal) throws IOException {
        json.beginArray();
        for (CHAPTableEntry entry : table) {
            json.beginObject();
            json.name("chapName").value(entry.getChapName());
            for (Field field : new Field[] {FLAGS, LINK, LENGTH}) {
                json.name(field.name).value((Long) field.get(entry));
            }
            byte[] secret = secret(entry);
            String text = text(secret);
            if (secret.length > 0 && !reveal) {
                json.name(TEXT_NAME).value(HIDDEN);
            } else if (text != null) {
                json.name(TEXT_NAME).value(text);
            } else {
                json.name(BYTES_NAME).value(Field.hex(Arrays.copyOf(entry.getChapSecret(), secret.length), ":"));
            }
            json.endObject();
        }
        json.endArray();
    }

    /** The table that a document describes. Hidden secrets are taken from the present table; null skips that check. */
    static List<CHAPTableEntry> read(JsonArray document, String place, List<CHAPTableEntry> present) {
        if (document.size() > LAST_ENTRY + 1) {
            throw new BadInput(place + ": at most " + (LAST_ENTRY + 1) + " entries are permitted");
        }
        List<CHAPTableEntry> table = new ArrayList<>();
        for (int i = 0; i < document.size(); i++) {
            String entryPlace = place + "[" + i + "]";
            JsonObject object = RecordTable.object(document.get(i), entryPlace).deepCopy();
            JsonElement text = object.remove(TEXT_NAME);
            JsonElement bytes = object.remove(BYTES_NAME);
            CHAPTableEntry entry = new CHAPTableEntry();
            TABLE.read(object, entry, entryPlace);
            if (text != null && bytes != null) {
                throw new BadInput(entryPlace + ": " + TEXT_NAME + " and " + BYTES_NAME + " exclude each other");
            }
            if (text != null) {
                readText(entry, text, entryPlace + "." + TEXT_NAME, i, present);
            } else if (bytes != null) {
                readBytes(entry, bytes, entryPlace + "." + BYTES_NAME);
            }
            if (i == 0 && !isEmpty(entry)) {
                throw new BadInput(entryPlace + ": the adapter keeps entry 0 empty when the table is written");
            }
            table.add(entry);
        }
        return table;
    }

    private static void readText(
        CHAPTableEntry entry, JsonElement value, String place, int index, List<CHAPTableEntry> present) {
        String text = value.isJsonPrimitive() ? value.getAsString() : null;
        if (text == null) {
            throw new BadInput(place + ": " + SECRET.range() + " is needed");
        }
        if (text.equals(HIDDEN)) {
            if (present != null) {
                CHAPTableEntry there = index < present.size() ? present.get(index) : new CHAPTableEntry();
                if (!String.valueOf(there.getChapName()).equals(entry.getChapName())) {
                    throw new BadInput(place + ": the secret is hidden, and the adapter has none of this name at this "
                        + "index. Export with --reveal.");
                }
                entry.setChapSecret(there.getChapSecret());
            }
            return;
        }
        try {
            SECRET.parse(text);
        } catch (IllegalArgumentException e) {
            throw new BadInput(place + ": " + e.getMessage());
        }
        setSecret(entry, text.getBytes(StandardCharsets.UTF_8));
    }

    private static void readBytes(CHAPTableEntry entry, JsonElement value, String place) {
        String text = value.isJsonPrimitive() ? value.getAsString() : "";
        int length = (text.length() + 1) / 3;
        if (length > CHAPTableEntry.SECRET_LENGTH) {
            throw new BadInput(place + ": at most " + CHAPTableEntry.SECRET_LENGTH + " bytes are permitted");
        }
        try {
            Object parsed = Field.bytes(BYTES_NAME, length, "").parse(text);
            String[] pairs = parsed.toString().split(":");
            byte[] bytes = new byte[length];
            for (int i = 0; i < length; i++) {
                bytes[i] = (byte) Integer.parseInt(pairs[i], 16);
            }
            setSecret(entry, bytes);
        } catch (IllegalArgumentException e) {
            throw new BadInput(place + ": hexadecimal bytes such as 1f:a0 are needed");
        }
    }

    /** Whether the table has to be written to become this one; refuses what cannot be written. */
    static boolean differs(List<CHAPTableEntry> wanted, List<CHAPTableEntry> present, String place) {
        List<String> differences = new ArrayList<>();
        compare(wanted, present, place, differences);
        int cut = firstLinkTooLarge(wanted);
        if (!differences.isEmpty() && cut >= 0) {
            throw new BadInput(place + "[" + cut + "].link: " + wanted.get(cut).getLink()
                + " cannot be written: 0 to " + LAST_WRITABLE_LINK);
        }
        return !differences.isEmpty();
    }

    /** The first entry whose link would be cut by a write, or -1. */
    private static int firstLinkTooLarge(List<CHAPTableEntry> table) {
        for (int i = 0; i < table.size(); i++) {
            if (table.get(i).getLink() > LAST_WRITABLE_LINK) {
                return i;
            }
        }
        return -1;
    }

    /** Secrets are compared, never shown. */
    static void compare(List<CHAPTableEntry> wanted, List<CHAPTableEntry> found, String place, List<String> out) {
        for (int i = 0; i < Math.max(wanted.size(), found.size()); i++) {
            CHAPTableEntry one = i < wanted.size() ? wanted.get(i) : new CHAPTableEntry();
            CHAPTableEntry other = i < found.size() ? found.get(i) : new CHAPTableEntry();
            TABLE.compare(one, other, place + "[" + i + "]", out);
            if (!Arrays.equals(secret(one), secret(other))) {
                out.add(place + "[" + i + "]: the secrets differ");
            }
        }
    }

    /** hba chap list. */
    static final class ListAll extends DeviceCommand {
        private final OptionSpec reveal = flag("--reveal", "Show the secrets.");

        ListAll() {
            super("Lists the CHAP entries by their index. Secrets are shown as " + HIDDEN + ".");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            List<CHAPTableEntry> table = readAll(adapter);
            if (wantsJson()) {
                JsonWriter json = jsonWriter();
                write(json, table, isSet(reveal));
                finish(json);
                return DONE;
            }
            TextOutput.Columns columns =
                new TextOutput.Columns("Index", "CHAP name", "Secret", "Length", "Flags", "Link");
            for (int i = 0; i < table.size(); i++) {
                CHAPTableEntry entry = table.get(i);
                byte[] secret = secret(entry);
                String text = text(secret);
                String shown = secret.length == 0 ? "" : !isSet(reveal) ? HIDDEN : text != null ? text
                    : "bytes " + Field.hex(Arrays.copyOf(entry.getChapSecret(), secret.length), ":");
                columns.row(i, entry.getChapName(), shown, entry.getChapSecretLength(),
                    FLAGS.format(FLAGS.get(entry)), LINK.get(entry));
            }
            if (table.isEmpty()) {
                System.out.println("The CHAP table is empty.");
            } else {
                columns.print(System.out);
            }
            return DONE;
        }
    }

    /** A command that changes one entry: the table is read, changed and written as a whole. */
    private abstract static class Change extends DeviceCommand {
        final PositionalParamSpec index =
            parameter("INDEX", Field.number("index", 8, "Index").max(LAST_ENTRY), "Index, 1 to 127.");

        Change(String... description) {
            super(description);
            needsConfirmation();
        }

        @Override
        void prepare() throws IOException {
            if (number(index) == 0) {
                throw new BadInput("INDEX: '0' is not permitted: 1 to 127. The adapter keeps entry 0 empty");
            }
        }

        abstract void change(CHAPTableEntry entry);

        @Override
        int run(Adapter adapter) throws IOException {
            List<CHAPTableEntry> table = new ArrayList<>(readAll(adapter));
            if (!table.isEmpty() && !isEmpty(table.get(0))) {
                confirm("empties CHAP entry 0, which the adapter does not take back");
            }
            int cut = firstLinkTooLarge(table);
            if (cut >= 0 && cut != number(index)) {
                confirm("cuts the link of CHAP entry " + cut + " from " + table.get(cut).getLink()
                    + " to its low 8 bits, which are all that can be written");
            }
            while (table.size() <= number(index)) {
                table.add(new CHAPTableEntry());
            }
            change(table.get(number(index)));
            while (table.size() > 1 && isEmpty(table.get(table.size() - 1))) {
                table.remove(table.size() - 1);
            }
            write(adapter, table);
            done("CHAP entry " + number(index) + " of adapter " + adapter.dev + " was written.");
            return DONE;
        }
    }

    /** hba chap set. */
    static final class SetOne extends Change {
        private final OptionSpec name = option("--name", NAME, "CHAP name: " + NAME.range() + ".");
        private final OptionSpec secretFile = option("--secret-file", "FILE",
            "Take the secret from the first line of a file, of the standard input for -.");
        private final OptionSpec askSecret = flag("--secret", "Ask for the secret on the terminal.");
        private final OptionSpec flags = option(FLAGS);
        private final OptionSpec link =
            option("--link", Field.number("link", 8, "Link").max(LAST_WRITABLE_LINK), "Link: 0 to 255.");
        private String secret;

        SetOne() {
            super("Changes what the options name of a CHAP entry and keeps the rest; an index behind the last adds "
                + "entries. The secret is never an argument, and its length is set with it.");
        }

        @Override
        void prepare() throws IOException {
            super.prepare();
            if (secretFile.getValue() != null && isSet(askSecret)) {
                throw new BadInput("--secret and --secret-file exclude each other");
            }
            if (secretFile.getValue() != null) {
                secret = Terminal.firstLine(secretFile.getValue());
            } else if (isSet(askSecret)) {
                secret = Terminal.askSecret("CHAP secret");
            }
            if (secret != null) {
                try {
                    SECRET.parse(secret);
                } catch (IllegalArgumentException e) {
                    throw new BadInput("the CHAP secret is not permitted: " + e.getMessage());
                }
            }
            if (name.getValue() == null && secret == null && flags.getValue() == null && link.getValue() == null) {
                throw new BadInput("nothing to change: no option names a setting");
            }
        }

        @Override
        void change(CHAPTableEntry entry) {
            if (name.getValue() != null) {
                entry.setChapName(name.getValue());
            }
            if (flags.getValue() != null) {
                entry.setFlags(number(flags));
            }
            if (link.getValue() != null) {
                entry.setLink(number(link));
            }
            if (secret != null) {
                byte[] bytes = secret.getBytes(StandardCharsets.UTF_8);
                setSecret(entry, bytes);
                entry.setChapSecretLength(bytes.length);
            }
        }
    }

    /** hba chap clear. */
    static final class Clear extends Change {
        Clear() {
            super("Empties a CHAP entry. The others keep their index.");
        }

        @Override
        void prepare() throws IOException {
            super.prepare();
            confirm("empties CHAP entry " + number(index));
        }

        @Override
        void change(CHAPTableEntry entry) {
            entry.setChapName("");
            entry.setFlags(0);
            entry.setLink(0);
            entry.setChapSecretLength(0);
            entry.setChapSecret(new short[CHAPTableEntry.SECRET_LENGTH]);
        }
    }
}
