// Dumps of rtnetlink tables, see Netlink.h.
#include "Netlink.h"

#include "Fields.h"
#include "Files.h"

#include <linux/if_addr.h>
#include <linux/if_link.h>
#include <linux/neighbour.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <utility>

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

template <typename Value>
Value valueOf(Attribute bytes)
{
    Value value{};
    std::memcpy(&value, bytes.data(), std::min(bytes.size(), sizeof value));
    return value;
}

MacAddress macOf(Attribute bytes)
{
    return bytes.size() == sizeof(MacAddress) ? valueOf<MacAddress>(bytes) : MacAddress{};
}

} // namespace

std::vector<KernelLink> readLinks()
{
    std::vector<KernelLink> links;
    dump(RTM_GETLINK, ifinfomsg{}, [&](const nlmsghdr &message, const ifinfomsg &found) {
        const auto attributes = attributesOf<ifinfomsg, IFLA_MAX + 1>(message);
        KernelLink link{};
        link.index = static_cast<unsigned>(found.ifi_index);
        const Attribute name = attributes[IFLA_IFNAME];
        link.name.assign(name.begin(), std::ranges::find(name, SD_UINT8{0}));
        link.mac = macOf(attributes[IFLA_ADDRESS]);
        link.loopback = (found.ifi_flags & IFF_LOOPBACK) != 0;
        const auto counted = valueOf<rtnl_link_stats64>(attributes[IFLA_STATS64]);
        link.counters.MACTxFramesCount = counted.tx_packets;
        link.counters.MACTxBytesCount = counted.tx_bytes;
        link.counters.MACRxFramesCount = counted.rx_packets;
        link.counters.MACRxBytesCount = counted.rx_bytes;
        link.counters.MACCRCErrorCount = counted.rx_crc_errors;
        link.counters.MACEncodingErrorCount = counted.rx_frame_errors;
        links.push_back(std::move(link));
    });
    return links;
}

std::vector<KernelAddress> readAddresses(unsigned link)
{
    std::vector<KernelAddress> addresses;
    for (const int family : {AF_INET, AF_INET6}) {
        ifaddrmsg wanted{};
        wanted.ifa_family = static_cast<SD_UINT8>(family);
        dump(RTM_GETADDR, wanted, [&](const nlmsghdr &message, const ifaddrmsg &found) {
            if (found.ifa_index != link || found.ifa_family != family) {
                return;
            }
            const auto attributes = attributesOf<ifaddrmsg, IFA_MAX + 1>(message);
            const Attribute own = attributes[attributes[IFA_LOCAL].empty() ? IFA_ADDRESS : IFA_LOCAL];
            addresses.push_back({addressOf(own), found.ifa_prefixlen, (found.ifa_flags & IFA_F_PERMANENT) == 0,
                                 found.ifa_scope == RT_SCOPE_UNIVERSE});
        });
    }
    return addresses;
}

std::vector<KernelNeighbour> readNeighbours(unsigned link)
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
            if (found.ndm_ifindex == static_cast<int>(link) && found.ndm_family == family
                && (found.ndm_state & known) != 0 && attributes[NDA_LLADDR].size() == sizeof(MacAddress)) {
                const auto times = valueOf<nda_cacheinfo>(attributes[NDA_CACHEINFO]);
                neighbours.push_back(
                    {addressOf(attributes[NDA_DST]), macOf(attributes[NDA_LLADDR]), times.ndm_confirmed / ticks});
            }
        });
        std::stable_sort(neighbours.begin() + first, neighbours.end(),
                         [](const auto &one, const auto &other) { return one.seconds > other.seconds; });
    }
    return neighbours;
}

std::optional<ISCSIIPADDR> readGateway(unsigned link, int family)
{
    rtmsg wanted{};
    wanted.rtm_family = static_cast<SD_UINT8>(family);
    std::optional<ISCSIIPADDR> gateway;
    dump(RTM_GETROUTE, wanted, [&](const nlmsghdr &message, const rtmsg &found) {
        const auto attributes = attributesOf<rtmsg, RTA_MAX + 1>(message);
        const bool isDefault = found.rtm_dst_len == 0 && found.rtm_type == RTN_UNICAST && found.rtm_family == family;
        if (!gateway && isDefault && valueOf<SD_UINT32>(attributes[RTA_OIF]) == link
            && !attributes[RTA_GATEWAY].empty()) {
            gateway = addressOf(attributes[RTA_GATEWAY]);
        }
    });
    return gateway;
}
