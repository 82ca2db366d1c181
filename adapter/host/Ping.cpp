// ICMP echo, see Ping.h. The kernel's ping sockets need no privilege where net.ipv4.ping_group_range allows them; raw
// sockets need CAP_NET_RAW.
#include "Ping.h"

#include "Files.h"
#include "SocketAddress.h"

#include <netinet/in.h>
#include <netinet/ip.h>
#include <netinet/ip_icmp.h>
#include <poll.h>
#include <sys/random.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <span>

namespace
{

constexpr std::size_t ECHO_SIZE = 64; // bytes of an echo with its data
constexpr std::size_t LONGEST_ANSWER = 2048;
constexpr SD_UINT8 ECHO_REQUEST_6 = 128;
constexpr SD_UINT8 ECHO_REPLY_6 = 129;
constexpr std::chrono::milliseconds PATIENCE{1000}; // for one packet

// The beginning of an echo, in both versions of ICMP.
struct EchoHeader {
    SD_UINT8 type;
    SD_UINT8 code;
    SD_UINT16 checksum;
    SD_UINT16 identifier;
    SD_UINT16 sequence;
};
static_assert(sizeof(EchoHeader) == 8);

struct Pinger {
    Descriptor socket;
    bool raw = false; // the kernel gives out the IPv4 header too, and the answers to others
    bool six = false;
    EchoHeader expected{};
};

SD_UINT16 checksumOf(std::span<const SD_UINT8> bytes)
{
    SD_UINT32 sum = 0;
    for (std::size_t place = 0; place + 1 < bytes.size(); place += 2) {
        SD_UINT16 word = 0;
        std::memcpy(&word, &bytes[place], sizeof word);
        sum += word;
    }
    sum = (sum & 0xFFFF) + (sum >> 16);
    return static_cast<SD_UINT16>(~(sum + (sum >> 16)));
}

Descriptor openSocket(int family, int type, int protocol)
{
    return Descriptor(socket(family, type | SOCK_CLOEXEC | SOCK_NONBLOCK, protocol));
}

bool openPinger(Pinger &pinger, const std::string &interfaceName)
{
    const int family = pinger.six ? AF_INET6 : AF_INET;
    const int protocol = pinger.six ? static_cast<int>(IPPROTO_ICMPV6) : static_cast<int>(IPPROTO_ICMP);
    pinger.socket = openSocket(family, SOCK_DGRAM, protocol);
    if (!pinger.socket) {
        pinger.socket = openSocket(family, SOCK_RAW, protocol);
        pinger.raw = true;
    }
    return pinger.socket
           && setsockopt(pinger.socket.number(), SOL_SOCKET, SO_BINDTODEVICE, interfaceName.c_str(),
                         static_cast<socklen_t>(interfaceName.size() + 1))
                  == 0;
}

bool sendEcho(Pinger &pinger, const SocketAddress &to, SD_UINT16 sequence)
{
    std::array<SD_UINT8, ECHO_SIZE> packet{};
    EchoHeader &echo = pinger.expected;
    echo.type = pinger.six ? ECHO_REQUEST_6 : static_cast<SD_UINT8>(ICMP_ECHO);
    echo.sequence = htons(sequence);
    echo.checksum = 0;
    std::memcpy(packet.data(), &echo, sizeof echo);
    if (!pinger.six) {
        echo.checksum = checksumOf(packet); // that of ICMPv6 is the kernel's to make
        std::memcpy(packet.data(), &echo, sizeof echo);
    }
    return sendto(pinger.socket.number(), packet.data(), packet.size(), MSG_NOSIGNAL, to.get(), to.size)
           == static_cast<ssize_t>(packet.size());
}

bool isAnswer(const Pinger &pinger, std::span<const SD_UINT8> packet)
{
    if (pinger.raw && !pinger.six && !packet.empty()) {
        const std::size_t header = std::size_t{4} * (packet[0] & 0x0FU);
        packet = packet.subspan(std::min(header, packet.size()));
    }
    EchoHeader echo{};
    if (packet.size() < sizeof echo) {
        return false;
    }
    std::memcpy(&echo, packet.data(), sizeof echo);
    // A ping socket has an identifier of the kernel's choice and gets no answers but its own.
    return echo.type == (pinger.six ? ECHO_REPLY_6 : static_cast<SD_UINT8>(ICMP_ECHOREPLY))
           && echo.sequence == pinger.expected.sequence
           && (!pinger.raw || echo.identifier == pinger.expected.identifier);
}

bool awaitAnswer(const Pinger &pinger, Deadline deadline)
{
    std::array<SD_UINT8, LONGEST_ANSWER> packet{};
    for (int left = millisecondsLeft(deadline); left > 0; left = millisecondsLeft(deadline)) {
        pollfd wait{pinger.socket.number(), POLLIN, 0};
        if (poll(&wait, 1, left) <= 0) {
            continue;
        }
        const ssize_t received = recv(pinger.socket.number(), packet.data(), packet.size(), 0);
        if (received < 0 && errno != EAGAIN && errno != EINTR) {
            return false; // told that it cannot be reached
        }
        if (received > 0 && isAnswer(pinger, std::span(packet).first(static_cast<std::size_t>(received)))) {
            return true;
        }
    }
    return false;
}

} // namespace

PingResult sendPings(const ISCSIIPADDR &address, SD_UINT32 packets, const std::string &interfaceName, Deadline deadline)
{
    const SocketAddress to = socketAddress(address, 0, interfaceName);
    Pinger pinger;
    pinger.six = to.family() == AF_INET6;
    if (!openPinger(pinger, interfaceName)) {
        return PingResult::notSupported;
    }
    if (getrandom(&pinger.expected.identifier, sizeof pinger.expected.identifier, 0) < 0) {
        return PingResult::notSupported;
    }
    bool answered = false;
    for (SD_UINT32 packet = 0; packet < packets && millisecondsLeft(deadline) > 0; ++packet) {
        const Deadline next = std::min(deadline, deadlineIn(PATIENCE));
        answered |= sendEcho(pinger, to, static_cast<SD_UINT16>(packet)) && awaitAnswer(pinger, next);
    }
    return answered ? PingResult::answered : PingResult::silent;
}
