// Addresses of the contract's records for the socket functions.
#pragma once

#include "Exported.h"

#include <sys/socket.h>

#include <string>

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
