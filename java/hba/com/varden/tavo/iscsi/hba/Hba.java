package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.jni.BridgeNotLoadedException;
import java.io.IOException;
import java.util.Arrays;
import picocli.CommandLine;
import picocli.CommandLine.ParameterException;
import picocli.CommandLine.ParseResult;

/** The tool's entry. */
public final class Hba {
    private Hba() {}

    public static void main(String[] arguments) throws ReflectiveOperationException {
        Terminal.start();
        int status = run(arguments);
        if (System.out.checkError() && status == Command.DONE) {
            Terminal.message("the result could not be written to the standard output");
            status = Command.FAILED;
        }
        System.err.flush();
        System.exit(status);
    }

    private static int run(String[] arguments) {
        // 'hba help target set' is 'hba target set --help'.
        String[] words = arguments;
        if (words.length > 0 && words[0].equals("help")) {
            words = Arrays.copyOfRange(arguments, 1, arguments.length + 1);
            words[words.length - 1] = "--help";
        }
        try {
            return execute(Commands.build(words).parseArgs(words));
        } catch (ParameterException e) {
            Terminal.message(e.getMessage());
            String name = e.getCommandLine().getCommandSpec().qualifiedName();
            System.err.println("'" + name + " --help' shows how it is used.");
            return failed(e, Command.USAGE, arguments);
        } catch (BadInput e) {
            Terminal.message(e.getMessage());
            return failed(e, Command.USAGE, arguments);
        } catch (OperationFailed e) {
            Terminal.message(e.getMessage());
            return failed(e, Command.FAILED, arguments);
        } catch (BridgeNotLoadedException e) {
            Terminal.message(e.getMessage());
            return failed(e, Command.NOT_LOADED, arguments);
        } catch (UnsatisfiedLinkError e) {
            Terminal.message("the iSCSI bridge is of another version than this tool: " + e.getMessage());
            return failed(e, Command.NOT_LOADED, arguments);
        } catch (Exception | OutOfMemoryError | NoSuchMethodError e) {
            Terminal.message("unexpected failure: " + e + ". --debug shows where.");
            return failed(e, Command.FAILED, arguments);
        }
    }

    private static int execute(ParseResult result) throws Exception {
        ParseResult last = result;
        while (true) {
            if (last.isUsageHelpRequested()) {
                last.commandSpec().commandLine().usage(System.out, CommandLine.Help.Ansi.OFF);
                return Command.DONE;
            }
            if (!last.hasSubcommand()) {
                break;
            }
            last = last.subcommand();
        }
        Object command = last.commandSpec().userObject();
        if (!(command instanceof Command action)) {
            throw new ParameterException(last.commandSpec().commandLine(), "a command is missing");
        }
        try {
            return action.call();
        } catch (IOException e) {
            throw new OperationFailed(UserInput.reason(e), e);
        }
    }

    private static int failed(Throwable failure, int status, String[] arguments) {
        if (Arrays.asList(arguments).contains("--debug")) {
            failure.printStackTrace();
        }
        return status;
    }
}
