// Checksums of bytes (XXH3, 64 bits).
#pragma once

#include "Exported.h"

#include <cstdint>
#include <span>

// seed carries the checksum of what came before.
std::uint64_t checksum(std::span<const SD_UINT8> bytes, std::uint64_t seed = 0);
