// Addresses of the contract's records for the socket functions, and those that portals are told by.
#pragma once

#include "TargetPort.h"

#include <sys/socket.h>

#include <optional>
#include <string>
#include <string_view>

struct SocketAddress {
    sockaddr_storage storage{};
    socklen_t size = 0;

    const sockaddr *get() const
    {
        return reinterpret_cast<const sockaddr *>(&storage);
    }
    int family() const
    {
        return storage.ss_family;
    }
};

// A link-local address counts on the interface's link.
SocketAddress socketAddress(const ISCSIIPADDR &address, SD_UINT16 port, const std::string &interfaceName);

// A portal as SendTargets tells it: "10.0.0.1:3260,1" or "[fd00::1]:3260,1", the last number being the portal group.
// Nothing for a host's name: looking it up could take longer than any deadline.
std::optional<TargetAddress> parsePortal(std::string_view text, const std::string &targetName);
