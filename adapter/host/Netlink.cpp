// Dumps of rtnetlink tables, see Netlink.h.
#include "Netlink.h"

#include "Descriptor.h"
#include "Fields.h"

#include <linux/neighbour.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <span>

namespace
{

using Attribute = std::span<const SD_UINT8>;

// The attributes of a message by their type; those above the array are passed over.
template <typename Header, std::size_t Types>
std::array<Attribute, Types> attributesOf(const nlmsghdr &message)
{
    std::array<Attribute, Types> attributes{};
    const auto *start = reinterpret_cast<const SD_UINT8 *>(&message);
    std::size_t place = NLMSG_HDRLEN + NLMSG_ALIGN(sizeof(Header));
    while (place + sizeof(rtattr) <= message.nlmsg_len) {
        rtattr attribute{};
        std::memcpy(&attribute, start + place, sizeof attribute);
        if (attribute.rta_len < sizeof attribute || place + attribute.rta_len > message.nlmsg_len) {
            break;
        }
        if (attribute.rta_type < Types) {
            attributes[attribute.rta_type] = {start + place + sizeof attribute, attribute.rta_len - sizeof attribute};
        }
        place += RTA_ALIGN(attribute.rta_len);
    }
    return attributes;
}

// Hands each message of a table to visit. What cannot be asked for is an empty table.
template <typename Header, typename Visit>
void dump(SD_UINT16 type, const Header &header, Visit &&visit)
{
    const Descriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE));
    struct {
        nlmsghdr message;
        Header header;
    } request{};
    request.message.nlmsg_len = sizeof request;
    request.message.nlmsg_type = type;
    request.message.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    request.header = header;
    if (!socket || send(socket.number(), &request, sizeof request, MSG_NOSIGNAL) < 0) {
        return;
    }
    std::vector<SD_UINT32> buffer(32768 / sizeof(SD_UINT32)); // as large as the kernel's dumps are at most
    for (;;) {
        const ssize_t received = recv(socket.number(), buffer.data(), buffer.size() * sizeof(SD_UINT32), 0);
        if (received <= 0) {
            return;
        }
        auto left = static_cast<std::size_t>(received);
        const auto *place = reinterpret_cast<const SD_UINT8 *>(buffer.data());
        while (left >= sizeof(nlmsghdr)) {
            const auto &message = *reinterpret_cast<const nlmsghdr *>(place);
            if (message.nlmsg_len < sizeof message || message.nlmsg_len > left || message.nlmsg_type == NLMSG_DONE
                || message.nlmsg_type == NLMSG_ERROR) {
                return;
            }
            if (message.nlmsg_len >= NLMSG_LENGTH(sizeof(Header))) {
                visit(message, *reinterpret_cast<const Header *>(place + NLMSG_HDRLEN));
            }
            const std::size_t step = std::min<std::size_t>(NLMSG_ALIGN(message.nlmsg_len), left);
            place += step;
            left -= step;
        }
    }
}

ISCSIIPADDR addressOf(Attribute bytes)
{
    ISCSIIPADDR address{};
    std::copy_n(bytes.begin(), std::min(bytes.size(), sizeof address.IPAddress), address.IPAddress);
    address.Type = bytes.size() == 4 ? ADDRESS_IPV4 : ADDRESS_IPV6;
    return address;
}

} // namespace

std::vector<KernelNeighbour> readNeighbours(unsigned interfaceIndex)
{
    constexpr unsigned known = NUD_REACHABLE | NUD_STALE | NUD_DELAY | NUD_PROBE | NUD_PERMANENT;
    const auto ticks = static_cast<SD_UINT32>(std::max(sysconf(_SC_CLK_TCK), 1L));
    std::vector<KernelNeighbour> neighbours;
    for (const int family : {AF_INET, AF_INET6}) {
        ndmsg wanted{};
        wanted.ndm_family = static_cast<SD_UINT8>(family);
        const auto first = static_cast<std::ptrdiff_t>(neighbours.size());
        dump(RTM_GETNEIGH, wanted, [&](const nlmsghdr &message, const ndmsg &found) {
            const auto attributes = attributesOf<ndmsg, NDA_MAX + 1>(message);
            KernelNeighbour neighbour{};
            if (found.ndm_ifindex != static_cast<int>(interfaceIndex) || found.ndm_family != family
                || (found.ndm_state & known) == 0 || attributes[NDA_LLADDR].size() != sizeof neighbour.mac) {
                return;
            }
            neighbour.address = addressOf(attributes[NDA_DST]);
            std::copy_n(attributes[NDA_LLADDR].begin(), sizeof neighbour.mac, neighbour.mac);
            nda_cacheinfo times{};
            if (attributes[NDA_CACHEINFO].size() >= sizeof times) {
                std::memcpy(&times, attributes[NDA_CACHEINFO].data(), sizeof times);
                neighbour.seconds = times.ndm_confirmed / ticks;
            }
            neighbours.push_back(neighbour);
        });
        std::stable_sort(neighbours.begin() + first, neighbours.end(),
                         [](const auto &one, const auto &other) { return one.seconds > other.seconds; });
    }
    return neighbours;
}

std::optional<ISCSIIPADDR> readGateway(unsigned interfaceIndex, int family)
{
    rtmsg wanted{};
    wanted.rtm_family = static_cast<unsigned char>(family);
    std::optional<ISCSIIPADDR> gateway;
    dump(RTM_GETROUTE, wanted, [&](const nlmsghdr &message, const rtmsg &found) {
        const auto attributes = attributesOf<rtmsg, RTA_MAX + 1>(message);
        SD_UINT32 output = 0;
        if (attributes[RTA_OIF].size() == sizeof output) {
            std::memcpy(&output, attributes[RTA_OIF].data(), sizeof output);
        }
        const bool isDefault = found.rtm_dst_len == 0 && found.rtm_type == RTN_UNICAST && found.rtm_family == family;
        if (!gateway && isDefault && output == interfaceIndex && !attributes[RTA_GATEWAY].empty()) {
            gateway = addressOf(attributes[RTA_GATEWAY]);
        }
    });
    return gateway;
}
