// What the four software adapters have beside what every adapter has.
#pragma once

#include "Inventory.h"

// Whether a cable is plugged in.
bool hasLink(const AdapterModel &model);
