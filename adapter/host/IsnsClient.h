// A client of iSNS servers (RFC 4171): registers the initiator and asks for the targets that it may see.
#pragma once

#include "Deadline.h"
#include "TargetPort.h"

#include <string>

// Asks the server at the TCP port of iSNS. Every target comes with at most the four portals that its record holds.
IsnsResult queryIsnsServer(const ISCSIIPADDR &server, const std::string &initiatorName,
                           const std::string &interfaceName, Deadline deadline);
