// The adapter on the network: what it does with targets and addresses is counted and logged here.
#pragma once

#include "Adapter.h"

// Logs in to the target of an entry. A failure goes to the connection-error log.
void login(Adapter &adapter, const DEVICEENTRYISCSI &entry);

// Counts a logout and logs the connection's end.
void recordLogout(Adapter &adapter, SD_UINT32 index);
