#include "SettingsStore.h"

#include "Failure.h"
#include "StoredRecords.h"

#include <chrono>
#include <cstring>
#include <utility>

namespace
{

constexpr const char *NOT_WAITING = "PRAGMA synchronous=NORMAL";

constexpr std::chrono::milliseconds LOOK_INTERVAL{50};

constexpr const char *SCHEMA = R"(
    CREATE TABLE adapter (
        key TEXT NOT NULL PRIMARY KEY,
        census BLOB NOT NULL,
        checksum INTEGER NOT NULL) WITHOUT ROWID;
)";

constexpr DatabaseKind SETTINGS{"settings.db", 0x54765374, SCHEMA, "PRAGMA synchronous=FULL"}; // "TvSt"

constexpr std::string_view BLOCK = "firmware block";
constexpr std::string_view VERSIONS = "image versions";
constexpr std::string_view ISNS = "iSNS settings";
constexpr std::string_view ENTRY = "device database entry";
constexpr std::string_view CHAP = "CHAP record";
constexpr std::string_view CENSUS = "census";

std::optional<Census> readCensus(Connection &connection, const std::string &key)
{
    const Use query = connection.statement("SELECT census, checksum FROM adapter WHERE key = ?1");
    query->bind(1, key);
    if (!query->step()) {
        return std::nullopt;
    }
    const auto bytes = query->bytes(0);
    const auto sum = query->number(1);
    if (!bytes || !sum || checksumOf({key, CENSUS, 0}, *bytes) != static_cast<std::uint64_t>(*sum)) {
        throw Damaged{"the checksum of its list of records does not match, it is damaged"};
    }
    Census census;
    fromBytes(*bytes, census);
    return census;
}

void writeCensus(Connection &connection, const std::string &key, const Census &census)
{
    const Use insert = connection.statement("INSERT INTO adapter (key, census, checksum) VALUES (?1, ?2, ?3)"
                                            " ON CONFLICT DO UPDATE SET census = ?2, checksum = ?3");
    insert->bind(1, key).bind(2, bytesOf(census));
    insert->bind(3, static_cast<std::int64_t>(checksumOf({key, CENSUS, 0}, bytesOf(census)))).run();
}

// Writes the records that differ, and keeps the census.
class Differences
{
public:
    Differences(Connection &connection, const std::string &key, Census &census)
        : connection_(connection), key_(key), census_(census)
    {
    }
    bool any() const
    {
        return any_;
    }
    // A null pointer stands for no record.
    template <typename Record>
    void compare(std::string_view kind, std::size_t number, const Record *before, const Record *after)
    {
        if (before == after
            || (before != nullptr && after != nullptr && std::memcmp(before, after, sizeof *after) == 0)) {
            return;
        }
        any_ = true;
        const Place place{key_, kind, static_cast<std::int64_t>(number)};
        if (before != nullptr) {
            census_.sum -= checksumOf(place, bytesOf(*before));
            --census_.records;
        }
        if (after != nullptr) {
            census_.sum += checksumOf(place, bytesOf(*after));
            ++census_.records;
            putRecord(connection_, place, bytesOf(*after));
        } else {
            removeRecord(connection_, place);
        }
    }

private:
    Connection &connection_;
    const std::string &key_;
    Census &census_;
    bool any_ = false;
};

template <typename Record>
const Record *memberOf(const Settings *settings, Record Settings::*member)
{
    return settings == nullptr ? nullptr : &(settings->*member);
}

// Puts a record that was read where it belongs.
void take(Settings &settings, const StoredRecord &record)
{
    if (record.kind == BLOCK && record.number == 0) {
        fromBytes(record.bytes, settings.block);
    } else if (record.kind == VERSIONS && record.number == 0) {
        fromBytes(record.bytes, settings.versions);
    } else if (record.kind == ISNS && record.number == 0) {
        fromBytes(record.bytes, settings.isns);
    } else if (record.kind == ENTRY && record.number >= 0 && record.number < std::int64_t{DDB_SLOTS}) {
        DEVICEENTRYISCSI entry{};
        fromBytes(record.bytes, entry);
        if (entry.TargetID != static_cast<SD_UINT32>(record.number)) {
            throw Damaged{"its device database is not in order"};
        }
        settings.place(entry);
    } else if (record.kind == CHAP && record.number == static_cast<std::int64_t>(settings.chap.size())
               && record.number < std::int64_t{CHAP_CAPACITY} && record.bytes.size() == sizeof(CHAPTABLE)) {
        settings.chap.push_back(shareChap(*reinterpret_cast<const CHAPTABLE *>(record.bytes.data())));
    } else {
        throw Damaged{"it holds a row that this library does not write"};
    }
}

} // namespace

