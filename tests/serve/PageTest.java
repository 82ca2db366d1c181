import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.Test;

/** The page in a browser, on a machine of 4 adapters and 525 targets. */
final class PageTest extends ToolTest {
    private static final Path SCREENSHOTS = Tool.SOURCES.resolve("build/screenshots");
    private static final long TO_FETCH = 500_000_000L; // for the answers themselves
    private static final String ROWS = "document.querySelectorAll('#targets > tbody:not([hidden])')";

    private Server server;
    private Browser browser;

    private void open(String... options) throws IOException, InterruptedException {
        server = new Server(tool, options);
        browser = new Browser(Files.createDirectory(tool.folder.resolve("profile")));
        browser.show(1200, 1400, "light");
        browser.command("Page.navigate", "{\"url\":\"" + server.address + "\"}");
    }

    private void awaitAdapters() throws InterruptedException {
        browser.await("document.querySelectorAll('.card').length === 4 && " + ROWS + ".length === 8");
    }

    @AfterEach
    void close() {
        browser.close();
        server.close();
    }

    private String row(int target) {
        return "[..." + ROWS + "].find(row => row.querySelector('.id').textContent === '" + target + "')";
    }

    // The latest values of a plot, as they stand beside its title.
    private static String rate(int plot) {
        return "document.querySelectorAll('figure .values')[" + plot + "].textContent";
    }

    @Test
    void showsWhatHappens() throws IOException, InterruptedException {
        open();
        awaitAdapters();
        // Cards and table say the states in words.
        String cards = browser.evaluate("document.querySelector('#cards').innerText");
        List.of("Adapter 3", "no link", "7 of 8", "512 of 512", "TV2060B000342", "10.20.0.5")
            .forEach(part -> assertTrue(cards.contains(part), cards));
        assertEquals("configured", browser.evaluate(row(100) + ".querySelector('.state').textContent"));

        // The plot moves.
        Server.await("the plots move", () -> {
            tool.run("lun list 0 1").expect(0);
            return browser.evaluate(rate(0) + "+" + rate(1) + "+" + rate(2))
                .matches("([\\d.]*[1-9][\\d.]*( k?B?)?/s ?){6}");
        });

        // A target opens by mouse and by keyboard, and shows its units.
        browser.evaluate(row(1) + ".querySelector('tr').click()");
        browser.await(row(1) + ".querySelector('.details')?.innerText.includes('500.0 GiB')");
        assertTrue(browser.evaluate(row(1) + ".querySelector('.details').innerText").contains("VARDEN"));
        browser.evaluate(row(0) + ".querySelector('button').focus()");
        browser.press("ArrowDown", 40);
        browser.press("ArrowDown", 40);
        browser.press("Enter", 13);
        browser.await(row(5) + ".querySelector('button').ariaExpanded === 'true'");
        browser.screenshot(SCREENSHOTS.resolve("target.png"));
        browser.press("Enter", 13);
        browser.await(row(5) + ".querySelector('.details') === null");

        // One goes down: red within two intervals, counted, and told of by the log.
        tool.run("target set 0 1 --yes --ip-address=10.20.0.99").expect(0);
        long down = System.nanoTime();
        browser.await(row(1) + ".querySelector('.state').dataset.level === 'bad'");
        assertTrue(System.nanoTime() - down < 2_000_000_000L + TO_FETCH, "red within two intervals");
        browser.await(row(1) + ".querySelector('.details').innerText.includes('no answer')");
        browser.await("document.querySelector('.card').innerText.includes('6 of 8')");
        browser.await(rate(3) + ".startsWith('1 ')");
        assertEquals("rgb(194, 31, 31)",
            browser.evaluate("getComputedStyle(" + row(1) + ".querySelector('.state')).color"));
        browser.evaluate("document.querySelector('#trouble').click()");
        assertEquals("2", browser.evaluate(ROWS + ".length"));
        browser.evaluate("document.querySelector('#trouble').click()");
        browser.screenshot(SCREENSHOTS.resolve("light.png"));

        // Both colour schemes, the largest adapter, a telephone.
        browser.show(1200, 1400, "dark");
        browser.evaluate("document.querySelectorAll('.card')[2].click()");
        browser.await(ROWS + ".length === 512");
        assertEquals("rgb(15, 19, 24)", browser.evaluate("getComputedStyle(document.body).backgroundColor"));
        browser.screenshot(SCREENSHOTS.resolve("dark.png"));
        browser.show(360, 1400, "light");
        browser.evaluate("document.querySelectorAll('.card')[0].click()");
        browser.await(ROWS + ".length === 8");
        assertEquals("true", browser.evaluate("document.documentElement.scrollWidth <= innerWidth"));
        browser.screenshot(SCREENSHOTS.resolve("narrow.png"));

        assertEquals(List.of(), browser.complaints);
        browser.requests.forEach(request -> assertTrue(request.startsWith(server.address.toString()), request));
    }

    /** Where a token is needed the page asks for it, and for nothing else of its own. */
    @Test
    void asksForToken() throws IOException, InterruptedException {
        tool.write("token", "a-token-of-some-length\n");
        open("--token-file", "token");
        for (String typed : List.of("a wrong one", "a-token-of-some-length")) {
            browser.await("document.querySelector('#login')?.hidden === false");
            assertEquals("true", browser.evaluate("document.querySelector('#adapters').hidden"));
            browser.evaluate("document.querySelector('#token').value = '" + typed + "'");
            browser.evaluate("document.querySelector('#login').requestSubmit()");
        }
        awaitAdapters();
        assertEquals("true", browser.evaluate("document.querySelector('#login').hidden"));
    }
}
