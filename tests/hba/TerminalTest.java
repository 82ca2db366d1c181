import java.io.IOException;
import java.io.InputStream;
import java.io.OutputStream;
import java.nio.charset.StandardCharsets;

/** Questions, secrets and progress on a terminal, which script(1) provides. */
public final class TerminalTest {
    private final Tool tool = new Tool();

    public TerminalTest() throws IOException {}

    /** Runs a command on a terminal and answers each prompt when it comes; gives what the terminal showed. */
    private String converse(int expected, String line, String... promptsAndAnswers) throws Exception {
        ProcessBuilder builder =
            new ProcessBuilder("script", "-qec", "'" + tool.launcher + "' " + line, "/dev/null");
        builder.directory(tool.directory.toFile()).redirectErrorStream(true).environment().putAll(tool.environment);
        Process process = builder.start();
        StringBuilder shown = new StringBuilder();
        try (InputStream out = process.getInputStream(); OutputStream in = process.getOutputStream()) {
            int next = 0;
            int answered = 0;
            for (int c = out.read(); c >= 0; c = out.read()) {
                shown.append((char) c);
                if (next < promptsAndAnswers.length && shown.indexOf(promptsAndAnswers[next], answered) >= 0) {
                    answered = shown.length();
                    in.write((promptsAndAnswers[next + 1] + "\n").getBytes(StandardCharsets.UTF_8));
                    in.flush();
                    next += 2;
                }
            }
            Check.equal("prompts of '" + line + "' in\n" + shown, promptsAndAnswers.length, next);
        }
        Check.equal(shown + "exit status of '" + line + "'", expected, process.waitFor());
        return shown.toString();
    }

    public void questions() throws Exception {
        Check.that("refusal is told", converse(1, "firmware restore 0", "[y/N] ", "n").contains("nothing was done"));
        tool.run("firmware show 0").expect(0).shows("10.20.0.5");
        converse(0, "firmware restore 0", "[y/N] ", "y");
        Check.that("restored", !tool.run("firmware show 0").expect(0).out.contains("10.20.0.5"));
    }

    public void secretIsTypedUnseen() throws Exception {
        String shown = converse(
            0, "chap set 1 1 --secret --yes", "CHAP secret: ", "swordfish", "CHAP secret again: ", "swordfish");
        Check.that("the secret is not shown:\n" + shown, !shown.contains("swordfish"));
        tool.run("chap list 1 --reveal").expect(0).shows("swordfish");
        converse(2, "chap set 1 1 --secret --yes", "secret: ", "swordfish", "again: ", "swordfisk");
    }

    public void progress() throws Exception {
        tool.run("export 2 large.json").expect(0);
        String shown = converse(0, "import 2 large.json --yes");
        Check.that(shown, shown.contains("targets written: 32 of 512") && shown.contains("512 of 512"));
        tool.writeSampleFiles();
        shown = converse(0, "firmware update 0 image.bin --yes");
        Check.that(shown, shown.contains("writing the image: 0 s"));
    }
}
