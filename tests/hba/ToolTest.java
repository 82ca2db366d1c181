import java.io.IOException;
import java.nio.file.Path;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.io.TempDir;

/** A test of the tool: each method starts with adapters fresh from the factory, in a folder that goes with it. */
abstract class ToolTest {
    Tool tool;

    @BeforeEach
    void freshAdapters(@TempDir Path folder) throws IOException {
        tool = new Tool(folder);
    }
}