SettingsStore::SettingsStore(const Folder &folder, std::string key, Settings factory)
    : key_(std::move(key)), factory_(std::make_shared<const Settings>(std::move(factory))), reader_(folder, SETTINGS),
      writer_(folder, SETTINGS)
{
}

SettingsStore::~SettingsStore()
{
    if (damaged_) {
        reader_.release();
        writer_.release();
    }
}

std::shared_ptr<const Settings> SettingsStore::read()
{
    const std::lock_guard guard(readerMutex_);
    try {
        return readNow();
    } catch (const Damaged &damaged) {
        reader_.release();
        refuse(damaged.reason);
    } catch (const SqliteError &error) {
        reader_.release();
        failRead(error);
    }
}

std::shared_ptr<const Settings> SettingsStore::readForCommand()
{
    {
        const std::lock_guard guard(readerMutex_);
        const auto present = known();
        if (present && mark_ && mark_ == reader_.commitMark() && Clock::now() - lastLook_ < LOOK_INTERVAL) {
            return present->settings;
        }
    }
    return read();
}

std::shared_ptr<const Settings> SettingsStore::readNow()
{
    mark_.reset();
    lastLook_ = Clock::now();
    Connection *connection = reader_.forReading();
    if (reader_.generation() != readerGeneration_) {
        readerGeneration_ = reader_.generation();
        dataVersion_ = 0;
        forget();
    }
    if (connection == nullptr) {
        return factory_;
    }
    // Both are asked before the snapshot: what was written since is noticed the next time.
    const auto mark = connection->commitMark();
    const std::int64_t version = connection->number("PRAGMA data_version");
    auto present = known();
    if (present && version == dataVersion_) {
        mark_ = mark;
        return present->settings;
    }
    const Transaction snapshot(*connection, "BEGIN");
    const auto census = readCensus(*connection, key_);
    const std::int64_t revision = census ? census->revision : 0;
    if (!present || present->revision != revision) {
        present = Known{load(*connection, census), revision};
        know(*present);
    }
    dataVersion_ = version;
    mark_ = mark;
    return present->settings;
}

std::shared_ptr<const Settings> SettingsStore::load(Connection &connection, const std::optional<Census> &census)
{
    const Use rows = connection.statement(
        "SELECT kind, number, bytes, checksum FROM record WHERE adapter = ?1 ORDER BY kind, number");
    rows->bind(1, key_);
    auto settings = std::make_shared<Settings>();
    Census found;
    StoredRecord record{};
    while (nextRecord(rows, key_, record)) {
        take(*settings, record);
        ++found.records;
        found.sum += record.checksum;
    }
    if (!census && found.records == 0) {
        return factory_;
    }
    if (!census || census->records != found.records || census->sum != found.sum) {
        throw Damaged{"records are missing, it is damaged"};
    }
    return settings;
}

void SettingsStore::change(const Change &change)
{
    write(change, SETTINGS.synchronous, WRITER_PATIENCE);
}

void SettingsStore::changeSoon(const Change &change, std::chrono::milliseconds patience)
{
    write(change, NOT_WAITING, patience);
}

void SettingsStore::write(const Change &change, const char *synchronous, std::chrono::milliseconds patience)
{
    // By the system's clock, which ThreadSanitizer follows; whoever holds the mutex gives up by another one.
    const std::unique_lock guard(writerMutex_, std::chrono::system_clock::now() + patience);
    require(guard.owns_lock(), ERR_BUSY);
    try {
        Connection &connection = writer_.forWriting();
        connection.setPatience(static_cast<int>(patience.count()));
        connection.number(synchronous);
        writeDifferences(connection, change);
    } catch (const Damaged &damaged) {
        writer_.release();
        refuse(damaged.reason);
    } catch (const SqliteError &error) {
        failWrite(error, synchronous == NOT_WAITING);
    }
}

