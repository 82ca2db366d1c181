package com.varden.tavo.iscsi.hba.serve;

import java.io.IOException;
import java.io.InputStream;
import java.util.HashMap;
import java.util.List;
import java.util.Map;

/** The files of the page, which lie in the jar. */
final class PageFiles {
    private static final List<String> NAMES = List.of("index.html", "page.css", "page.js", "format.js", "plot.js",
        "server.js", "targets.js", "icon.svg", "dygraph.min.css", "dygraph.min.js", "dygraph.licence.txt");
    private static final Map<String, String> MEDIA_TYPES = Map.of(
        "html", "text/html; charset=utf-8",
        "css", "text/css; charset=utf-8",
        "js", "text/javascript; charset=utf-8",
        "svg", "image/svg+xml",
        "txt", Reply.TEXT);

    private final Map<String, Reply> files = new HashMap<>();

    PageFiles() throws IOException {
        for (String name : NAMES) {
            try (InputStream in = PageFiles.class.getResourceAsStream("/web/" + name)) {
                if (in == null) {
                    throw new IOException("the tool is not complete: " + name + " is missing in hba.jar");
                }
                String mediaType = MEDIA_TYPES.get(name.substring(name.lastIndexOf('.') + 1));
                files.put(name, Reply.tagged(mediaType, in.readAllBytes()));
            }
        }
        files.put("", files.get("index.html"));
    }

    /** The file of this name, the page itself for an empty one, or null. */
    Reply find(String name) {
        return files.get(name);
    }
}
