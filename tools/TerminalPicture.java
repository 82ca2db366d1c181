import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.List;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

/**
 * Draws what a terminal showed as SVG: reads it from the standard input, with its escape sequences, and writes the
 * picture to the standard output. Colours and bold type are drawn; other sequences are passed over. Usage: java
 * TerminalPicture.java TITLE
 */
final class TerminalPicture {
    /** Of the drawing, for a type of 14 units. */
    private static final double CELL_WIDTH = 8.4;
    private static final int LINE_HEIGHT = 20;
    private static final int MARGIN = 16;

    private static final Pattern SEQUENCE =
        Pattern.compile("\u001b\\[([0-9;?]*)([A-Za-z])|\u001b\\][^\u0007]*\u0007|\u001b.");

    private static final String STYLE = """
        <style>
          .paper { fill: #ffffff; stroke: #d0d7de; }
          text { font: 14px ui-monospace, "DejaVu Sans Mono", Menlo, Consolas, monospace; fill: #1f2328;
                 white-space: pre; }
          .bold { font-weight: bold; }
          .faint, .c90 { fill: #59636e; }
          .c31, .c91 { fill: #cf222e; }
          .c32, .c92 { fill: #1a7f37; }
          .c33, .c93 { fill: #9a6700; }
          .c34, .c94 { fill: #0969da; }
          .c35, .c95 { fill: #8250df; }
          .c36, .c96 { fill: #1b7c83; }
          @media (prefers-color-scheme: dark) {
            .paper { fill: #0d1117; stroke: #3d444d; }
            text { fill: #f0f6fc; }
            .faint, .c90 { fill: #9198a1; }
            .c31, .c91 { fill: #ff7b72; }
            .c32, .c92 { fill: #3fb950; }
            .c33, .c93 { fill: #d29922; }
            .c34, .c94 { fill: #58a6ff; }
            .c35, .c95 { fill: #bc8cff; }
            .c36, .c96 { fill: #39c5cf; }
          }
        </style>
        """;

    private String colour = "";
    private boolean bold;
    private boolean faint;

    /** A piece of a line in one style. */
    private record Piece(int column, String text, String style) {}

    private TerminalPicture() {}

    public static void main(String[] arguments) throws IOException {
        String shown = new String(System.in.readAllBytes(), StandardCharsets.UTF_8).replace("\r", "");
        System.out.write(new TerminalPicture().draw(shown, arguments[0]).getBytes(StandardCharsets.UTF_8));
        System.out.flush();
    }

    private String draw(String shown, String title) {
        List<String> lines = shown.stripTrailing().lines().toList();
        StringBuilder text = new StringBuilder();
        int columns = 0;
        int y = MARGIN;
        for (String line : lines) {
            y += LINE_HEIGHT;
            for (Piece piece : pieces(line)) {
                columns = Math.max(columns, piece.column + length(piece.text));
                // The length keeps columns in line whatever type the reader's machine has.
                text.append(String.format("  <text x=\"%.1f\" y=\"%d\" textLength=\"%.1f\"%s>%s</text>%n",
                    MARGIN + piece.column * CELL_WIDTH, y - LINE_HEIGHT / 4, length(piece.text) * CELL_WIDTH,
                    piece.style.isEmpty() ? "" : " class=\"" + piece.style + "\"", escaped(piece.text)));
            }
        }
        int width = (int) Math.ceil(columns * CELL_WIDTH) + 2 * MARGIN;
        int height = y + MARGIN;
        return String.format("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %d %d\" width=\"%d\" "
            + "height=\"%d\" role=\"img\">%n<title>%s</title>%n%s", width, height, width, height, escaped(title), STYLE)
            + String.format("  <rect class=\"paper\" x=\"0.5\" y=\"0.5\" width=\"%d\" height=\"%d\" rx=\"6\"/>%n",
                width - 1, height - 1)
            + text + "</svg>\n";
    }

    private List<Piece> pieces(String line) {
        List<Piece> pieces = new ArrayList<>();
        Matcher sequence = SEQUENCE.matcher(line);
        int column = 0;
        int from = 0;
        while (from < line.length()) {
            boolean found = sequence.find(from);
            int to = found ? sequence.start() : line.length();
            String text = line.substring(from, to);
            if (!text.isBlank()) {
                int blanks = length(text) - length(text.stripLeading());
                pieces.add(new Piece(column + blanks, text.strip(), style()));
            }
            column += length(text);
            from = found ? sequence.end() : to;
            if (found && "m".equals(sequence.group(2))) {
                set(sequence.group(1));
            }
        }
        return pieces;
    }

    private void set(String codes) {
        for (String code : codes.split(";")) {
            int number = code.isEmpty() ? 0 : Integer.parseInt(code);
            bold = number == 1 || number != 0 && number != 22 && bold;
            faint = number == 2 || number != 0 && number != 22 && faint;
            if (number >= 31 && number <= 36 || number >= 90 && number <= 96) {
                colour = "c" + number;
            } else if (number == 0 || number == 39) {
                colour = "";
            }
        }
    }

    private String style() {
        return String.join(" ", List.of(colour, bold ? "bold" : "", faint ? "faint" : "")).strip()
            .replaceAll(" +", " ");
    }

    private static int length(String text) {
        return text.codePointCount(0, text.length());
    }

    private static String escaped(String text) {
        return text.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;").replace("\"", "&quot;");
    }
}
