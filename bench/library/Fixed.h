// What the benchmark's management library offers beyond the 36 operations: how many entries it answers with, and what
// was written to it.
#pragma once

#include "vdsdm.h"

extern "C" {

// Sets the number of device database entries, 0 to 512; they are those with the lowest indices.
void fixedSetEntryCount(SD_UINT32 count);
// The 512 records that SDSetDDBEntry wrote last, all zero where none was written.
const DEVICEENTRYISCSI *fixedWritten();
// Clears the records that were written.
void fixedForgetWritten();
}
