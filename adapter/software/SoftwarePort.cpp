// The port of a software adapter: it reaches the imagined storage network, at once and without waiting, and counts what
// the packets would have been. Sessions need nothing to be kept: a command finds out anew whether it may.
#include "Disks.h"
#include "Factory.h"
#include "Fields.h"
#include "StorageNetwork.h"
#include "TargetPort.h"

#include <algorithm>
#include <thread>

namespace
{

constexpr SD_UINT64 ISCSI_HEADER = 48; // bytes of a PDU without data
constexpr SD_UINT64 TCP_IP_HEADERS = 40;
constexpr SD_UINT64 FRAME_OVERHEAD = 18;
constexpr SD_UINT64 PING_PACKET = 84;
constexpr SD_UINT64 ISNS_REQUEST = 100;
constexpr SD_UINT64 SEGMENT = 1460;
constexpr SD_UINT16 LOGIN_AUTHENTICATION_FAILED = 0x0201;
constexpr SD_UINT16 LOGIN_TARGET_NOT_FOUND = 0x0203;
constexpr std::chrono::milliseconds SLOW_COMMAND{250};

void countPackets(HBAPORTSTATISCSI &counters, SD_UINT64 out, SD_UINT64 in, SD_UINT64 bytesOut, SD_UINT64 bytesIn)
{
    counters.IPTxPacketsCount += out;
    counters.IPTxBytesCount += bytesOut;
    counters.IPRxPacketsCount += in;
    counters.IPRxBytesCount += bytesIn;
    counters.MACTxFramesCount += out;
    counters.MACTxBytesCount += bytesOut + FRAME_OVERHEAD * out;
    counters.MACRxFramesCount += in;
    counters.MACRxBytesCount += bytesIn + FRAME_OVERHEAD * in;
}

// A request answered by a target: a PDU, a segment and a packet both ways; data is what came in beside the headers.
void countExchange(HBAPORTSTATISCSI &counters, SD_UINT64 data)
{
    const SD_UINT64 in = ISCSI_HEADER + data;
    counters.iSCSITxPDUCount += 1;
    counters.iSCSITxBytesCount += ISCSI_HEADER;
    counters.iSCSIRxPDUCount += 1;
    counters.iSCSIRxBytesCount += in;
    counters.TCPTxSegmentsCount += 1;
    counters.TCPTxBytesCount += ISCSI_HEADER;
    counters.TCPRxSegmentsCount += 1;
    counters.TCPRxBytesCount += in;
    counters.TCPTxACKCount += 1;
    counters.TCPRxACKCount += 1;
    countPackets(counters, 1, 1, ISCSI_HEADER + TCP_IP_HEADERS, in + TCP_IP_HEADERS);
}

bool matches(const std::optional<Credentials> &shown, const Account &account)
{
    return shown && !account.name.empty() && shown->name == account.name
           && std::ranges::equal(shown->secret.bytes(), account.secret,
                                 [](SD_UINT8 one, char other) { return one == static_cast<SD_UINT8>(other); });
}

// A locally administered address that follows from the host's own.
MacAddress macOf(const ISCSIIPADDR &address)
{
    MacAddress mac{0x02, 0x53};
    for (std::size_t byte = 0; byte < sizeof address.IPAddress; ++byte) {
        mac[2 + byte % 4] = static_cast<SD_UINT8>(mac[2 + byte % 4] * 7 + address.IPAddress[byte]);
    }
    return mac;
}

class SoftwarePort : public TargetPort
{
public:
    SoftwarePort(const AdapterModel &model, PortObserver &observer)
        : linkUp_(hasLink(model)), mac_(model.mac), observer_(observer)
    {
    }

    bool linkUp() override
    {
        return linkUp_;
    }
    std::optional<HostAddresses> addresses() override
    {
        return std::nullopt;
    }
    bool takesImages() const override
    {
        return true;
    }
    HBAPORTSTATISCSI counted() override
    {
        return {};
    }
    std::optional<std::vector<ARPTABLE>> neighbours() override
    {
        return std::nullopt;
    }
    std::vector<std::string> report() override
    {
        return {};
    }

    PingResult ping(const PingRequest &request) override
    {
        std::optional<MacAddress> mac;
        if (!isZero(request.address) && sameAddress(request.address, request.own)) {
            mac = mac_;
        } else if (linkUp_ && isHost(request.address)) {
            mac = macOf(request.address);
        }
        const SD_UINT64 answers = mac ? request.packets : 0;
        HBAPORTSTATISCSI more{};
        countPackets(more, request.packets, answers, request.packets * PING_PACKET, answers * PING_PACKET);
        observer_.count(more);
        if (mac) {
            observer_.heardOf(request.address, *mac);
        }
        return mac ? PingResult::answered : PingResult::silent;
    }

