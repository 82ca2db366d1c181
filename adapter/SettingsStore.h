// The settings of one adapter in the folder's database (settings.db): durable, all or nothing, seen by the next
// process.
//
// Beside the records themselves a row for the adapter tells their number, the sum of their checksums and a revision
// that grows with each change: a record that is lost is noticed, and what has not changed is not read again.
#pragma once

#include "Database.h"
#include "Settings.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

// What an adapter's row tells of its records.
struct Census {
    std::int64_t revision = 0;
    std::int64_t records = 0;
    std::uint64_t sum = 0; // of their checksums
};

class SettingsStore
{
public:
    using Change = std::function<void(Settings &)>;

    // key names the adapter; factory is what it has until something is written.
    SettingsStore(const Folder &folder, std::string key, Settings factory);
    SettingsStore(const SettingsStore &) = delete;
    SettingsStore &operator=(const SettingsStore &) = delete;
    ~SettingsStore();

    // The settings as they are now. Waits for no writer. Throws ERR_FLASH_DAMAGED, ERR_FLASH_READ.
    std::shared_ptr<const Settings> read();
    // The same for a SCSI command: as long as nobody writes it asks nothing of the system. What anybody writes is seen
    // at once; that another file was put in the place of this one, or none, 50 ms later.
    std::shared_ptr<const Settings> readForCommand();
    // Has a change applied to the newest settings, and writes what differs. When it throws nothing is written. Durable
    // when it returns. Throws as read() does, and ERR_FLASH_WRITE, ERR_BUSY.
    void change(const Change &change);
    // The same without waiting for the disk: after a power failure the change may be lost. Waits for another writer no
    // longer than patience, and says nothing when it fails.
    void changeSoon(const Change &change, std::chrono::milliseconds patience);

private:
    struct Known {
        std::shared_ptr<const Settings> settings;
        std::int64_t revision;
    };

    std::shared_ptr<const Settings> readNow();
    void write(const Change &change, const char *synchronous, std::chrono::milliseconds patience);
    void writeDifferences(Connection &connection, const Change &change);
    std::shared_ptr<const Settings> load(Connection &connection, const std::optional<Census> &census);
    std::optional<Known> known();
    void know(Known known);
    void forget();
    [[noreturn]] void refuse(const std::string &reason);
    [[noreturn]] void failRead(const SqliteError &error);
    [[noreturn]] void failWrite(const SqliteError &error, bool silent);

    std::string key_;
    std::shared_ptr<const Settings> factory_;

    using Clock = std::chrono::steady_clock;

    std::mutex readerMutex_; // guards the next five
    Database reader_;
    unsigned readerGeneration_ = 0;
    std::int64_t dataVersion_ = 0;
    std::optional<CommitMark> mark_; // of the last commit that is known
    Clock::time_point lastLook_;     // whether the file is still the same

    std::timed_mutex writerMutex_; // guards the next two
    Database writer_;
    unsigned writerGeneration_ = 0;

    std::mutex knownMutex_; // guards what follows; taken last
    std::optional<Known> known_;
    std::string refused_;  // the last line said of a refusal, so that it is said once
    bool damaged_ = false; // a file was refused: what lies there is left alone to the end
};
