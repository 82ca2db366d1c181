package com.varden.tavo.iscsi.hba.serve;

import java.io.IOException;
import java.io.InputStream;
import java.util.HashMap;
import java.util.Map;

/** The files of the page, which lie in the jar. */
final class PageFiles {
    private static final Map<String, String> MEDIA_TYPES = Map.of(
        "index.html", "text/html; charset=utf-8",
        "page.css", "text/css; charset=utf-8",
        "page.js", "text/javascript; charset=utf-8",
        "plot.js", "text/javascript; charset=utf-8",
        "icon.svg", "image/svg+xml",
        "dygraph.min.css", "text/css; charset=utf-8",
        "dygraph.min.js", "text/javascript; charset=utf-8",
        "dygraph.licence.txt", Reply.TEXT);

    private final Map<String, Reply> files = new HashMap<>();

    PageFiles() throws IOException {
        for (Map.Entry<String, String> file : MEDIA_TYPES.entrySet()) {
            try (InputStream in = PageFiles.class.getResourceAsStream("/web/" + file.getKey())) {
                if (in == null) {
                    throw new IOException("the tool is not complete: " + file.getKey() + " is missing in hba.jar");
                }
                files.put(file.getKey(), Reply.tagged(file.getValue(), in.readAllBytes()));
            }
        }
        files.put("", files.get("index.html"));
    }

    /** The file of this name, the page itself for an empty one, or null. */
    Reply find(String name) {
        return files.get(name);
    }
}
