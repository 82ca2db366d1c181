package com.varden.tavo.iscsi.hba;

import com.google.gson.stream.JsonWriter;
import com.varden.tavo.iscsi.codes.Status;
import com.varden.tavo.iscsi.jni.BridgeNotLoadedException;
import java.io.IOException;
import java.util.List;
import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.ParameterException;
import picocli.CommandLine.UnmatchedArgumentException;

/**
 * How a command failed.
 *
 * @param exit the tool's exit status
 * @param status the management library's status, or else the exit status
 * @param name the status's name, or else what kind of failure it is
 */
public record Failure(int exit, int status, String name, String message) {
    public static Failure of(Throwable cause) {
        if (cause instanceof OperationFailed failed && failed.status != 0) {
            String known = Status.find(failed.status).map(Enum::name).orElse("UNKNOWN");
            return new Failure(Command.FAILED, failed.status, known, failed.getMessage());
        }
        if (cause instanceof OperationFailed) {
            return new Failure(Command.FAILED, Command.FAILED, "FAILED", cause.getMessage());
        }
        if (cause instanceof BadInput) {
            return new Failure(Command.USAGE, Command.USAGE, "BAD_INPUT", cause.getMessage());
        }
        if (cause instanceof ParameterException wrong) {
            return new Failure(Command.USAGE, Command.USAGE, "BAD_INPUT", message(wrong));
        }
        if (cause instanceof BridgeNotLoadedException) {
            return new Failure(Command.NOT_LOADED, Command.NOT_LOADED, "NOT_LOADED", cause.getMessage());
        }
        if (cause instanceof UnsatisfiedLinkError) {
            return new Failure(Command.NOT_LOADED, Command.NOT_LOADED, "NOT_LOADED",
                "the iSCSI bridge is of another version than this tool: " + cause.getMessage());
        }
        if (cause instanceof IOException e) {
            return new Failure(Command.FAILED, Command.FAILED, "FAILED", UserInput.reason(e));
        }
        return new Failure(Command.FAILED, Command.FAILED, "UNEXPECTED",
            "unexpected failure: " + cause + ". --debug shows where.");
    }

    private static String message(ParameterException wrong) {
        CommandSpec command = wrong.getCommandLine().getCommandSpec();
        String name = command.qualifiedName();
        String message = wrong.getMessage().replaceFirst("^Invalid value for positional parameter at index \\d+ "
            + "\\((\\w+)\\)", "$1");
        List<String> nearest = List.of();
        if (wrong instanceof UnmatchedArgumentException unmatched && !unmatched.getUnmatched().isEmpty()) {
            String word = unmatched.getUnmatched().get(0);
            if (word.startsWith("-")) {
                word = word.replaceFirst("=.*", "");
                message = "'" + name + "' has no option '" + word + "'";
                nearest = Suggestions.nearest(word, command.optionsMap().keySet());
            } else if (!command.subcommands().isEmpty()) {
                message = "there is no command '" + name + " " + word + "'";
                nearest = Suggestions.nearest(word, command.subcommands().keySet());
            } else {
                message = "'" + word + "' is one argument too many for '" + name + "'";
            }
        }
        return message + (nearest.isEmpty() ? "." : ". Did you mean '" + String.join("' or '", nearest) + "'?") + " '"
            + name + " --help' shows how it is used.";
    }

    /** Writes it as a JSON object. */
    public void write(JsonWriter json) throws IOException {
        json.beginObject().name("error").beginObject();
        json.name("status").value(Integer.toUnsignedLong(status)).name("name").value(name);
        json.name("message").value(message);
        json.endObject().endObject();
    }

    /** Says it to people, or as a JSON object on one line. */
    void report(boolean asJson) {
        if (!asJson) {
            Terminal.message(message);
            return;
        }
        Progress.end();
        try {
            JsonWriter json = Terminal.json(System.err, "");
            write(json);
            json.flush();
            System.err.println();
        } catch (IOException e) {
            // Nobody reads the messages.
        }
    }
}
