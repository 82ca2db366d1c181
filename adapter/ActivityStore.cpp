#include "ActivityStore.h"

#include "Failure.h"
#include "Fields.h"
#include "StoredRecords.h"

#include <algorithm>
#include <ctime>
#include <utility>

namespace
{

constexpr DatabaseKind ACTIVITY{"activity.db", 0x54764163, "", "PRAGMA synchronous=OFF"}; // "TvAc"
constexpr std::chrono::seconds INTERVAL{1};
constexpr std::chrono::milliseconds COUNTER_PATIENCE{100}; // for another writer, when it is only about counters

void asItIs(Activity & /*activity*/) {}

constexpr std::string_view COUNTERS = "counters";
constexpr std::string_view BASELINE = "baseline";
constexpr std::string_view ERRORS = "connection errors";
constexpr std::string_view NEIGHBOURS = "neighbours";

template <typename Record>
std::span<const SD_UINT8> bytesOfAll(const std::vector<Record> &records)
{
    return {reinterpret_cast<const SD_UINT8 *>(records.data()), records.size() * sizeof(Record)};
}

template <typename Record>
void allFromBytes(std::span<const SD_UINT8> bytes, std::vector<Record> &records)
{
    if (bytes.size() % sizeof(Record) != 0 || bytes.size() / sizeof(Record) > LOG_CAPACITY) {
        throw Damaged{"it holds a log of another size"};
    }
    records.resize(bytes.size() / sizeof(Record));
    if (!bytes.empty()) {
        std::memcpy(records.data(), bytes.data(), bytes.size());
    }
}

} // namespace

ActivityStore::ActivityStore(const Folder &folder, std::string key, Activity factory)
    : key_(std::move(key)), factory_(std::move(factory)), file_(folder, ACTIVITY), stored_(factory_)
{
}

ActivityStore::~ActivityStore()
{
    writeNow();
}

// What the file holds, looked at anew when somebody has written to it. A damaged file counts as missing.
const Activity &ActivityStore::stored()
{
    try {
        Connection *connection = file_.forReading();
        if (file_.generation() != generation_) {
            generation_ = file_.generation();
            dataVersion_ = 0;
            stored_ = factory_;
        }
        if (connection != nullptr) {
            const std::int64_t version = connection->number("PRAGMA data_version");
            if (version != dataVersion_) {
                stored_ = load(*connection);
                dataVersion_ = version;
            }
        }
        refused_ = false;
    } catch (const Damaged &damaged) {
        file_.release();
        stored_ = factory_;
        if (!std::exchange(refused_, true)) {
            say(file_.path() + " is refused: " + damaged.reason + "; the adapter counts from the beginning");
        }
    } catch (const SqliteError &error) {
        file_.release();
        stored_ = factory_;
        if (isDamage(error) && !std::exchange(refused_, true)) {
            say(file_.path() + " is refused: it is damaged (" + error.message
                + "); the adapter counts from the beginning");
        }
    }
    return stored_;
}

Activity ActivityStore::load(Connection &connection) const
{
    const Use rows = connection.statement("SELECT kind, number, bytes, checksum FROM record WHERE adapter = ?1");
    rows->bind(1, key_);
    Activity activity;
    bool any = false;
    StoredRecord record{};
    while (nextRecord(rows, key_, record)) {
        any = true;
        if (record.kind == COUNTERS) {
            fromBytes(record.bytes, activity.statistics);
        } else if (record.kind == BASELINE) {
            fromBytes(record.bytes, activity.baseline);
        } else if (record.kind == ERRORS) {
            allFromBytes(record.bytes, activity.errors);
        } else if (record.kind == NEIGHBOURS) {
            allFromBytes(record.bytes, activity.neighbours);
        } else {
            throw Damaged{"it holds a row that this library does not write"};
        }
    }
    return any ? activity : factory_;
}

Activity ActivityStore::read()
{
    const std::lock_guard guard(mutex_);
    Activity activity = stored();
    merge(activity);
    return activity;
}

