package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.iSNSTarget;
import java.io.IOException;
import java.io.InputStream;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import picocli.CommandLine.Model.ArgSpec;
import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.Model.OptionSpec;
import picocli.CommandLine.Model.PositionalParamSpec;

/**
 * What may follow on a command line that is being typed. The scripts for the shells ask for it: each line of the answer
 * is a candidate for the last word and, behind a tab, what it is; ":files" and ":folders" leave it to the shell.
 */
final class Completion {
    /** The hidden command by which the scripts ask; the words that were typed follow it. */
    static final String QUESTION = "__complete";

    private String command = "";
    private CommandSpec spec;
    private OptionSpec awaiting;
    private final List<String> parameters = new ArrayList<>();

    private Completion() {}

    /** hba completion. */
    static final class Script extends Command {
        private static final List<String> SHELLS = List.of("bash", "zsh", "fish");

        private final PositionalParamSpec shell =
            parameter(String.join("|", SHELLS), "0..1", "The shell; bash without it.");

        Script() {
            super("Writes a completion script for a shell to the standard output. bash loads it with: source <(hba "
                + "completion bash); zsh with: source <(hba completion zsh); fish with: hba completion fish | source");
        }

        @Override
        public Integer call() throws IOException {
            String name = shell.getValue() == null ? SHELLS.get(0) : shell.getValue();
            if (!SHELLS.contains(name)) {
                throw new BadInput("there is no completion for '" + name + "', only for " + String.join(", ", SHELLS));
            }
            try (InputStream script = Completion.class.getResourceAsStream("/completion/hba." + name)) {
                System.out.print(new String(script.readAllBytes(), StandardCharsets.UTF_8));
            }
            return DONE;
        }
    }

    /** Answers; the last word is the one that is being typed. */
    static void answer(List<String> words) {
        Completion completion = new Completion();
        int last = words.size() - 1;
        for (int i = last > 0 && words.get(0).equals("help") ? 1 : 0; i < last; i++) {
            completion.pass(words.get(i));
        }
        if (last >= 0) {
            completion.complete(words.get(last));
        }
    }

    private void pass(String word) {
        String longer = command.isEmpty() ? word : command + " " + word;
        if (awaiting != null) {
            awaiting = null;
        } else if (word.startsWith("-")) {
            OptionSpec option = spec().findOption(word);
            awaiting = option != null && option.arity().min() > 0 ? option : null;
        } else if (Commands.isCommand(longer)) {
            command = longer;
            spec = null;
        } else {
            parameters.add(word);
        }
    }

    private CommandSpec spec() {
        if (spec == null) {
            spec = Commands.spec(command);
        }
        return spec;
    }

    private void complete(String word) {
        int end = word.indexOf('=') + 1;
        if (awaiting != null) {
            completeValue(awaiting, word, "");
        } else if (word.startsWith("-") && end > 0) {
            OptionSpec option = spec().findOption(word.substring(0, end - 1));
            if (option != null) {
                completeValue(option, word.substring(end), word.substring(0, end));
            }
        } else if (word.startsWith("-")) {
            for (OptionSpec option : spec().options()) {
                offer(word, option.longestName() + (option.arity().min() > 0 ? "=" : ""), option.description()[0]);
            }
        } else {
            Map<String, String> next = Commands.following(command);
            next.forEach((name, description) -> offer(word, name, description));
            List<PositionalParamSpec> all = spec().positionalParameters();
            // The last one may take several values.
            all.stream().filter(each -> next.isEmpty() && each.index().contains(parameters.size())).findFirst()
                .ifPresent(each -> completeValue(each, word, ""));
        }
    }

    /** Completes the value of an argument that stands behind an option's name, or alone. */
    private void completeValue(ArgSpec argument, String value, String before) {
        String label = argument.paramLabel();
        if (argument.completionCandidates() != null) {
            // Of several names the last one is being typed; a sign may stand before it.
            String known = label.endsWith(",...") ? value.replaceFirst("[^,+-]*$", "") : "";
            for (String candidate : argument.completionCandidates()) {
                offer(before + value, before + known + candidate, "");
            }
        }
        switch (label) {
            case "DEV" -> offerAdapters(before + value, before);
            case "TARGET" -> offerTargets(before + value, before);
            case "NAME" -> offerIsnsTargets(value);
            case "FILE" -> System.out.println(":files");
            case "LIBRARY" -> System.out.println(":folders");
            default -> {
                for (String candidate : label.contains("|") ? label.split("\\|") : new String[0]) {
                    offer(before + value, before + candidate, "");
                }
            }
        }
    }

    private static void offer(String typed, String candidate, String what) {
        if (candidate.startsWith(typed)) {
            System.out.println(what == null || what.isEmpty() ? candidate : candidate + "\t" + TerminalText.of(what));
        }
    }

    private static void offerAdapters(String typed, String before) {
        for (int dev = 0; dev <= Adapter.LAST_INDEX; dev++) {
            try (Adapter adapter = Adapter.tryOpen(dev)) {
                HBA hba = new HBA();
                if (adapter != null && adapter.api.getiSCSIFWInfo(dev, hba) == 0) {
                    offer(typed, before + dev, hba.getModel());
                }
            }
        }
    }

    private void offerTargets(String typed, String before) {
        if (!parameters.isEmpty()) {
            try (Adapter adapter = Adapter.open(Adapter.INDEX.parse(parameters.get(0)).intValue(), null)) {
                for (DevDBEntry entry : DeviceDatabaseEntry.readAll(adapter)) {
                    offer(typed, before + entry.getTargetID(), entry.getNodeInfo().getiSCSIName());
                }
            }
        }
    }

    private void offerIsnsTargets(String typed) {
        try (Adapter adapter = Adapter.open(Adapter.INDEX.parse(parameters.get(0)).intValue(), null)) {
            for (iSNSTarget target : IsnsDiscovery.readTargets(adapter)) {
                if (!parameters.contains(target.getiSCSIName())) {
                    offer(typed, target.getiSCSIName(), target.getiSCSIAlias());
                }
            }
        }
    }
}
