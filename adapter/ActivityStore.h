// The counters and logs of one adapter in the folder's second database (activity.db).
//
// What is counted is kept in memory and reaches the file once a second at most, with the next operation after that
// second, and when the adapter is closed; it does not wait for the disk. So it survives the process, but after a power
// failure it may be older. When it cannot be written the work is done all the same.
#pragma once

#include "Activity.h"
#include "Database.h"

#include <chrono>
#include <functional>
#include <mutex>
#include <span>
#include <string>

class ActivityStore
{
public:
    ActivityStore(const Folder &folder, std::string key, Activity factory);
    ActivityStore(const ActivityStore &) = delete;
    ActivityStore &operator=(const ActivityStore &) = delete;
    ~ActivityStore();

    // All that is known: what the file holds and what has not reached it yet.
    Activity read();
    // The counters, together with what the port itself has counted since the last reset, or since it began anew.
    HBAPORTSTATISCSI counters(const HBAPORTSTATISCSI &counted);

    void count(const HBAPORTSTATISCSI &more);
    void logError(const CONNERRTABLE &entry);
    void heardOf(const ISCSIIPADDR &address, std::span<const SD_UINT8, 6> mac);
    // Forgets all neighbours.
    void forgetNeighbours();
    // Sets the counters to zero, in the file too. baseline is what the port itself has counted. Throws ERR_FLASH_WRITE.
    void resetCounters(const HBAPORTSTATISCSI &baseline);
    // Writes what has not reached the file yet, if the last time is a second ago.
    void writeWhenDue() noexcept;
    // Writes it now.
    void writeNow() noexcept;

private:
    using Clock = std::chrono::steady_clock;

    using Change = std::function<void(Activity &)>;

    const Activity &stored();
    Activity load(Connection &connection) const;
    void merge(Activity &activity) const;
    bool write(const Change &change, std::chrono::milliseconds patience);

    std::string key_;
    Activity factory_;

    std::mutex mutex_; // guards what follows
    Database file_;
    unsigned generation_ = 0;
    std::int64_t dataVersion_ = 0;
    Activity stored_; // what the file held when it was last looked at
    // What has not reached the file: counters to add, errors and neighbours to append.
    Activity pending_;
    bool anyPending_ = false;
    bool neighboursForgotten_ = false; // before the pending ones
    Clock::time_point lastWrite_ = Clock::now();
    bool refused_ = false; // the file is damaged, and that has been said
};
