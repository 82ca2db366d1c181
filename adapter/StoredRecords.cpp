#include "StoredRecords.h"

#include "Checksum.h"

#include <bit>

static_assert(std::endian::native == std::endian::little, "the rows hold the records as they lie in memory");

std::uint64_t checksumOf(const Place &place, std::span<const SD_UINT8> bytes)
{
    std::string whose(place.adapter);
    whose.append("\n").append(place.kind).append("\n").append(std::to_string(place.number));
    return checksum(bytes, checksum({reinterpret_cast<const SD_UINT8 *>(whose.data()), whose.size()}));
}

void putRecord(Connection &connection, const Place &place, std::span<const SD_UINT8> bytes)
{
    const Use insert = connection.statement("INSERT INTO record (adapter, kind, number, bytes, checksum)"
                                            " VALUES (?1, ?2, ?3, ?4, ?5)"
                                            " ON CONFLICT DO UPDATE SET bytes = ?4, checksum = ?5");
    insert->bind(1, place.adapter).bind(2, place.kind).bind(3, place.number).bind(4, bytes);
    insert->bind(5, static_cast<std::int64_t>(checksumOf(place, bytes))).run();
}

void removeRecord(Connection &connection, const Place &place)
{
    const Use removal = connection.statement("DELETE FROM record WHERE adapter = ?1 AND kind = ?2 AND number = ?3");
    removal->bind(1, place.adapter).bind(2, place.kind).bind(3, place.number).run();
}

bool nextRecord(const Use &rows, std::string_view adapter, StoredRecord &record)
{
    if (!rows->step()) {
        return false;
    }
    const auto kind = rows->text(0);
    const auto number = rows->number(1);
    const auto bytes = rows->bytes(2);
    const auto sum = rows->number(3);
    if (!kind || !number || !bytes || !sum) {
        throw Damaged{"it holds a row that this library does not write"};
    }
    record = {*kind, *number, *bytes, static_cast<std::uint64_t>(*sum)};
    if (checksumOf({adapter, *kind, *number}, *bytes) != record.checksum) {
        throw Damaged{"the checksum of " + std::string(*kind) + " " + std::to_string(*number)
                      + " does not match, it is damaged"};
    }
    return true;
}
