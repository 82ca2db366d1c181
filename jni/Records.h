// The life of a management record: cleared before use, wiped when it held a secret, on the heap only by way of a
// function that frees it.
#pragma once

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "vdsdm/Status.h"
#include "vdsdm/Types.h"

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

// Lends cleared heap memory for `count` records to work(records), which returns a status, then wipes and frees it. No
// memory: prints the line and returns ERR_NO_MEMORY.
template <typename Record, typename Work>
SD_UINT32 withRecords(std::size_t count, const char *outOfMemory, Work work)
{
    static_assert(std::is_trivially_copyable_v<Record>);
    const std::size_t size = count * sizeof(Record);
    void *memory = std::malloc(size);
    if (memory == nullptr) {
        std::printf("%s", outOfMemory);
        return ERR_NO_MEMORY;
    }
    std::memset(memory, 0, size);
    const SD_UINT32 status = work(static_cast<Record *>(memory));
    wipe(memory, size);
    std::free(memory);
    return status;
}
