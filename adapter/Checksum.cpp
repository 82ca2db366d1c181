#include "Checksum.h"

// The library's functions as part of this file: nothing to link, nothing to install.
#define XXH_INLINE_ALL
#include <xxhash.h>

std::uint64_t checksum(std::span<const SD_UINT8> bytes, std::uint64_t seed)
{
    return XXH3_64bits_withSeed(bytes.data(), bytes.size(), seed);
}
