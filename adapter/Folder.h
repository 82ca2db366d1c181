// The folder in which the settings and the counters of the adapters lie.
#pragma once

#include <sys/types.h>

#include <string>

struct Folder {
    std::string path; // absolute, without symbolic links as far as it exists, no slash at its end
    bool make;        // whether the library makes it when it writes
};

// The folder that TAVO_ADAPTER_FLASH names. When it is not set: that of the library itself if it lies in a build tree,
// else /var/lib/tavoiscsi for root and $XDG_STATE_HOME/tavoiscsi (~/.local/state/tavoiscsi) for everybody else.
// Throws ERR_FLASH_READ, with a line that names the reason.
Folder settingsFolder();

// The last of these: by the user and by the values of XDG_STATE_HOME (empty: not set) and of the user's home folder.
std::string folderOfUser(uid_t user, const std::string &stateHome, const std::string &home);

// Makes the folder for its owner alone (0700), and what leads to it. False with errno when that fails.
bool makeFolder(const std::string &path);

// Says a line on the standard error, marked as this library's.
void say(const std::string &line);
