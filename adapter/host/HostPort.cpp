// The port of the host adapter, see HostPort.h.
#include "HostPort.h"

#include "Device.h"
#include "Fields.h"
#include "HostInventory.h"
#include "IsnsClient.h"
#include "Netlink.h"
#include "Ping.h"
#include "ProtocolCounters.h"

#include <net/if.h>
#include <sys/socket.h>

#include <algorithm>
#include <fstream>
#include <limits>
#include <sstream>
#include <utility>

namespace
{

// The network mask of an IPv4 address; that of an IPv6 one likewise, over 128 bits.
ISCSIIPADDR maskOf(unsigned prefix)
{
    ISCSIIPADDR mask{};
    for (unsigned bit = 0; bit < std::min<unsigned>(prefix, 8 * sizeof mask.IPAddress); ++bit) {
        mask.IPAddress[bit / 8] = static_cast<SD_UINT8>(mask.IPAddress[bit / 8] | 0x80U >> bit % 8);
    }
    setAddressType(mask);
    return mask;
}

// The name servers that the system asks, as far as they are given by address.
std::vector<ISCSIIPADDR> nameServers()
{
    std::vector<ISCSIIPADDR> servers;
    std::ifstream file("/etc/resolv.conf");
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string keyword;
        std::string address;
        if (words >> keyword >> address && keyword == "nameserver") {
            servers.push_back(makeAddress(address));
        }
    }
    std::erase_if(servers, isZero);
    return servers;
}

} // namespace

HostPort::HostPort(const AdapterModel &model, PortObserver &observer)
    : interfaceName_(model.deviceName), observer_(observer), loop_(std::make_unique<SessionLoop>())
{
}

HostPort::~HostPort()
{
    loop_.reset();
    HostPort::logoutAll();
}

bool HostPort::linkUp()
{
    return isRunning(interfaceName_);
}

std::optional<HostAddresses> HostPort::addresses()
{
    HostAddresses found;
    const unsigned link = if_nametoindex(interfaceName_.c_str());
    std::vector<KernelAddress> own = readAddresses(link);
    // What reaches beyond the link comes first, then IPv4.
    std::ranges::stable_sort(own, std::greater(), &KernelAddress::global);
    if (!own.empty()) {
        const KernelAddress &first = own.front();
        found.address = first.address;
        found.subnetMask = maskOf(first.prefix);
        found.dhcp = first.dynamic;
        const int family = first.address.Type == ADDRESS_IPV4 ? AF_INET : AF_INET6;
        found.gateway = readGateway(link, family).value_or(ISCSIIPADDR{});
    }
    if (own.size() > 1) {
        found.secondaryAddress = own[1].address;
    }
    const std::vector<ISCSIIPADDR> servers = nameServers();
    found.primaryDns = !servers.empty() ? servers[0] : ISCSIIPADDR{};
    found.secondaryDns = servers.size() > 1 ? servers[1] : ISCSIIPADDR{};
    return found;
}

bool HostPort::takesImages() const
{
    return false;
}

HBAPORTSTATISCSI HostPort::counted()
{
    HBAPORTSTATISCSI counters = readProtocolCounters();
    const std::vector<KernelLink> links = readLinks();
    const auto link = std::ranges::find(links, interfaceName_, &KernelLink::name);
    if (link != links.end()) {
        add(counters, link->counters);
    }
    return counters;
}

std::optional<std::vector<ARPTABLE>> HostPort::neighbours()
{
    std::vector<ARPTABLE> table;
    for (const KernelNeighbour &neighbour : readNeighbours(if_nametoindex(interfaceName_.c_str()))) {
        ARPTABLE entry{};
        entry.ipAddr = neighbour.address;
        std::ranges::copy(neighbour.mac, entry.macAddr);
        entry.valid = 1;
        entry.time_in =
            static_cast<SD_UINT8>(std::min<SD_UINT32>(neighbour.seconds / 60, std::numeric_limits<SD_UINT8>::max()));
        table.push_back(entry);
    }
    return table;
}

std::vector<std::string> HostPort::report()
{
    std::vector<std::string> lines;
    const Device device = describeDevice(interfaceName_);
    lines.push_back("interface: " + interfaceName_ + " (" + device.model + ")");
    lines.push_back("driver: " + device.driver + " " + device.driverVersion + " at " + device.busAddress);
    for (const KernelAddress &own : readAddresses(if_nametoindex(interfaceName_.c_str()))) {
        lines.push_back("interface address: " + toText(own.address) + "/" + std::to_string(own.prefix));
    }
    lines.push_back("libiscsi: interface version " + std::to_string(libiscsiVersion()));
    const std::lock_guard guard(mutex_);
    for (const auto &[index, session] : sessions_) {
        lines.push_back("session of entry " + std::to_string(index) + ": "
                        + (session->loggedIn() ? "logged in to " : "none with ") + session->request().target.name
                        + " at " + toText(session->request().target.address));
    }
    return lines;
}

