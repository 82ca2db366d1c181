// The adapter's CHAP credentials.
#pragma once

#include "Types.h"

inline constexpr SD_UINT32 CHAP_CAPACITY = 128; // records of a full CHAP table

// One entry of the CHAP table. Device database entries refer to it by its index.
struct CHAPTABLE {
    SD_UINT16 Link;            // passed through, meaning is the adapter's
    SD_UINT8 Flags;            // flag bits, passed through
    SD_UINT8 ChapSecretLength; // bytes of the secret
    SD_UINT8 ChapSecret[100];  // text or raw bytes, padded with zeros
    SD_UINT8 ChapName[256];    // text; no terminator when it fills the field
};
static_assert(sizeof(CHAPTABLE) == 360);
static_assert(offsetof(CHAPTABLE, Flags) == 2);
static_assert(offsetof(CHAPTABLE, ChapSecretLength) == 3);
static_assert(offsetof(CHAPTABLE, ChapSecret) == 4);
static_assert(offsetof(CHAPTABLE, ChapName) == 104);
