// An iSCSI session by libiscsi, see Session.h.
#include "Session.h"

#include "ScsiStandard.h"
#include "SocketAddress.h"

#include <iscsi/iscsi.h>
#include <iscsi/scsi-lowlevel.h>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

namespace
{

constexpr std::size_t HEADER_SIZE = 48; // bytes of a PDU without data
constexpr SD_UINT8 OPCODE_MASK = 0x3F;
constexpr SD_UINT8 LOGIN_RESPONSE = 0x23;
constexpr std::size_t LONGEST_LOGIN_ANSWER = 8192; // bytes of data that the standard allows while logging in
constexpr std::size_t SENSE_PREFIX = 2;            // bytes that tell the length of the sense data

constexpr SD_UINT16 LOGIN_AUTHENTICATION_FAILED = 0x0201;
constexpr SD_UINT16 LOGIN_NOT_AUTHORISED = 0x0202;
constexpr SD_UINT16 LOGIN_TARGET_NOT_FOUND = 0x0203;

constexpr SD_UINT64 ALL = ~SD_UINT64{0};
constexpr SD_UINT64 DISCOVERY_REQUEST = 16; // bytes of the text "SendTargets=All" with its terminator

// A target that floods the connection is met in small portions, so that deadlines hold, and is not answered for long.
constexpr int RECEIVE_BUFFER = 16384;
constexpr int MOST_UNSENT = 64;

constexpr short CLOSED_EVENTS = POLLRDHUP | POLLHUP | POLLERR;

std::size_t padded(std::size_t bytes)
{
    return (bytes + 3) & ~std::size_t{3};
}

bool isRecovered(const std::vector<SD_UINT8> &sense)
{
    return sense.size() > 2 && (sense[2] & 0x0F) == SENSE_RECOVERED_ERROR;
}

} // namespace

void Session::FreeTask::operator()(scsi_task *task) const
{
    scsi_free_scsi_task(task);
}

void Session::DestroyContext::operator()(iscsi_context *context) const
{
    forgetSecrets(context);
    iscsi_destroy_context(context);
}

Session::Session(const SessionParameters &parameters)
{
    if (!canBeHandedOver(parameters.own) || !canBeHandedOver(parameters.targets)) {
        end(Reach::authentication);
        return;
    }
    context_.reset(iscsi_create_context(parameters.initiatorName.c_str()));
    if (!context_) {
        throw std::bad_alloc();
    }
    configure(context_.get(), parameters);
    if (iscsi_connect_async(context_.get(), parameters.portal.c_str(), onConnected, this) != 0) {
        end(Reach::unreachable);
        return;
    }
    (void)setsockopt(iscsi_get_fd(context_.get()), SOL_SOCKET, SO_RCVBUF, &RECEIVE_BUFFER, sizeof RECEIVE_BUFFER);
}

Session::~Session()
{
    phase_ = Phase::ended; // what libiscsi calls back from here on does not matter
}

bool Session::pending() const
{
    return phase_ == Phase::connecting || phase_ == Phase::loggingIn || phase_ == Phase::working;
}

pollfd Session::waitsFor() const
{
    return {iscsi_get_fd(context_.get()), static_cast<short>(iscsi_which_events(context_.get()) | POLLRDHUP), 0};
}

void Session::serve(short ready)
{
    if (phase_ == Phase::connecting && connectionFailed()) {
        end(Reach::unreachable);
        return;
    }
    if (phase_ == Phase::loggingIn && (ready & (POLLIN | CLOSED_EVENTS)) != 0 && !loginAnswerArrived(ready)) {
        return;
    }
    const bool failed =
        iscsi_service(context_.get(), ready & ~POLLRDHUP) != 0 || iscsi_out_queue_length(context_.get()) > MOST_UNSENT;
    if (failed && phase_ != Phase::ended) {
        end(phase_ == Phase::loggingIn ? reachOfFailedLogin() : Reach::unreachable);
    }
    if (phase_ == Phase::ended) {
        context_.reset(); // not earlier: libiscsi may have been the caller of what ended the session
    }
}

