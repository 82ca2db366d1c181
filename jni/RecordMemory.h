// The life of a management record: cleared before use, wiped when it held a secret, on the heap only with an owner that
// frees it.
#pragma once

#include "vdsdm/Types.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <type_traits>

// Clears a record, or an array of records, over its full size, padding included.
template <typename Record>
void clear(Record &record)
{
    static_assert(std::is_trivially_copyable_v<Record>);
    std::memset(&record, 0, sizeof record);
}

// Overwrites memory that held a secret. The barrier keeps the compiler from dropping the write.
inline void wipe(void *memory, std::size_t size)
{
    std::memset(memory, 0, size);
    asm volatile("" : : "r"(memory) : "memory");
}

// How many entries of a list are read. One rule for every list: what the management library reports never leads beyond
// the buffer, and a list that was cut says so in a line that names it.
inline SD_UINT32 fitting(SD_UINT32 reported, SD_UINT32 room, const char *list)
{
    if (reported > room) {
        std::printf("%s cut: %u reported, %u read\n", list, reported, room);
    }
    return std::min(reported, room);
}

// Makes `count` cleared records on the heap, owned by what is returned, which wipes and frees them. Null when there is
// no memory, after printing the line.
template <typename Record>
auto newRecords(std::size_t count, const char *outOfMemory)
{
    static_assert(std::is_trivially_copyable_v<Record>);
    const std::size_t size = count * sizeof(Record);
    void *memory = std::malloc(size);
    if (memory == nullptr) {
        std::printf("%s", outOfMemory);
    } else {
        std::memset(memory, 0, size);
    }
    const auto giveBack = [size](Record *records) {
        wipe(records, size);
        std::free(records);
    };
    return std::unique_ptr<Record[], decltype(giveBack)>(static_cast<Record *>(memory), giveBack);
}
