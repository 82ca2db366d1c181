// What the families need of the front door: the table of adapter handles.
#pragma once

#include <jni.h>

#include "vdsdm/Types.h"

// Tells whether `dev` selects a slot of the handle table, 0 to 31.
bool isAdapterIndex(jint dev);
