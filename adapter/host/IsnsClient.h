// A client of iSNS servers (RFC 4171): registers the initiator and asks for the targets that it may see.
#pragma once

#include "Deadline.h"
#include "TargetPort.h"

#include <span>
#include <string>
#include <vector>

// Asks the server at its well-known port. Every target comes with at most the four portals that the record holds.
IsnsResult queryIsnsServer(const ISCSIIPADDR &server, const std::string &initiatorName,
                           const std::string &interfaceName, Deadline deadline);
