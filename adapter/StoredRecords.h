// The records of an adapter as rows of a database: each with a checksum over itself, its place and its adapter, so that
// a row that is damaged, or one that belongs elsewhere, is never taken for good.
#pragma once

#include "Database.h"

#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

// The table that every file has. Records lie as in memory, little-endian, the same for 32 and 64 bits.
inline constexpr const char *RECORD_TABLE = R"(
    CREATE TABLE record (
        adapter TEXT NOT NULL,
        kind TEXT NOT NULL,
        number INTEGER NOT NULL,
        bytes BLOB NOT NULL,
        checksum INTEGER NOT NULL,
        PRIMARY KEY (adapter, kind, number)) WITHOUT ROWID;
)";

// Where a record belongs.
struct Place {
    std::string_view adapter; // key of its model
    std::string_view kind;
    std::int64_t number;
};

// A row as it was read; valid until the next one is.
struct StoredRecord {
    std::string_view kind;
    std::int64_t number;
    std::span<const SD_UINT8> bytes;
    std::uint64_t checksum;
};

std::uint64_t checksumOf(const Place &place, std::span<const SD_UINT8> bytes);

void putRecord(Connection &connection, const Place &place, std::span<const SD_UINT8> bytes);
void removeRecord(Connection &connection, const Place &place);

// The next row of "SELECT kind, number, bytes, checksum FROM record", checked. False after the last one. Throws
// Damaged.
bool nextRecord(const Use &rows, std::string_view adapter, StoredRecord &record);

template <typename Record>
std::span<const SD_UINT8> bytesOf(const Record &record)
{
    static_assert(std::is_trivially_copyable_v<Record>);
    return {reinterpret_cast<const SD_UINT8 *>(&record), sizeof record};
}

// Fills a record from the bytes of a row. Throws Damaged when they are of another size.
template <typename Record>
void fromBytes(std::span<const SD_UINT8> bytes, Record &record)
{
    static_assert(std::is_trivially_copyable_v<Record>);
    if (bytes.size() != sizeof record) {
        throw Damaged{"its records have another size"};
    }
    std::memcpy(&record, bytes.data(), sizeof record);
}