PingResult HostPort::ping(const PingRequest &request)
{
    return sendPings(request.address, request.packets, interfaceName_, deadlineIn(request.deadline));
}

DiscoveryResult HostPort::discover(const SessionRequest &request)
{
    const Deadline deadline = deadlineIn(request.deadline);
    SessionRequest portal = request;
    portal.target.name.clear();
    std::vector<std::unique_ptr<Session>> sessions;
    sessions.push_back(std::make_unique<Session>(parametersOf(portal, interfaceName_)));
    Session &session = *sessions.front();
    serveUntil(sessions, deadline);
    if (session.usable()) {
        session.beginDiscovery();
        serveUntil(sessions, deadline);
    }
    DiscoveryResult result{session.login(), "", session.takeTargets()};
    logOut(std::move(sessions), observer_);
    return result;
}

void HostPort::login(const SessionRequest &request, LoginDone done)
{
    const auto session = sessionFor(request);
    std::vector<LoginDone> dones;
    dones.push_back(std::move(done));
    session->announceLogin(std::move(dones));
    loop_->add({[session] { return session->beginLogin(); }, request.deadline,
                [session](std::unique_ptr<Session> ended) {
                    session->endLogin(std::move(ended));
                }});
}

void HostPort::logout(SD_UINT32 index)
{
    std::vector<std::shared_ptr<EntrySession>> ending;
    {
        const std::lock_guard guard(mutex_);
        if (const auto found = sessions_.find(index); found != sessions_.end()) {
            ending.push_back(std::move(found->second));
            sessions_.erase(found);
        }
    }
    endAll(ending);
}

void HostPort::logoutAll()
{
    std::vector<std::shared_ptr<EntrySession>> ending;
    {
        const std::lock_guard guard(mutex_);
        for (auto &[index, session] : sessions_) {
            ending.push_back(std::move(session));
        }
        sessions_.clear();
    }
    endAll(ending);
}

CommandResult HostPort::execute(const SessionRequest &request, SD_UINT16 lun, std::span<const SD_UINT8> command,
                                std::size_t allocationLength)
{
    return sessionFor(request)->execute(lun, command, allocationLength);
}

IsnsResult HostPort::queryIsns(const ISCSIIPADDR &server, const std::string &initiatorName,
                               std::chrono::milliseconds deadline)
{
    return queryIsnsServer(server, initiatorName.empty() ? hostInitiatorName() : initiatorName, interfaceName_,
                           deadlineIn(deadline));
}

// The session of the request's entry. One that leads elsewhere is ended; who waits for it is told of the new one.
std::shared_ptr<EntrySession> HostPort::sessionFor(const SessionRequest &request)
{
    std::shared_ptr<EntrySession> ending;
    std::shared_ptr<EntrySession> session;
    {
        const std::lock_guard guard(mutex_);
        std::shared_ptr<EntrySession> &place = sessions_[request.index];
        if (place && place->serves(request)) {
            return place;
        }
        ending = std::exchange(place, std::make_shared<EntrySession>(request, interfaceName_, observer_));
        session = place;
    }
    if (ending) {
        auto [left, done] = ending->retire();
        if (!done.empty()) {
            session->announceLogin(std::move(done));
        }
        if (left) {
            // In the background: who writes an entry does not wait for the network.
            const auto leaving = std::make_shared<std::unique_ptr<Session>>(std::move(left));
            loop_->add({[leaving] {
                            (*leaving)->beginLogout();
                            return std::move(*leaving);
                        },
                        LOGOUT_TIME,
                        [](const std::unique_ptr<Session> &) {
                        }});
        }
    }
    return session;
}

void HostPort::endAll(const std::vector<std::shared_ptr<EntrySession>> &ending)
{
    std::vector<std::unique_ptr<Session>> sessions;
    for (const auto &session : ending) {
        auto [left, done] = session->retire();
        if (left) {
            sessions.push_back(std::move(left));
        }
        for (const LoginDone &tell : done) {
            tell({});
        }
    }
    logOut(std::move(sessions), observer_);
}

std::unique_ptr<TargetPort> openPort(const AdapterModel &model, PortObserver &observer)
{
    return std::make_unique<HostPort>(model, observer);
}
