import com.google.gson.JsonArray;
import com.google.gson.JsonObject;
import java.io.IOException;
import java.nio.file.Path;
import org.junit.jupiter.api.Assertions;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.io.TempDir;

/**
 * A test of the tool, with JUnit's assertions at hand: each method starts with adapters fresh from the factory, in a
 * folder that goes with it.
 */
abstract class ToolTest extends Assertions {
    Tool tool;

    @BeforeEach
    void freshAdapters(@TempDir Path folder) throws IOException {
        tool = new Tool(folder);
    }

    final JsonObject object(String line) {
        return tool.json(line).getAsJsonObject();
    }

    final JsonArray array(String line) {
        return tool.json(line).getAsJsonArray();
    }
}
