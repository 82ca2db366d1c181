// What the kernel tells of links, addresses, neighbours and routes (rtnetlink), each for the network namespace of this
// process.
#pragma once

#include "Inventory.h"

#include <optional>
#include <string>
#include <vector>

struct KernelLink {
    unsigned index;
    std::string name;
    MacAddress mac; // zero when it has none
    bool loopback;
    HBAPORTSTATISCSI counters; // the MAC counters
};

struct KernelAddress {
    ISCSIIPADDR address;
    unsigned prefix; // bits of the network's part
    bool dynamic;    // with an end: got by DHCP or from a router
    bool global;     // of use beyond the link
};

// An entry of the kernel's ARP or neighbour discovery table with a known hardware address.
struct KernelNeighbour {
    ISCSIIPADDR address;
    MacAddress mac;
    SD_UINT32 seconds; // since it was last confirmed
};

// All links, in the kernel's order.
std::vector<KernelLink> readLinks();

// The addresses of a link, IPv4 first.
std::vector<KernelAddress> readAddresses(unsigned link);

// The neighbours on a link, IPv4 first, each kind longest silent first.
std::vector<KernelNeighbour> readNeighbours(unsigned link);

// The default gateway of a family (AF_INET, AF_INET6) on a link, if there is one.
std::optional<ISCSIIPADDR> readGateway(unsigned link, int family);
