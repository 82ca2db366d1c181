package com.varden.tavo.iscsi.hba;

import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.model.CHAPTableEntry;
import java.io.IOException;
import java.util.ArrayList;
import java.util.List;
import picocli.CommandLine.Model.OptionSpec;
import picocli.CommandLine.Model.PositionalParamSpec;

/** What can be done with the CHAP table. */
final class ChapTableCommands {
    private ChapTableCommands() {}

    /** An entry as it is listed. */
    public record Row(int index, CHAPTableEntry entry, String secret) {
        /** For the tables of fields. */
        public CHAPTableEntry getEntry() {
            return entry;
        }
    }

    private static final RecordTable ROW = new RecordTable(
        new ScalarField<Integer>("index", "Index") {
            @Override
            Integer get(Object row) {
                return ((Row) row).index;
            }
        },
        new ScalarField<String>("secret", "Secret") {
            @Override
            String get(Object row) {
                return ((Row) row).secret;
            }
        },
        new RecordField("entry", ChapTable.TABLE, "Entry"));

    /** hba chap list. */
    static final class ListAll extends DeviceCommand {
        private final OptionSpec reveal = flag("--reveal", "Show the secrets.");

        ListAll() {
            super("Lists the CHAP entries by their index. Secrets are shown as " + ChapSecret.HIDDEN + ".");
            listing(ROW, "index", "chapName", "secret", "chapSecretLength", "flags", "link");
        }

        @Override
        int run(Adapter adapter) throws IOException {
            List<CHAPTableEntry> table = ChapTable.readAll(adapter);
            if (wantsJson()) {
                JsonWriter json = jsonWriter();
                ChapTable.write(json, table, isSet(reveal));
                finish(json);
            } else {
                List<Row> rows = new ArrayList<>();
                for (CHAPTableEntry entry : table) {
                    try (ChapSecret secret = ChapSecret.of(entry)) {
                        rows.add(new Row(rows.size(), entry, secret.show(isSet(reveal))));
                    }
                }
                showList(rows, "The CHAP table is empty.");
            }
            ChapTable.forget(table);
            return DONE;
        }
    }

    /** A command that changes one entry: the table is read, changed and written as a whole. */
    private abstract static class Change extends WriteCommand {
        final PositionalParamSpec index = parameter("INDEX",
            new NumberField("index", 8, "Index").min(1).max(ChapTable.LAST_ENTRY),
            "Index, 1 to 127. The adapter keeps entry 0 empty.");
        private final OptionSpec force =
            flag("--force", "Write the table also when that cuts the links of other entries to 8 bits.");

        Change(String... description) {
            super(description);
        }

        abstract void change(CHAPTableEntry entry);

        /** What the change of the entry itself costs. */
        abstract List<String> losses(CHAPTableEntry present);

        @Override
        List<String> losses(Adapter adapter) {
            List<CHAPTableEntry> table = ChapTable.readAll(adapter);
            List<String> losses = new ArrayList<>();
            if (number(index) < table.size()) {
                losses.addAll(losses(table.get(number(index))));
            }
            if (!table.isEmpty() && !ChapTable.isEmpty(table.get(0))) {
                losses.add("empties CHAP entry 0 (" + ChapTable.NAME.show(table.get(0))
                    + "), which the adapter does not take back");
            }
            ChapTable.forget(table);
            return losses;
        }

        @Override
        void write(Adapter adapter) {
            List<CHAPTableEntry> table = new ArrayList<>(ChapTable.readAll(adapter));
            while (table.size() <= number(index)) {
                table.add(new CHAPTableEntry());
            }
            change(table.get(number(index)));
            int cut = ChapTable.firstLinkTooLarge(table);
            if (cut >= 0 && !isSet(force)) {
                throw new BadInput("the link of CHAP entry " + cut + " is " + table.get(cut).getLink()
                    + ", and the adapter takes the table only as a whole, with links up to "
                    + ChapTable.LAST_WRITABLE_LINK + ": 'hba chap set " + adapter.dev + " " + cut
                    + " --link=N' gives it one that can be written. --force cuts it to its low 8 bits.");
            }
            while (table.size() > 1 && ChapTable.isEmpty(table.get(table.size() - 1))) {
                table.remove(table.size() - 1);
            }
            ChapTable.write(adapter, table);
            Differences differences = new Differences("written");
            ChapTable.compareWritten(adapter, table, "CHAPTable", differences);
            ChapTable.forget(table);
            verify("the CHAP table of adapter " + adapter.dev + " was written", differences);
        }

        @Override
        int report(Adapter adapter) throws IOException {
            done("CHAP entry " + number(index) + " of adapter " + adapter.dev + " was written.");
            return DONE;
        }
    }

    /** hba chap set. */
    static final class SetOne extends Change {
        private final OptionSpec name = option("--name", ChapTable.NAME, "CHAP name: " + ChapTable.NAME.range() + ".");
        private final OptionSpec secretFile = option("--secret-file", "FILE",
            "Take the secret from the first line of a file, of the standard input for -.");
        private final OptionSpec askSecret = flag("--secret", "Ask for the secret on the terminal.");
        private final OptionSpec noSecret = flag("--no-secret", "Remove the secret.");
        private final OptionSpec flags = option(ChapTable.FLAGS);
        private final OptionSpec link =
            option("--link", new NumberField("link", 8, "Link").max(ChapTable.LAST_WRITABLE_LINK), "Link: 0 to 255.");
        private ChapSecret secret;

        SetOne() {
            super("Changes what the options name of a CHAP entry and keeps the rest; an index behind the last adds "
                + "entries. The secret is never an argument, and its length is set with it.");
        }

        @Override
        void prepare() throws IOException {
            int sources = (secretFile.getValue() != null ? 1 : 0) + (isSet(askSecret) ? 1 : 0)
                + (isSet(noSecret) ? 1 : 0);
            if (sources > 1) {
                throw new BadInput("--secret, --secret-file and --no-secret exclude each other");
            }
            if (name.getValue() == null && sources == 0 && flags.getValue() == null && link.getValue() == null) {
                throw new BadInput("nothing to change: no option names a setting");
            }
            if (secretFile.getValue() != null) {
                secret = ChapSecret.given(UserInput.firstLine(secretFile.getValue()));
            } else if (isSet(askSecret)) {
                secret = ChapSecret.given(UserInput.askSecret("CHAP secret"));
            } else if (isSet(noSecret)) {
                secret = ChapSecret.none();
            }
        }

        @Override
        List<String> losses(CHAPTableEntry present) {
            boolean lost = isSet(noSecret) && present.getChapSecretLength() > 0;
            return lost ? List.of("removes the secret of " + ChapTable.describe(number(index), present)) : List.of();
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
                entry.setChapSecretLength(secret.length());
                secret.moveTo(entry);
            }
        }
    }

    /** hba chap clear. */
    static final class Clear extends Change {
        Clear() {
            super("Empties a CHAP entry. The others keep their index.");
        }

        @Override
        List<String> losses(CHAPTableEntry present) {
            return List.of("empties " + ChapTable.describe(number(index), present) + ": its secret is lost");
        }

        @Override
        void change(CHAPTableEntry entry) {
            entry.setChapName("");
            entry.setFlags(0);
            entry.setLink(0);
            entry.setChapSecretLength(0);
            ChapSecret.none().moveTo(entry);
        }
    }
}
