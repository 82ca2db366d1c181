// The kernel's counters of IP and TCP, which it keeps for the machine (the network namespace) as a whole.
#pragma once

#include "Exported.h"

// The IP and TCP counters as they are now. All others are zero, as are those that the kernel does not keep: TCP bytes
// and acknowledgements sent.
HBAPORTSTATISCSI readProtocolCounters();