    DiscoveryResult discover(const SessionRequest &request) override
    {
        DiscoveryResult result;
        const auto targets = offeredAt(request.target);
        if (targets.empty()) {
            countAttempt(request, result.login, 0);
            return result;
        }
        result.login.reach = Reach::session;
        result.hostName = hostNameOf(request.target.address);
        std::size_t bytes = 0;
        for (const ImaginedTarget &target : targets) {
            result.targets.push_back({target.name, {{request.target.address, ISCSI_PORT, target.name}}});
            bytes += target.name.size();
        }
        countAttempt(request, result.login, bytes);
        return result;
    }

    void login(const SessionRequest &request, LoginDone done) override
    {
        ImaginedTarget target;
        const LoginResult result = reach(request, target);
        countAttempt(request, result, 0);
        done(result);
    }

    void logout(SD_UINT32 /*index*/) override
    {
        if (linkUp_) {
            HBAPORTSTATISCSI more{};
            countExchange(more, 0);
            observer_.count(more);
        }
    }

    void logoutAll() override {}

    CommandResult execute(const SessionRequest &request, SD_UINT16 lun, std::span<const SD_UINT8> command,
                          std::size_t allocationLength) override
    {
        CommandResult result;
        ImaginedTarget target;
        result.login = reach(request, target);
        if (result.login.reach != Reach::session) {
            countAttempt(request, result.login, 0);
            return result;
        }
        if (target.behaviour == Behaviour::slow) {
            std::this_thread::sleep_for(SLOW_COMMAND);
        }
        ScsiAnswer answered = answer(target, lun, command);
        if (target.behaviour == Behaviour::worn && answered.status == SCSI_GOOD) {
            answered.status = SCSI_CHECK_CONDITION;
            answered.sense = senseData(SENSE_RECOVERED_ERROR, ASC_RECOVERED_WITH_RETRIES);
        }
        result.status = answered.status;
        result.data = std::move(answered.data);
        result.data.resize(std::min(result.data.size(), allocationLength));
        result.sense = std::move(answered.sense);
        HBAPORTSTATISCSI more{};
        more.iSCSICompleteIOsCount = 1;
        observer_.count(more);
        countAttempt(request, result.login, result.data.size() + result.sense.size());
        return result;
    }

    IsnsResult queryIsns(const ISCSIIPADDR &server, const std::string & /*initiatorName*/,
                         std::chrono::milliseconds /*deadline*/) override
    {
        auto targets = linkUp_ ? isnsTargetsAt(server) : std::nullopt;
        if (!targets) {
            return {};
        }
        const SD_UINT64 bytes = targets->size() * sizeof(SDM_ISNS_DISCOVERED_TARGET);
        HBAPORTSTATISCSI more{};
        countPackets(more, 1, 1 + bytes / SEGMENT, ISNS_REQUEST, bytes);
        observer_.count(more);
        observer_.heardOf(server, macOf(server));
        return {Reach::session, *std::move(targets)};
    }

private:
    std::vector<ImaginedTarget> offeredAt(const TargetAddress &portal) const
    {
        return linkUp_ && portal.port == ISCSI_PORT ? targetsAt(portal.address) : std::vector<ImaginedTarget>();
    }

    // How far a login gets; target is set when it is there.
    LoginResult reach(const SessionRequest &request, ImaginedTarget &target) const
    {
        const auto targets = offeredAt(request.target);
        if (targets.empty()) {
            return {Reach::unreachable, 0};
        }
        const auto found = std::ranges::find(targets, request.target.name, &ImaginedTarget::name);
        if (found == targets.end()) {
            return {Reach::unknownTarget, LOGIN_TARGET_NOT_FOUND};
        }
        target = *found;
        if (target.chap != nullptr && !matches(request.own, target.chap->initiator)) {
            return {Reach::authentication, LOGIN_AUTHENTICATION_FAILED};
        }
        // The target has nothing against the login; it is the initiator that ends it when the proof fails.
        if (request.targets && (target.chap == nullptr || !matches(request.targets, target.chap->target))) {
            return {Reach::authentication, 0};
        }
        return {Reach::session, 0};
    }

    // Counts what went over the network for an attempt that got this far.
    void countAttempt(const SessionRequest &request, const LoginResult &result, SD_UINT64 data)
    {
        HBAPORTSTATISCSI more{};
        if (result.reach == Reach::unreachable) {
            more.TCPTimerExpiredCount = 1;
        } else {
            countExchange(more, data);
            observer_.heardOf(request.target.address, macOf(request.target.address));
        }
        observer_.count(more);
    }

    const bool linkUp_;
    const MacAddress mac_;
    PortObserver &observer_;
};

} // namespace

std::unique_ptr<TargetPort> openPort(const AdapterModel &model, PortObserver &observer)
{
    return std::make_unique<SoftwarePort>(model, observer);
}
