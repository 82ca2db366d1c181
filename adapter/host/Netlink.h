// What the kernel tells of its neighbours and routes (rtnetlink).
#pragma once

#include "Contract.h"

#include <optional>
#include <vector>

// An entry of the kernel's ARP or neighbour discovery table with a known hardware address.
struct KernelNeighbour {
    ISCSIIPADDR address;
    SD_UINT8 mac[6];
    SD_UINT32 seconds; // since it was last confirmed
};

// The neighbours on an interface, IPv4 first, each kind longest silent first.
std::vector<KernelNeighbour> readNeighbours(unsigned interfaceIndex);

// The default gateway of a family (AF_INET, AF_INET6) on an interface, if there is one.
std::optional<ISCSIIPADDR> readGateway(unsigned interfaceIndex, int family);
