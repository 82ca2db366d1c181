package com.varden.tavo.iscsi.hba;

import com.google.gson.JsonArray;
import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.model.CHAPTableEntry;
import com.varden.tavo.iscsi.model.HBA;
import java.io.IOException;
import java.util.ArrayList;
import java.util.List;

/** The CHAP table. The adapter takes it only as a whole, and always with an empty entry 0. */
final class ChapTable {
    static final int LAST_ENTRY = 127;

    static final TextField NAME = new TextField("chapName", 256, "CHAP name");
    static final BitsField FLAGS = new BitsField("flags", 8, "Flags");
    static final NumberField LINK = new NumberField("link", 16, "Link");
    /** 16 bits of a link are read, 8 are written. */
    static final int LAST_WRITABLE_LINK = 255;
    private static final NumberField LENGTH =
        new NumberField("chapSecretLength", 8, "Secret length").max(CHAPTableEntry.SECRET_LENGTH);
    private static final RecordTable TABLE = new RecordTable(NAME, FLAGS, LINK, LENGTH);

    private ChapTable() {}

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

    static boolean isEmpty(CHAPTableEntry entry) {
        try (ChapSecret secret = ChapSecret.of(entry)) {
            return (entry.getChapName() == null || entry.getChapName().isEmpty()) && secret.isEmpty()
                && entry.getFlags() == 0 && entry.getLink() == 0;
        }
    }

    static void write(JsonWriter json, List<CHAPTableEntry> table, boolean reveal) throws IOException {
        json.beginArray();
        for (CHAPTableEntry entry : table) {
            json.beginObject();
            json.name("chapName").value(entry.getChapName());
            for (NumberField field : new NumberField[] {FLAGS, LINK, LENGTH}) {
                json.name(field.name).value(field.get(entry));
            }
            try (ChapSecret secret = ChapSecret.of(entry)) {
                secret.write(json, reveal);
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
            JsonObject object = JsonDocument.object(document.get(i), entryPlace).deepCopy();
            JsonElement text = object.remove(ChapSecret.TEXT_NAME);
            JsonElement bytes = object.remove(ChapSecret.BYTES_NAME);
            CHAPTableEntry entry = new CHAPTableEntry();
            TABLE.read(object, entry, entryPlace);
            if (text != null && bytes != null) {
                throw new BadInput(
                    entryPlace + ": " + ChapSecret.TEXT_NAME + " and " + ChapSecret.BYTES_NAME + " exclude each other");
            }
            if (text != null) {
                readSecret(entry, text, entryPlace + "." + ChapSecret.TEXT_NAME, i, present);
            } else if (bytes != null) {
                ChapSecret.readBytes(bytes, entryPlace + "." + ChapSecret.BYTES_NAME).moveTo(entry);
            }
            if (i == 0 && !isEmpty(entry)) {
                throw new BadInput(entryPlace + ": the adapter keeps entry 0 empty when the table is written");
            }
            table.add(entry);
        }
        return table;
    }

    // Hidden secrets are taken from the present table.
    private static void readSecret(
        CHAPTableEntry entry, JsonElement value, String place, int index, List<CHAPTableEntry> present) {
        if (!ChapSecret.isHidden(value)) {
            ChapSecret.readText(value, place).moveTo(entry);
        } else if (present != null) {
            CHAPTableEntry there = index < present.size() ? present.get(index) : new CHAPTableEntry();
            if (!String.valueOf(there.getChapName()).equals(entry.getChapName())) {
                throw new BadInput(place + ": the secret is hidden, and the adapter has none of this name at this "
                    + "index. Export with --reveal.");
            }
            ChapSecret.of(there).moveTo(entry);
        }
    }

    /** Whether the table has to be written to become this one; refuses what cannot be written. */
    static boolean differs(List<CHAPTableEntry> wanted, List<CHAPTableEntry> present, String place) {
        Differences differences = new Differences("in the file");
        compare(wanted, present, place, differences);
        boolean differs = !differences.lines().isEmpty();
        int cut = firstLinkTooLarge(wanted);
        if (differs && cut >= 0) {
            throw new BadInput(place + "[" + cut + "].link: " + wanted.get(cut).getLink()
                + " cannot be written: 0 to " + LAST_WRITABLE_LINK);
        }
        return differs;
    }

    /** The first entry whose link would be cut by a write, or -1. */
    static int firstLinkTooLarge(List<CHAPTableEntry> table) {
        for (int i = 0; i < table.size(); i++) {
            if (table.get(i).getLink() > LAST_WRITABLE_LINK) {
                return i;
            }
        }
        return -1;
    }

    /** Secrets are compared, never shown. */
    static void compare(List<CHAPTableEntry> wanted, List<CHAPTableEntry> found, String place, Differences out) {
        for (int i = 0; i < Math.max(wanted.size(), found.size()); i++) {
            CHAPTableEntry one = i < wanted.size() ? wanted.get(i) : new CHAPTableEntry();
            CHAPTableEntry other = i < found.size() ? found.get(i) : new CHAPTableEntry();
            TABLE.compare(one, other, place + "[" + i + "]", out);
            try (ChapSecret secret = ChapSecret.of(one); ChapSecret there = ChapSecret.of(other)) {
                if (!secret.isSame(there)) {
                    out.add(place + "[" + i + "]: the secrets differ");
                }
            }
        }
    }
}
