// ICMP echo, IPv4 and IPv6, out of one interface.
#pragma once

#include "Deadline.h"
#include "TargetPort.h"

#include <string>

// Sends the packets one after the other, each when the one before was answered or a second has passed. answered: at
// least one answer came before the deadline; notSupported: the system lets this process send no ICMP.
PingResult sendPings(const ISCSIIPADDR &address, SD_UINT32 packets, const std::string &interfaceName,
                     Deadline deadline);
