import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;

import com.varden.tavo.iscsi.codes.FirmwareOptions;
import com.varden.tavo.iscsi.codes.LoginStatus;
import com.varden.tavo.iscsi.codes.Status;
import com.varden.tavo.iscsi.codes.TargetState;
import com.varden.tavo.iscsi.codes.Units;
import com.varden.tavo.iscsi.jni.AdapterNotOpenedException;
import com.varden.tavo.iscsi.jni.OpenAdapter;
import com.varden.tavo.iscsi.model.HBA;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.regex.MatchResult;
import java.util.regex.Pattern;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** The words for numbers, and an adapter that closes itself, as an application uses them. */
final class CodesTest {
    @Test
    void statusesAreThoseOfTheHeader() throws IOException {
        String header = Files.readString(Tool.SOURCES.resolve("include/vdsdm/Status.h"));
        assertEquals(
            Pattern.compile("ERR_\\w+ = 0x\\w+").matcher(header).results().map(MatchResult::group).sorted().toList(),
            Stream.of(Status.values()).map(status -> String.format("%s = 0x%x", status, status.code())).sorted()
                .toList());
    }

    @Test
    void words() {
        assertEquals("logged in (2)", TargetState.MEANINGS.describe(TargetState.LOGGED_IN));
        assertEquals("0xfffffffe", TargetState.MEANINGS.describe(-2));
        assertEquals("0x8211 (addresses by DHCP, 0x8210)", FirmwareOptions.MEANINGS.describe(0x8211));
        assertEquals("0x0000", FirmwareOptions.MEANINGS.describe(0));
        assertEquals("", FirmwareOptions.MEANINGS.text(0));
        assertEquals("0201h authentication failed", LoginStatus.describe(0x0201));
        assertEquals("020Ch", LoginStatus.describe(0x020C));
        assertEquals("0x20000102 ERR_NO_SUCH_ADAPTER: no adapter has this index", Status.describe(0x20000102));
        assertEquals("0x80000001 (a status of the management library)", Status.describe(0x80000001));
    }

    @Test
    void units() {
        assertEquals("64.0 KiB (65536 bytes)", Units.describeBytes(Units.segmentBytes(128)));
        assertEquals("1.9 MiB (2097151 bytes)", Units.describeBytes(0x1FFFFF));
        assertEquals("15.9 EiB (18446744073709551615 bytes)", Units.describeBytes(-1));
        assertEquals("254 min, 255 min or more", Units.describeSilence(254) + ", " + Units.describeSilence(255));
    }

    @Test
    void anAdapterClosesItself(@TempDir Path folder) throws IOException {
        Tool tool = new Tool(folder);
        tool.directory = Tool.PREFIX.resolve("lib/vdsdm");
        tool.execute(null, Tool.application(Application.class)).expect(0).shows("all closed");
    }

    /** Runs in a VM that finds the libraries. */
    static final class Application {
        private Application() {}

        public static void main(String[] arguments) {
            HBA hba = new HBA();
            OpenAdapter first = OpenAdapter.open(0);
            try (OpenAdapter second = OpenAdapter.open(0)) {
                first.close();
                first.close();
                assertEquals(0, second.api().getiSCSIHBAState(second.dev(), hba));
            }
            assertEquals(Status.ERR_INVALID_HANDLE.code(), first.api().getiSCSIHBAState(0, hba));
            try (OpenAdapter again = OpenAdapter.open(0)) {
                assertEquals(0, again.api().getiSCSIHBAState(0, hba));
            }
            assertEquals("adapter 31 cannot be opened",
                assertThrows(AdapterNotOpenedException.class, () -> OpenAdapter.open(31)).getMessage());
            assertThrows(IllegalArgumentException.class, () -> OpenAdapter.open(32));
            System.out.println("all closed");
        }
    }
}