HBAPORTSTATISCSI ActivityStore::counters(const HBAPORTSTATISCSI &counted)
{
    const std::lock_guard guard(mutex_);
    Activity activity = stored();
    merge(activity);
    if (renewBaseline(activity.baseline, counted)) {
        write([&](Activity &kept) { renewBaseline(kept.baseline, counted); }, COUNTER_PATIENCE);
    }
    add(activity.statistics, counted);
    subtract(activity.statistics, activity.baseline);
    return activity.statistics;
}

void ActivityStore::merge(Activity &activity) const
{
    add(activity.statistics, pending_.statistics);
    for (const CONNERRTABLE &entry : pending_.errors) {
        addError(activity, entry);
    }
    if (neighboursForgotten_) {
        activity.neighbours.clear();
    }
    for (const Neighbour &neighbour : pending_.neighbours) {
        addNeighbour(activity, neighbour);
    }
}

void ActivityStore::count(const HBAPORTSTATISCSI &more)
{
    const std::lock_guard guard(mutex_);
    add(pending_.statistics, more);
    anyPending_ = true;
}

void ActivityStore::logError(const CONNERRTABLE &entry)
{
    const std::lock_guard guard(mutex_);
    addError(pending_, entry);
    anyPending_ = true;
}

void ActivityStore::heardOf(const ISCSIIPADDR &address, std::span<const SD_UINT8, 6> mac)
{
    Neighbour neighbour{};
    neighbour.entry.ipAddr = address;
    neighbour.entry.ipAddr.Reserved = 0;
    setAddressType(neighbour.entry.ipAddr);
    std::ranges::copy(mac, neighbour.entry.macAddr);
    neighbour.entry.valid = 1;
    neighbour.seconds = static_cast<SD_UINT32>(std::time(nullptr));
    const std::lock_guard guard(mutex_);
    addNeighbour(pending_, neighbour);
    anyPending_ = true;
}

void ActivityStore::forgetNeighbours()
{
    const std::lock_guard guard(mutex_);
    pending_.neighbours.clear();
    neighboursForgotten_ = true;
    anyPending_ = true;
}

void ActivityStore::resetCounters(const HBAPORTSTATISCSI &baseline)
{
    const std::lock_guard guard(mutex_);
    const auto reset = [&](Activity &activity) {
        activity.statistics = {};
        activity.baseline = baseline;
    };
    require(write(reset, WRITER_PATIENCE), ERR_FLASH_WRITE);
}

void ActivityStore::writeWhenDue() noexcept
{
    const std::lock_guard guard(mutex_);
    if (anyPending_ && Clock::now() - lastWrite_ >= INTERVAL) {
        write(asItIs, COUNTER_PATIENCE);
    }
}

void ActivityStore::writeNow() noexcept
{
    const std::lock_guard guard(mutex_);
    if (anyPending_) {
        write(asItIs, COUNTER_PATIENCE);
    }
}

bool ActivityStore::write(const Change &change, std::chrono::milliseconds patience)
{
    lastWrite_ = Clock::now(); // a file that cannot be written is not tried more often either
    try {
        stored();
        if (refused_) {
            file_.setAside();
        }
        Connection &connection = file_.forWriting();
        connection.setPatience(static_cast<int>(patience.count()));
        Transaction transaction(connection, "BEGIN IMMEDIATE");
        Activity activity = load(connection);
        merge(activity);
        change(activity);
        putRecord(connection, {key_, COUNTERS, 0}, bytesOf(activity.statistics));
        putRecord(connection, {key_, BASELINE, 0}, bytesOf(activity.baseline));
        putRecord(connection, {key_, ERRORS, 0}, bytesOfAll(activity.errors));
        putRecord(connection, {key_, NEIGHBOURS, 0}, bytesOfAll(activity.neighbours));
        transaction.commit();
        stored_ = std::move(activity);
        generation_ = file_.generation();
        pending_ = {};
        anyPending_ = false;
        neighboursForgotten_ = false;
        return true;
    } catch (...) {
        return false; // counting is not worth failing for; what is pending is tried again
    }
}