void Session::expire()
{
    // Without a connection nothing has answered at all.
    end(phase_ == Phase::connecting ? Reach::unreachable : Reach::timeout);
    context_.reset();
}

bool Session::usable() const
{
    return phase_ == Phase::idle;
}

const LoginResult &Session::login() const
{
    return login_;
}

void Session::catchUp()
{
    for (int round = 0; phase_ == Phase::idle; ++round) {
        pollfd arrived{iscsi_get_fd(context_.get()), POLLIN | POLLRDHUP, 0};
        if (poll(&arrived, 1, 0) <= 0) {
            return;
        }
        if ((arrived.revents & CLOSED_EVENTS) != 0 || round == MOST_UNSENT) {
            end(Reach::unreachable);
            context_.reset();
            return;
        }
        serve(arrived.revents);
    }
}

void Session::beginCommand(SD_UINT16 lun, std::span<const SD_UINT8> command, std::size_t allocation)
{
    result_ = {};
    data_.assign(allocation, 0);
    std::array<unsigned char, SCSI_CDB_MAX_SIZE> copy{};
    const std::size_t length = std::min(command.size(), copy.size());
    std::copy_n(command.begin(), length, copy.begin());
    const int expected = static_cast<int>(allocation);
    task_.reset(scsi_create_task(static_cast<int>(length), copy.data(), expected == 0 ? SCSI_XFER_NONE : SCSI_XFER_READ,
                                 expected));
    if (!task_) {
        throw std::bad_alloc();
    }
    // With a buffer of ours libiscsi takes no byte beyond it, whatever the target sends.
    if (expected != 0 && scsi_task_add_data_in_buffer(task_.get(), expected, data_.data()) != 0) {
        throw std::bad_alloc();
    }
    phase_ = Phase::working;
    if (iscsi_scsi_command_async(context_.get(), lun, task_.get(), onCommand, nullptr, this) != 0) {
        end(Reach::unreachable);
        context_.reset();
        return;
    }
    serve(POLLOUT); // there is nearly always room for a command
}

void Session::beginDiscovery()
{
    phase_ = Phase::working;
    if (iscsi_discovery_async(context_.get(), onDiscovered, this) != 0) {
        end(Reach::unreachable);
        context_.reset();
    }
}

void Session::beginLogout()
{
    phase_ = Phase::working;
    if (iscsi_logout_async(context_.get(), onLoggedOut, this) != 0) {
        end(Reach::unreachable);
        context_.reset();
    }
}

CommandResult Session::takeResult()
{
    result_.login = login_;
    return std::move(result_);
}

std::vector<OfferedTarget> Session::takeTargets()
{
    return std::move(targets_);
}

Traffic Session::takeTraffic()
{
    return std::exchange(traffic_, {});
}

void Session::onConnected(iscsi_context *context, int status, void * /*data*/, void *session)
{
    Session &self = *static_cast<Session *>(session);
    if (self.phase_ != Phase::connecting) {
        if (self.phase_ != Phase::ended) {
            self.end(Reach::unreachable); // called once more when the connection is lost
        }
        return;
    }
    if (status != SCSI_STATUS_GOOD) {
        self.end(Reach::unreachable);
        return;
    }
    self.phase_ = Phase::loggingIn;
    self.setLowWater(HEADER_SIZE);
    if (iscsi_login_async(context, onLoggedIn, session) != 0) {
        self.end(Reach::refused);
    }
}

void Session::onLoggedIn(iscsi_context *context, int status, void * /*data*/, void *session)
{
    Session &self = *static_cast<Session *>(session);
    if (self.phase_ != Phase::loggingIn) {
        return;
    }
    if (status != SCSI_STATUS_GOOD) {
        self.end(self.reachOfFailedLogin());
        return;
    }
    forgetSecrets(context);
    self.setLowWater(1);
    self.count(ALL, ALL); // its PDUs were counted one by one
    self.phase_ = Phase::idle;
    self.login_.reach = Reach::session;
}

