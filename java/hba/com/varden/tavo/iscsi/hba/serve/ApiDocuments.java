package com.varden.tavo.iscsi.hba.serve;

import com.varden.tavo.iscsi.hba.Adapter;
import com.varden.tavo.iscsi.hba.Command;
import com.varden.tavo.iscsi.hba.Commands;
import com.varden.tavo.iscsi.hba.Failure;
import java.io.ByteArrayOutputStream;
import java.io.PrintStream;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Map;
import java.util.TreeMap;

/**
 * The documents that the commands print with --json: /api/target/show/0/5 is that of 'hba target show 0 5'. Commands
 * that change an adapter or send something on purpose are not among them, and no options can be given.
 */
final class ApiDocuments {
    /** The names of the commands, with the number of their arguments. */
    private static final Map<String, Integer> COMMANDS = new TreeMap<>(Map.ofEntries(
        Map.entry("adapters", 0),
        Map.entry("status", 0),
        Map.entry("version", 0),
        Map.entry("show", 1),
        Map.entry("info", 1),
        Map.entry("target/list", 1),
        Map.entry("target/show", 2),
        Map.entry("target/default", 1),
        Map.entry("target/portal", 2),
        Map.entry("lun/list", 2),
        Map.entry("lun/show", 3),
        Map.entry("firmware/show", 1),
        Map.entry("firmware/defaults", 1),
        Map.entry("stats/show", 1),
        Map.entry("log/errors", 1),
        Map.entry("log/arp", 1),
        Map.entry("chap/list", 1),
        Map.entry("isns/show", 1),
        Map.entry("isns/targets", 1)));

    private final Answers answers;

    ApiDocuments(Answers answers) {
        this.answers = answers;
    }

    /** The document of this name, the path after /api/. */
    Reply get(String name) {
        String[] parts = name.split("/", -1);
        List<String> words = new ArrayList<>();
        for (String part : parts) {
            if (!part.matches("\\d{1,5}")) {
                words.add(part);
            }
        }
        int arguments = parts.length - words.size();
        Integer needed = COMMANDS.get(String.join("/", words));
        if (needed == null || arguments != needed || !words.equals(Arrays.asList(parts).subList(0, words.size()))) {
            return Reply.text(Reply.NOT_FOUND, "there is no document /api/" + name + ". There are, with numbers for "
                + "adapter, target and unit: " + String.join(", ", COMMANDS.keySet()));
        }
        int dev = arguments == 0 ? AdapterQueues.NO_ADAPTER : Integer.parseInt(parts[words.size()]);
        if (dev > AdapterQueues.NO_ADAPTER || arguments > 0 && dev > Adapter.LAST_INDEX) {
            return Reply.text(Reply.BAD_REQUEST, "adapters are numbered from 0 to " + Adapter.LAST_INDEX);
        }
        return answers.get(dev, name, () -> run(parts));
    }

    private static Reply run(String[] words) {
        try {
            String[] arguments = Arrays.copyOf(words, words.length + 1);
            arguments[words.length] = "--json";
            Command command = Commands.parse(arguments);
            ByteArrayOutputStream bytes = new ByteArrayOutputStream();
            PrintStream out = new PrintStream(bytes, false, StandardCharsets.UTF_8);
            command.writeDocument(out);
            out.flush();
            return Reply.tagged(Reply.JSON, bytes.toByteArray());
        } catch (Exception e) {
            Failure failure = Failure.of(e);
            Reply document = Reply.json(failure::write);
            int status = failure.exit() == Command.USAGE ? Reply.BAD_REQUEST : Reply.BAD_GATEWAY;
            return new Reply(status, Reply.JSON, document.body(), "");
        }
    }
}
