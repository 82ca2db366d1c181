// Socket addresses, see SocketAddress.h.
#include "SocketAddress.h"

#include "Fields.h"

#include <net/if.h>
#include <netinet/in.h>

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