void Session::onCommand(iscsi_context * /*context*/, int status, void * /*data*/, void *session)
{
    Session &self = *static_cast<Session *>(session);
    if (self.phase_ != Phase::working) {
        return;
    }
    if (status < 0 || status > 0xFF) { // cancelled, or no status of the SCSI standards
        self.end(Reach::unreachable);
        return;
    }
    const scsi_task &task = *self.task_;
    std::size_t arrived = self.data_.size();
    if (task.residual_status == SCSI_RESIDUAL_UNDERFLOW) {
        arrived -= std::min(arrived, task.residual);
    }
    self.result_.status = static_cast<SD_UINT8>(status);
    // The data segment of the response: a length, and the sense data. With it a command has data only when the target
    // says that it succeeded all the same.
    const std::span<const SD_UINT8> segment(task.datain.data, static_cast<std::size_t>(std::max(task.datain.size, 0)));
    if (status == SCSI_CHECK_CONDITION && segment.size() > SENSE_PREFIX) {
        const std::size_t told = static_cast<std::size_t>(segment[0] << 8 | segment[1]);
        const auto sense = segment.subspan(SENSE_PREFIX, std::min(told, segment.size() - SENSE_PREFIX));
        self.result_.sense.assign(sense.begin(), sense.end());
    }
    if (status != SCSI_GOOD && !isRecovered(self.result_.sense)) {
        arrived = 0;
    }
    self.data_.resize(arrived);
    self.result_.data = std::move(self.data_);
    self.phase_ = Phase::idle;
    self.count(0, padded(self.result_.data.size()) + padded(segment.size()));
}

void Session::onDiscovered(iscsi_context * /*context*/, int status, void *data, void *session)
{
    Session &self = *static_cast<Session *>(session);
    if (self.phase_ != Phase::working) {
        return;
    }
    if (status != SCSI_STATUS_GOOD) {
        self.end(Reach::unreachable);
        return;
    }
    for (const auto *target = static_cast<const iscsi_discovery_address *>(data); target != nullptr;
         target = target->next) {
        OfferedTarget found{target->target_name, {}};
        for (const iscsi_target_portal *portal = target->portals; portal != nullptr; portal = portal->next) {
            if (auto address = parsePortal(portal->portal, found.name)) {
                found.portals.push_back(std::move(*address));
            }
        }
        std::ranges::reverse(found.portals);
        self.targets_.push_back(std::move(found));
    }
    std::ranges::reverse(self.targets_); // libiscsi puts whatever it reads at the head of its lists
    self.phase_ = Phase::idle;
    const SD_UINT64 before = self.traffic_.sentPdus;
    self.count(DISCOVERY_REQUEST, ALL);
    self.traffic_.receivedPdus += self.traffic_.sentPdus - before; // each piece of the list is asked for
}

void Session::onLoggedOut(iscsi_context * /*context*/, int /*status*/, void * /*data*/, void *session)
{
    Session &self = *static_cast<Session *>(session);
    if (self.phase_ == Phase::working) {
        self.end(Reach::unreachable);
    }
}

bool Session::connectionFailed()
{
    int error = 0;
    socklen_t size = sizeof error;
    // Asking clears the error, so libiscsi is not to be asked any more.
    return getsockopt(iscsi_get_fd(context_.get()), SOL_SOCKET, SO_ERROR, &error, &size) != 0 || error != 0;
}

// An answer is given to libiscsi when it is whole and of a kind that can be an answer; its status is noted on the way.
// Until it is whole poll(2) stays silent.
bool Session::loginAnswerArrived(short ready)
{
    const int socket = iscsi_get_fd(context_.get());
    std::array<SD_UINT8, HEADER_SIZE> header{};
    const ssize_t peeked = recv(socket, header.data(), header.size(), MSG_PEEK | MSG_DONTWAIT);
    if (peeked < 0 && (errno == EAGAIN || errno == EINTR)) {
        return false;
    }
    std::size_t expected = HEADER_SIZE;
    if (peeked == static_cast<ssize_t>(HEADER_SIZE)) {
        const std::size_t length = static_cast<std::size_t>(header[5] << 16 | header[6] << 8 | header[7]);
        if ((header[0] & OPCODE_MASK) != LOGIN_RESPONSE || header[4] != 0 || length > LONGEST_LOGIN_ANSWER) {
            end(Reach::refused);
            return false;
        }
        expected += padded(length);
    }
    int arrived = 0;
    if (peeked <= 0 || ioctl(socket, FIONREAD, &arrived) != 0) {
        end(Reach::refused); // closed without an answer
        return false;
    }
    if (static_cast<std::size_t>(arrived) < expected) {
        if ((ready & CLOSED_EVENTS) != 0) {
            end(Reach::refused);
        } else {
            setLowWater(expected);
        }
        return false;
    }
    setLowWater(HEADER_SIZE);
    login_.status = static_cast<SD_UINT16>(header[36] << 8 | header[37]);
    ++traffic_.sentPdus; // logging in is question and answer
    ++traffic_.receivedPdus;
    return true;
}

