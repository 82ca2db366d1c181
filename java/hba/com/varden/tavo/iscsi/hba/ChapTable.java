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
import java.util.function.Consumer;

/** The CHAP table. The adapter takes it only as a whole, and always with an empty entry 0. */
final class ChapTable {
    static final int LAST_ENTRY = 127;

    static final TextField NAME = new TextField("chapName", 256, "CHAP name");
    static final BitsField FLAGS = new BitsField("flags", 8, "Flags");
    /** 16 bits of a link are read, 8 are written. */
    static final int LAST_WRITABLE_LINK = 255;
    static final NumberField LINK = new NumberField("link", 16, "Link").max(LAST_WRITABLE_LINK);
    private static final NumberField LENGTH =
        new NumberField("chapSecretLength", 8, "Length").max(CHAPTableEntry.SECRET_LENGTH);
    static final RecordTable TABLE = new RecordTable(NAME, FLAGS, LINK, LENGTH);

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

    /** Wipes the secrets of entries that are no longer needed. */
    static void forget(List<CHAPTableEntry> table) {
        for (CHAPTableEntry entry : table) {
            ChapSecret.none().moveTo(entry);
        }
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

    /** Refuses an index other than 0 (none) whose entry has no secret: no login could succeed with it. */
    static void requireSecret(Adapter adapter, int index, String place) {
        List<CHAPTableEntry> table = index == 0 ? List.of() : readAll(adapter);
        boolean found = index < table.size() && table.get(index).getChapSecretLength() > 0;
        forget(table);
        if (index != 0 && !found) {
            throw new BadInput(place + ": CHAP entry " + index + " has no secret. 'hba chap set " + adapter.dev + " "
                + index + " --secret' gives it one; --force writes it all the same.");
        }
    }

    static void write(JsonWriter json, List<CHAPTableEntry> table, boolean reveal) throws IOException {
        json.beginArray();
        for (CHAPTableEntry entry : table) {
            json.beginObject();
            TABLE.writeMembers(json, entry);
            endWithSecret(json, entry, reveal);
        }
        json.endArray();
    }

    private static void endWithSecret(JsonWriter json, CHAPTableEntry entry, boolean reveal) throws IOException {
        try (ChapSecret secret = ChapSecret.of(entry)) {
            secret.write(json, reveal);
        }
        json.endObject();
    }

    /** Writes the table so that it can be read again. */
    static void writeBack(JsonWriter json, List<CHAPTableEntry> table, boolean reveal, String place,
        List<String> leftOut) throws IOException {
        json.beginArray();
        for (int i = 0; i < table.size(); i++) {
            CHAPTableEntry entry = table.get(i);
            String entryPlace = place + "[" + i + "]";
            json.beginObject();
            if (i == 0 && !isEmpty(entry)) {
                leftOut.add(entryPlace + ": an entry 0 that is not empty cannot be written back");
                json.endObject();
            } else {
                TABLE.writeMembersBack(json, entry, entryPlace, leftOut);
                endWithSecret(json, entry, reveal);
            }
        }
        json.endArray();
    }

    /**
     * The table that a document describes, on the ground of what the adapter has: what is not named keeps its value,
     * and a hidden secret is the present one. Without a present table only the document itself is checked.
     *
     * @param hidden is told of each hidden secret that the adapter does not have
     */
    static List<CHAPTableEntry> read(JsonArray document, String place, List<CHAPTableEntry> present,
        Consumer<String> hidden) {
        if (document.size() > LAST_ENTRY + 1) {
            throw new BadInput(place + ": at most " + (LAST_ENTRY + 1) + " entries are permitted");
        }
        List<CHAPTableEntry> table = new ArrayList<>();
        for (int i = 0; i < document.size(); i++) {
            String entryPlace = place + "[" + i + "]";
            JsonObject object = JsonDocument.object(document.get(i), entryPlace).deepCopy();
            JsonElement text = object.remove(ChapSecret.TEXT_NAME);
            JsonElement bytes = object.remove(ChapSecret.BYTES_NAME);
            CHAPTableEntry there = present == null || i >= present.size() ? new CHAPTableEntry() : present.get(i);
            CHAPTableEntry entry = copy(there);
            TABLE.read(object, entry, entryPlace);
            if (text != null && bytes != null) {
                throw new BadInput(
                    entryPlace + ": " + ChapSecret.TEXT_NAME + " and " + ChapSecret.BYTES_NAME + " exclude each other");
            }
            if (text != null) {
                readSecret(entry, text, entryPlace + "." + ChapSecret.TEXT_NAME, present == null ? null : there,
                    hidden);
            } else if (bytes != null) {
                ChapSecret.readBytes(bytes, entryPlace + "." + ChapSecret.BYTES_NAME).moveTo(entry);
            }
            if (i == 0 && !isEmpty(entry) && !object.keySet().isEmpty()) {
                throw new BadInput(entryPlace + ": the adapter keeps entry 0 empty when the table is written");
            }
            table.add(entry);
        }
        return table;
    }

    private static CHAPTableEntry copy(CHAPTableEntry entry) {
        CHAPTableEntry copy = new CHAPTableEntry();
        TABLE.copy(entry, copy);
        ChapSecret.of(entry).moveTo(copy);
        return copy;
    }

    // A hidden secret is that of the entry that is there; null skips that check.
    private static void readSecret(CHAPTableEntry entry, JsonElement value, String place, CHAPTableEntry there,
        Consumer<String> hidden) {
        if (!ChapSecret.isHidden(value)) {
            ChapSecret.readText(value, place).moveTo(entry);
        } else if (there != null) {
            if (!String.valueOf(there.getChapName()).equals(entry.getChapName())) {
                hidden.accept(place + ": the secret is hidden, and the adapter has none of this name at this index. "
                    + "Export with --reveal.");
            }
            ChapSecret.of(there).moveTo(entry);
        }
    }

    /** What is lost when the present table becomes the wanted one. */
    static List<String> losses(List<CHAPTableEntry> wanted, List<CHAPTableEntry> present) {
        List<String> losses = new ArrayList<>();
        for (int i = 0; i < present.size(); i++) {
            CHAPTableEntry there = present.get(i);
            CHAPTableEntry entry = i < wanted.size() ? wanted.get(i) : new CHAPTableEntry();
            Differences differences = new Differences("wanted");
            compare(List.of(entry), List.of(there), "", differences);
            if (!isEmpty(there) && !differences.isEmpty()) {
                losses.add(isEmpty(entry) ? "empties " + describe(i, there) + ": its secret is lost"
                    : "changes " + describe(i, there));
            }
        }
        return losses;
    }

    /** "CHAP entry 1 (initiator-a)". */
    static String describe(int index, CHAPTableEntry entry) {
        return "CHAP entry " + index + " (" + NAME.show(entry) + ")";
    }

    /** Refuses a change of the table that cannot be written; the table as it is need not be. */
    static void requireWritable(List<CHAPTableEntry> wanted, List<CHAPTableEntry> present, String place) {
        Differences differences = new Differences("in the file");
        compare(wanted, present, place, differences);
        if (differences.isEmpty()) {
            return;
        }
        int cut = firstLinkTooLarge(wanted);
        if (cut >= 0) {
            throw new BadInput(place + "[" + cut + "].link: the adapter has " + wanted.get(cut).getLink()
                + ", and a change of the table would cut it: name a link from " + LINK.range() + " for this entry");
        }
        if (!wanted.isEmpty() && !isEmpty(wanted.get(0))) {
            throw new BadInput(place + "[0]: the adapter has an entry 0, and a change of the table would empty it: "
                + "name an empty entry 0");
        }
    }

    // What the adapter holds when this table was written: an empty entry 0, links of 8 bits.
    private static List<CHAPTableEntry> asWritten(List<CHAPTableEntry> table) {
        List<CHAPTableEntry> written = new ArrayList<>();
        for (CHAPTableEntry entry : table) {
            CHAPTableEntry copy = copy(written.isEmpty() ? new CHAPTableEntry() : entry);
            copy.setLink(copy.getLink() & LAST_WRITABLE_LINK);
            written.add(copy);
        }
        return written;
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

    /** Notes where the adapter differs from a table that was written. */
    static void compareWritten(Adapter adapter, List<CHAPTableEntry> table, String place, Differences differences) {
        List<CHAPTableEntry> wanted = asWritten(table);
        List<CHAPTableEntry> found = readAll(adapter);
        compare(wanted, found, place, differences);
        forget(wanted);
        forget(found);
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
