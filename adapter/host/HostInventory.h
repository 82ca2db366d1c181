// What the host adapter's inventory and its port share beside the seam.
#pragma once

#include "Inventory.h"

#include <string>

// The iSCSI name of this machine: that of /etc/iscsi/initiatorname.iscsi where it can be read, else one that follows
// from the machine's ID and stays the same as long as the system is not installed anew.
std::string hostInitiatorName();
