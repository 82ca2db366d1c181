import static org.junit.jupiter.api.Assumptions.assumeTrue;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

/** What may follow on a command line, in the shells themselves. */
final class CompletionTest extends ToolTest {
    private static final String SHELF = "iqn.2004-07.com.varden.tavo:shelf.disk";

    /** Commands, file names and targets are completed where they are typed; what was completed then runs. */
    @ParameterizedTest
    @CsvSource(delimiter = '&', value = {
        "bash --norc -i & source <(hba completion bash)",
        "zsh -f -i      & autoload -U compinit; compinit -u; source <(hba completion zsh)",
        "fish -N -i     & hba completion fish | source"})
    void shells(String shell, String load) throws Exception {
        String name = shell.replaceFirst(" .*", "");
        assumeTrue(Stream.of(System.getenv("PATH").split(":")).anyMatch(folder -> Files.exists(Path.of(folder, name))),
            name + " is not installed");
        tool.environment.put("PATH", Tool.PREFIX.resolve("bin") + ":" + System.getenv("PATH"));
        tool.environment.put("HOME", tool.folder.toString());
        tool.writeSampleFiles();
        tool.converse(0, "exec " + shell, "", load, "", "hba firmware update 0 ima\t--yes",
            "image of adapter 0 was written.", "hba targ\tsh\t0 51\t", "ghijklm\r\n", "hba isns set 1 --auto\tye\t",
            "iSNS settings of adapter 1 were written.", "hba isns add 1 iqn.2004-07.com.varden.tavo:sh\t35",
            "1 target was added", "exit");
    }

    private List<String> candidates(String typed) {
        Tool.Result result = tool.run(null, ("__complete " + typed).split(" ", -1));
        assertEquals("", result.err());
        return result.out().lines().toList();
    }

    @Test
    void candidates() {
        assertEquals(List.of("0\tTavo 2040 iSCSI host adapter, copper", "1\tTavo 2060 iSCSI host adapter, fibre, IPv6",
            "2\tTavo 2060 iSCSI host adapter, fibre, large table", "3\tTavo 2010 iSCSI host adapter, entry level"),
            candidates("target list "));
        assertEquals(List.of("42\tiqn.2004-07.com.varden.tavo:array3.empty"),
            candidates("target logout --trace x 0 4"));
        assertEquals(List.of("--yes\tDo it without asking."), candidates("reset 0 --y"));
        assertEquals(List.of("--sort=state,-retryCount", "--sort=state,-retryDelay"),
            candidates("target list --sort=state,-ret"));
        assertEquals(List.of("software", ":folders"), candidates("--library soft"));
        assertEquals(List.of("--json\tWrite the result as a JSON document."),
            candidates("--library host adapters --j"));
        assertEquals(List.of("rename\tGive a target another iSCSI name."), candidates("help target ren"));
        // What is named already is not offered again.
        assertEquals(List.of(SHELF + "0035\tshelf disk 35"),
            candidates("isns add 1 " + SHELF + "0034 " + SHELF + "003").stream().skip(4).toList());
        assertEquals(List.of(), candidates("target show 31 "));
    }

    /** The commands that may come next, each behind what was typed. */
    private List<String> commands(String typed) {
        return candidates(typed).stream().filter(line -> line.matches("[a-z]+\t.*"))
            .map(line -> typed + line.replaceFirst("\t.*", "")).toList();
    }

    /** Everything that is completed stands in the manual, and has its help. */
    @Test
    void manualAndHelp() throws IOException {
        String manual = Files.readString(Tool.SOURCES.resolve("java/hba.1"));
        List<String> names = new ArrayList<>();
        for (String name : commands("")) {
            List<String> further = commands(name + " ");
            names.addAll(further.isEmpty() ? List.of(name) : further);
        }
        assertTrue(names.size() > 35, names::toString);
        names.forEach(name -> assertTrue(manual.contains("Cm " + name), name));
        for (String name : List.of("target set", "stats reset", "discover")) {
            tool.run("help " + name).expect(0).shows("Usage: hba " + name, "--json", "Exit status:");
        }
    }
}
