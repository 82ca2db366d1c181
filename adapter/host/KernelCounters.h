// The counters of the kernel: those of an interface, and those of IP and TCP, which the kernel keeps for the machine (the
// network namespace) as a whole.
#pragma once

#include "Contract.h"

#include <string>

// The MAC, IP and TCP counters as they are now. The iSCSI counters are zero, as are those that the kernel does not keep
// (TCP bytes, acknowledgements sent).
HBAPORTSTATISCSI readKernelCounters(const std::string &interfaceName);
