package com.varden.tavo.iscsi.hba;

import java.io.PrintWriter;
import java.io.StringWriter;
import java.util.Arrays;
import java.util.List;
import picocli.CommandLine;
import picocli.CommandLine.ParameterException;
import picocli.CommandLine.ParseResult;
import picocli.CommandLine.UnmatchedArgumentException;

/** The tool's entry. */
public final class Hba {
    /** The hidden command with which the class archive is made. */
    private static final String EACH = "__each";

    private Hba() {}

    public static void main(String[] arguments) throws ReflectiveOperationException {
        Terminal.start();
        int status = arguments.length > 0 && arguments[0].equals(EACH) ? runEach(arguments) : run(arguments);
        if (!Terminal.finish()) {
            if (Terminal.readerHasGone()) {
                status = Command.PIPE_CLOSED;
            } else if (status == Command.DONE) {
                Terminal.message("the result could not be written to the standard output");
                status = Command.FAILED;
            }
        }
        System.err.flush();
        Interruption.over();
        System.exit(status);
    }

    /** Runs several command lines, one in each argument; returns the largest exit status. */
    private static int runEach(String[] arguments) {
        int status = Command.DONE;
        for (String line : Arrays.asList(arguments).subList(1, arguments.length)) {
            status = Math.max(status, run(line.split(" ")));
        }
        return status;
    }

    private static int run(String[] arguments) {
        // 'hba help target set' is 'hba target set --help'.
        String[] words = arguments;
        if (words.length > 0 && words[0].equals("help")) {
            words = Arrays.copyOfRange(arguments, 1, arguments.length + 1);
            words[words.length - 1] = "--help";
        }
        if (words.length > 0 && words[0].equals(Completion.QUESTION)) {
            return complete(Arrays.asList(words).subList(1, words.length));
        }
        try {
            UserInput.requireText(words);
            return execute(Commands.build(words).parseArgs(words));
        } catch (Exception | OutOfMemoryError | LinkageError e) {
            List<String> given = Arrays.asList(arguments);
            Failure failure = Failure.of(e);
            failure.report(given.contains("--json"));
            if (given.contains("--debug")) {
                StringWriter trace = new StringWriter();
                e.printStackTrace(new PrintWriter(trace));
                System.err.print(TerminalText.lines(trace.toString()));
            }
            return failure.exit();
        }
    }

    // While somebody types, nothing is said about what cannot be read.
    private static int complete(List<String> typed) {
        try {
            Completion.answer(typed);
            return Command.DONE;
        } catch (RuntimeException | LinkageError e) {
            return Failure.of(e).exit();
        }
    }

    private static int execute(ParseResult result) throws Exception {
        if (result.isVersionHelpRequested()) {
            System.out.println("hba " + Version.ofTool());
            return Command.DONE;
        }
        ParseResult last = result;
        boolean help = last.isUsageHelpRequested();
        while (!help && last.hasSubcommand()) {
            last = last.subcommand();
            help = last.isUsageHelpRequested();
        }
        CommandLine line = last.commandSpec().commandLine();
        if (!last.unmatched().isEmpty()) {
            throw new UnmatchedArgumentException(line, last.unmatched());
        }
        if (help) {
            line.usage(System.out, CommandLine.Help.Ansi.OFF);
            return Command.DONE;
        }
        if (!(last.commandSpec().userObject() instanceof Command command)) {
            throw new ParameterException(line, "a command is missing");
        }
        command.check();
        return command.call();
    }
}