Reach Session::reachOfFailedLogin() const
{
    switch (login_.status) {
    case LOGIN_TARGET_NOT_FOUND:
        return Reach::unknownTarget;
    case LOGIN_AUTHENTICATION_FAILED:
    case LOGIN_NOT_AUTHORISED:
        return Reach::authentication;
    case 0:
        // What libiscsi itself found wrong: with the target's proof, or with something else.
        return std::strstr(iscsi_get_error(context_.get()), "CHAP") != nullptr ? Reach::authentication : Reach::refused;
    default:
        return Reach::refused;
    }
}

// Counts what went over the wire since the last time: bytes as TCP carried them, and a PDU for each header's length
// that is no payload.
void Session::count(SD_UINT64 sentPayload, SD_UINT64 receivedPayload)
{
    tcp_info connection{};
    socklen_t size = sizeof connection;
    if (getsockopt(iscsi_get_fd(context_.get()), IPPROTO_TCP, TCP_INFO, &connection, &size) != 0) {
        return;
    }
    const SD_UINT64 sent = connection.tcpi_bytes_sent - connection.tcpi_bytes_retrans - sentBefore_;
    // The end of a connection is counted as a byte; whatever iSCSI sends comes in words.
    const SD_UINT64 received = (connection.tcpi_bytes_received & ~SD_UINT64{3}) - receivedBefore_;
    sentBefore_ += sent;
    receivedBefore_ += received;
    traffic_.sentBytes += sent;
    traffic_.receivedBytes += received;
    traffic_.sentPdus += (sent - std::min(sent, sentPayload)) / HEADER_SIZE;
    traffic_.receivedPdus += (received - std::min(received, receivedPayload)) / HEADER_SIZE;
}

// How many bytes have to be there before poll(2) calls the connection readable.
void Session::setLowWater(std::size_t bytes)
{
    const int number = static_cast<int>(bytes);
    (void)setsockopt(iscsi_get_fd(context_.get()), SOL_SOCKET, SO_RCVLOWAT, &number, sizeof number);
}

void Session::end(Reach reach)
{
    if (phase_ == Phase::ended) {
        return;
    }
    const bool loggingIn = phase_ == Phase::loggingIn;
    phase_ = Phase::ended;
    login_.reach = reach;
    if (context_) {
        loggingIn ? count(ALL, ALL) : count(0, 0);
    }
}

unsigned libiscsiVersion()
{
    return LIBISCSI_API_VERSION;
}

void serveUntil(std::span<const std::unique_ptr<Session>> sessions, Deadline deadline)
{
    std::vector<Session *> pending;
    std::vector<pollfd> waits;
    for (;;) {
        pending.clear();
        waits.clear();
        for (const auto &session : sessions) {
            if (session->pending()) {
                pending.push_back(session.get());
                waits.push_back(session->waitsFor());
            }
        }
        if (pending.empty()) {
            return;
        }
        const int left = millisecondsLeft(deadline);
        if (left > 0) {
            poll(waits.data(), waits.size(), left);
        }
        for (std::size_t number = 0; number < pending.size(); ++number) {
            if (left == 0) {
                pending[number]->expire();
            } else if (waits[number].revents != 0) {
                pending[number]->serve(waits[number].revents);
            }
        }
    }
}

void serveUntil(const std::unique_ptr<Session> &session, Deadline deadline)
{
    serveUntil({&session, 1}, deadline);
}
