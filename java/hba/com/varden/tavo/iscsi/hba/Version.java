package com.varden.tavo.iscsi.hba;

import com.google.gson.stream.JsonWriter;
import java.io.IOException;
import java.nio.file.Path;

/** hba version. */
final class Version extends Command {
    Version() {
        super("Shows the versions of the tool and of the management library, and the folder in which the project's own "
            + "libraries keep the adapters' settings.");
    }

    static String ofTool() {
        return Version.class.getPackage().getImplementationVersion();
    }

    @Override
    public Integer call() throws IOException {
        String library = Adapter.api().getVersioniSCSI();
        String tool = ofTool();
        Path settings = SettingsFolder.of(library);
        if (wantsJson()) {
            JsonWriter json = jsonWriter();
            json.beginObject().name("hba").value(tool).name("managementLibrary").value(library);
            json.name("settingsFolder").value(settings == null ? null : settings.toString()).endObject();
            finish(json);
        } else {
            System.out.println("hba " + tool);
            System.out.println("management library " + TerminalText.of(library));
            if (settings != null) {
                System.out.println("settings in " + TerminalText.of(settings));
            }
        }
        return DONE;
    }
}
