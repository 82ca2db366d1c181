// The table of adapter handles: one slot for each adapter index, 0 where no handle is stored. The bridge's only state.
// It is read and written without synchronisation, one slot at a time.
#pragma once

#include "vdsdm/Types.h"

#include <jni.h>

// Tells whether `dev` selects a slot of the table, 0 to 31. The functions below are called with such an index only.
bool isAdapterIndex(jint dev);

// Stores 0 in every slot; nothing is closed.
void clearHandles();

// Returns what the slot holds, which may be 0: the management library refuses a handle that is none.
SDMGT_HANDLE hbaHandle(jint dev);

// Stores a handle, or 0 when the adapter was closed.
void storeHandle(jint dev, SDMGT_HANDLE handle);
