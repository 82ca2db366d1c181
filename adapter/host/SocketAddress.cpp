// Addresses for sockets and of portals, see SocketAddress.h.
#include "SocketAddress.h"

#include "Fields.h"

#include <net/if.h>
#include <netinet/in.h>

#include <charconv>
#include <cstring>

SocketAddress socketAddress(const ISCSIIPADDR &address, SD_UINT16 port, const std::string &interfaceName)
{
    ISCSIIPADDR typed = address;
    setAddressType(typed);
    SocketAddress result;
    if (typed.Type == ADDRESS_IPV6) {
        sockaddr_in6 six{};
        six.sin6_family = AF_INET6;
        six.sin6_port = htons(port);
        std::memcpy(&six.sin6_addr, typed.IPAddress, sizeof six.sin6_addr);
        if (IN6_IS_ADDR_LINKLOCAL(&six.sin6_addr)) {
            six.sin6_scope_id = if_nametoindex(interfaceName.c_str());
        }
        std::memcpy(&result.storage, &six, sizeof six);
        result.size = sizeof six;
        return result;
    }
    sockaddr_in four{};
    four.sin_family = AF_INET;
    four.sin_port = htons(port);
    std::memcpy(&four.sin_addr, typed.IPAddress, sizeof four.sin_addr);
    std::memcpy(&result.storage, &four, sizeof four);
    result.size = sizeof four;
    return result;
}

std::optional<TargetAddress> parsePortal(std::string_view text, const std::string &targetName)
{
    constexpr SD_UINT16 usualPort = 3260;
    text = text.substr(0, text.rfind(','));
    const bool bracketed = text.starts_with('[');
    const std::size_t end = bracketed ? text.find(']') : text.find(':');
    const std::string_view host = text.substr(bracketed ? 1 : 0, bracketed ? end - 1 : end);
    const std::size_t colon = end == std::string_view::npos ? end : text.find(':', end);
    TargetAddress portal{makeAddress(host), usualPort, targetName};
    if (isZero(portal.address)) {
        return std::nullopt;
    }
    if (colon != std::string_view::npos) {
        const char *last = text.data() + text.size();
        const auto [rest, error] = std::from_chars(text.data() + colon + 1, last, portal.port);
        if (error != std::errc() || rest != last) {
            return std::nullopt;
        }
    }
    return portal;
}
