// Addresses of the contract's records to and from text.
#include "Fields.h"

#include <arpa/inet.h>

#include <cstring>

ISCSIIPADDR makeAddress(std::string_view text)
{
    ISCSIIPADDR address{};
    const std::string terminated(text);
    if (inet_pton(AF_INET, terminated.c_str(), address.IPAddress) != 1
        && inet_pton(AF_INET6, terminated.c_str(), address.IPAddress) != 1) {
        return {};
    }
    setAddressType(address);
    return address;
}

std::string toText(const ISCSIIPADDR &address)
{
    ISCSIIPADDR typed = address;
    setAddressType(typed);
    char text[INET6_ADDRSTRLEN] = "";
    inet_ntop(typed.Type == ADDRESS_IPV6 ? AF_INET6 : AF_INET, typed.IPAddress, text, sizeof text);
    return text;
}

void setAddressType(ISCSIIPADDR &address)
{
    const auto zero = [](SD_UINT8 byte) {
        return byte == 0;
    };
    const bool shortForm = std::all_of(address.IPAddress + 4, address.IPAddress + 16, zero);
    if (isZero(address)) {
        address.Type = ADDRESS_NONE;
    } else {
        address.Type = shortForm ? ADDRESS_IPV4 : ADDRESS_IPV6;
    }
}

bool isZero(const ISCSIIPADDR &address)
{
    return sameAddress(address, ISCSIIPADDR{});
}

bool sameAddress(const ISCSIIPADDR &one, const ISCSIIPADDR &other)
{
    return std::memcmp(one.IPAddress, other.IPAddress, sizeof one.IPAddress) == 0;
}