void SettingsStore::writeDifferences(Connection &connection, const Change &change)
{
    if (writer_.generation() != writerGeneration_) {
        writerGeneration_ = writer_.generation();
        forget();
    }
    Transaction transaction(connection, "BEGIN IMMEDIATE");
    const auto census = readCensus(connection, key_);
    auto present = known();
    if (!present || present->revision != (census ? census->revision : 0)) {
        present = Known{load(connection, census), 0};
    }
    const auto next = std::make_shared<Settings>(*present->settings);
    change(*next);
    Census after = census.value_or(Census{});
    Differences differences(connection, key_, after);
    const Settings *before = census ? present->settings.get() : nullptr; // an adapter's first write writes all of it
    differences.compare(BLOCK, 0, memberOf(before, &Settings::block), &next->block);
    differences.compare(VERSIONS, 0, memberOf(before, &Settings::versions), &next->versions);
    differences.compare(ISNS, 0, memberOf(before, &Settings::isns), &next->isns);
    for (std::size_t slot = 0; slot < next->slots.size(); ++slot) {
        differences.compare(ENTRY, slot, before == nullptr ? nullptr : before->slots[slot].get(),
                            next->slots[slot].get());
    }
    for (std::size_t number = 0; number < CHAP_CAPACITY; ++number) {
        const auto index = static_cast<SD_UINT32>(number);
        differences.compare(CHAP, number, before == nullptr ? nullptr : before->findChap(index), next->findChap(index));
    }
    if (!differences.any()) {
        return;
    }
    ++after.revision;
    writeCensus(connection, key_, after);
    transaction.commit();
    know({next, after.revision});
}

std::optional<SettingsStore::Known> SettingsStore::known()
{
    const std::lock_guard guard(knownMutex_);
    return known_;
}

void SettingsStore::know(Known known)
{
    const std::lock_guard guard(knownMutex_);
    refused_.clear();
    if (!known_ || known_->revision <= known.revision) {
        known_ = std::move(known);
    }
}

void SettingsStore::forget()
{
    const std::lock_guard guard(knownMutex_);
    known_.reset();
}

void SettingsStore::refuse(const std::string &reason)
{
    forget();
    const std::string line = reader_.path() + " is refused: " + reason
                             + "; put a good copy in its place, or remove it to return to the factory settings";
    const std::lock_guard guard(knownMutex_);
    damaged_ = true;
    if (line != refused_) {
        say(line);
        refused_ = line;
    }
    throw Failure{ERR_FLASH_DAMAGED};
}

void SettingsStore::failRead(const SqliteError &error)
{
    if (isDamage(error)) {
        refuse("its contents are no longer those of a database, it is damaged (" + error.message + ")");
    }
    require(error.primaryCode() != SQLITE_NOMEM, ERR_NO_MEMORY);
    require(error.primaryCode() != SQLITE_BUSY, ERR_BUSY);
    const std::string reason = error.systemError != 0 ? std::strerror(error.systemError) : error.message;
    say("cannot read " + reader_.path() + ": " + reason
        + (error.systemError == EACCES || error.systemError == EPERM
               ? "; run this as the user whose settings these are, or name another folder in TAVO_ADAPTER_FLASH"
               : "; check the disk"));
    throw Failure{ERR_FLASH_READ};
}

void SettingsStore::failWrite(const SqliteError &error, bool silent)
{
    if (isDamage(error)) {
        writer_.release();
        refuse("its contents are no longer those of a database, it is damaged (" + error.message + ")");
    }
    require(error.primaryCode() != SQLITE_NOMEM, ERR_NO_MEMORY);
    require(error.primaryCode() != SQLITE_BUSY, ERR_BUSY);
    require(!silent, ERR_FLASH_WRITE);
    const bool unknown = error.code == SQLITE_IOERR_FSYNC || error.code == SQLITE_IOERR_DIR_FSYNC;
    const std::string reason = error.systemError != 0 ? std::strerror(error.systemError) : error.message;
    say("cannot write " + writer_.path() + ": " + reason
        + (unknown ? "; whether the change will last is not known: check the disk, then read the settings back"
                   : "; the adapter keeps its old settings"));
    throw Failure{ERR_FLASH_WRITE};
}
