// Handles, the trace, and the operations that concern the library as a whole.
#include "Library.h"

#include "Files.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <map>
#include <mutex>
#include <shared_mutex>
#include <span>
#include <string>
#include <utility>

namespace
{

// Everything the library keeps in memory. It is never destroyed: threads may still be in an operation at exit.
struct Library {
    std::shared_mutex mutex; // guards all that follows
    std::map<SDMGT_HANDLE, std::shared_ptr<Adapter>> handles;
    std::map<std::string, std::weak_ptr<Adapter>> adapters; // by folder and key: one while any handle of it is open
    SDMGT_HANDLE lastHandle = 0x5D000000;
    Descriptor traceFile;
    std::string traceName;
    std::atomic<int> traceError = 0; // errno of a line that was lost, until it is said
};

Library &library()
{
    static Library *const instance = new Library;
    return *instance;
}

// A handle that no open adapter has; 0 is none. Numbers come round only after four thousand million opens.
SDMGT_HANDLE newHandle(Library &state)
{
    do {
        ++state.lastHandle;
    } while (state.lastHandle == 0 || state.handles.contains(state.lastHandle));
    return state.lastHandle;
}

// What is counted in the last second before the process ends reaches the disk also when no handle is closed.
[[gnu::destructor]] void writeAtExit()
{
    Library &state = library();
    const std::shared_lock guard(state.mutex, std::try_to_lock);
    if (guard.owns_lock()) {
        for (const auto &[handle, adapter] : state.handles) {
            adapter->activity.writeNow();
        }
    }
}

// Says at the end of an adapter's work that the trace is not whole.
void reportLostTrace()
{
    Library &state = library();
    const std::shared_lock guard(state.mutex);
    const int error = state.traceError.exchange(0);
    if (error != 0) {
        say("the trace " + state.traceName + " is not complete: " + std::strerror(error));
    }
}

} // namespace

std::shared_ptr<Adapter> adapterOf(SDMGT_HANDLE handle)
{
    Library &state = library();
    const std::shared_lock guard(state.mutex);
    const auto found = state.handles.find(handle);
    require(found != state.handles.end(), ERR_INVALID_HANDLE);
    return found->second;
}

void trace(const char *operation, SDMGT_HANDLE handle, SD_UINT32 status) noexcept
{
    try {
        Library &state = library();
        const std::shared_lock guard(state.mutex);
        if (!state.traceFile) {
            return;
        }
        timespec now{};
        clock_gettime(CLOCK_REALTIME, &now);
        char line[160];
        const int length =
            std::snprintf(line, sizeof line, "%lld.%03ld %d %s handle=%08x status=%08x\n",
                          static_cast<long long>(now.tv_sec), now.tv_nsec / 1000000, static_cast<int>(getpid()),
                          operation, static_cast<unsigned>(handle), static_cast<unsigned>(status));
        // One write for a line, at the file's end: lines of several threads and processes do not mix.
        const std::span bytes(reinterpret_cast<const SD_UINT8 *>(line), static_cast<std::size_t>(length));
        if (length > 0 && !writeAll(state.traceFile.number(), bytes)) {
            state.traceError = errno;
        }
    } catch (...) {
        // Without its lock the trace loses the line; the operation itself is not concerned.
        return;
    }
}

extern "C" {

SD_UINT32 SDOpenDeviceiSCSI(SD_UINT32 adapterIndex, SDMGT_HANDLE *handle)
{
    SDMGT_HANDLE opened = 0;
    const SD_UINT32 status = statusOf([&] {
        requirePointers(handle);
        auto model = findModel(adapterIndex);
        require(model != nullptr, ERR_NO_SUCH_ADAPTER);
        const Folder folder = settingsFolder();
        Library &state = library();
        const std::unique_lock guard(state.mutex);
        std::weak_ptr<Adapter> &known = state.adapters[folder.path + "/" + model->key];
        std::shared_ptr<Adapter> adapter = known.lock();
        if (!adapter) {
            adapter = std::make_shared<Adapter>(std::move(model), folder);
            known = adapter;
        }
        opened = newHandle(state);
        state.handles.emplace(opened, std::move(adapter));
        *handle = opened;
    });
    trace(__func__, opened, status);
    return status;
}

SD_UINT32 SDCloseDeviceiSCSI(SDMGT_HANDLE handle)
{
    const SD_UINT32 status = statusOf([&] {
        Library &state = library();
        std::unique_lock guard(state.mutex);
        const auto closed = state.handles.extract(handle);
        require(!closed.empty(), ERR_INVALID_HANDLE);
        // With its last handle the adapter goes, which can take its time: nobody else waits for that.
        guard.unlock();
    });
    trace(__func__, handle, status);
    (void)statusOf(reportLostTrace);
    return status;
}

SD_UINT32 SDGetVersioniSCSI(char *versionText, SD_UINT32 size)
{
    const SD_UINT32 status = statusOf([&] {
        requirePointers(versionText);
        require(size != 0, ERR_INVALID_PARAMETER);
        (void)std::snprintf(versionText, size, "%s", libraryVersion().c_str());
    });
    trace(__func__, 0, status);
    return status;
}

// The trace belongs to the process: from here on every operation on every adapter adds its line. A mask of 0 ends it.
SD_UINT32 SDEnableDebugTraceiSCSI(SDMGT_HANDLE *handle, const char *fileName, SD_UINT32 mask)
{
    const SD_UINT32 status = statusOf([&] {
        requirePointers(handle, fileName);
        adapterOf(*handle);
        Descriptor file;
        if (mask != 0) {
            file = openForLines(fileName);
            require(bool(file), ERR_OUTPUT_FILE);
        }
        Library &state = library();
        const std::unique_lock guard(state.mutex);
        state.traceFile = std::move(file);
        state.traceName = fileName;
        state.traceError = 0;
    });
    trace(__func__, handle == nullptr ? 0 : *handle, status);
    return status;
}
}
