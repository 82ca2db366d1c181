// Scalar types of the management library.
#pragma once

#include <cstddef>
#include <cstdint>

using SD_UINT8 = std::uint8_t;
using SD_UINT16 = std::uint16_t;
using SD_UINT32 = std::uint32_t;
using SD_UINT64 = std::uint64_t;

// The handle of an open adapter. 0 never names one.
using SDMGT_HANDLE = SD_UINT32;
