package com.varden.tavo.iscsi.hba;

import com.google.gson.stream.JsonWriter;
import java.io.IOException;

/** hba version. */
final class Version extends Command {
    Version() {
        super("Shows the versions of the tool and of the management library.");
    }

    @Override
    public Integer call() throws IOException {
        String library = Adapter.api().getVersioniSCSI();
        String tool = Version.class.getPackage().getImplementationVersion();
        if (wantsJson()) {
            JsonWriter json = jsonWriter();
            json.beginObject().name("hba").value(tool).name("managementLibrary").value(library).endObject();
            finish(json);
        } else {
            System.out.println("hba " + tool);
            System.out.println("management library " + library);
        }
        return DONE;
    }
}
