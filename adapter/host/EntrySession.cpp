// The session of an entry, see EntrySession.h.
#include "EntrySession.h"

#include "Fields.h"
#include "ScsiStandard.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace
{

constexpr SD_UINT8 SENSE_UNIT_ATTENTION = 0x6;

bool isUnitAttention(const CommandResult &result)
{
    return result.status == SCSI_CHECK_CONDITION && result.sense.size() > 2
           && (result.sense[2] & 0x0F) == SENSE_UNIT_ATTENTION;
}

bool same(const std::optional<Credentials> &one, const std::optional<Credentials> &other)
{
    if (!one || !other) {
        return one.has_value() == other.has_value();
    }
    return one->name == other->name && std::ranges::equal(one->secret.bytes(), other->secret.bytes());
}

// Tells what a session has sent and received since the last time.
void countTraffic(Session &session, SD_UINT64 commands, PortObserver &observer)
{
    const Traffic traffic = session.takeTraffic();
    HBAPORTSTATISCSI more{};
    more.iSCSITxPDUCount = traffic.sentPdus;
    more.iSCSITxBytesCount = traffic.sentBytes;
    more.iSCSIRxPDUCount = traffic.receivedPdus;
    more.iSCSIRxBytesCount = traffic.receivedBytes;
    more.iSCSICompleteIOsCount = commands;
    observer.count(more);
}

} // namespace

EntrySession::EntrySession(const SessionRequest &request, const std::string &interfaceName, PortObserver &observer)
    : request_(request), parameters_(parametersOf(request, interfaceName)), observer_(observer)
{
}

bool EntrySession::serves(const SessionRequest &request) const
{
    return sameAddress(request_.target.address, request.target.address) && request_.target.port == request.target.port
           && request_.target.name == request.target.name
           && std::memcmp(&request_.parameters, &request.parameters, sizeof request.parameters) == 0
           && request_.initiatorName == request.initiatorName && request_.initiatorAlias == request.initiatorAlias
           && same(request_.own, request.own) && same(request_.targets, request.targets);
}

bool EntrySession::loggedIn() const
{
    const std::lock_guard guard(mutex_);
    return session_ != nullptr;
}

const SessionRequest &EntrySession::request() const
{
    return request_;
}

void EntrySession::announceLogin(std::vector<LoginDone> done)
{
    const std::lock_guard guard(mutex_);
    announced_ = true;
    std::ranges::move(done, std::back_inserter(done_));
}

std::unique_ptr<Session> EntrySession::beginLogin()
{
    std::unique_ptr<Session> session;
    {
        const std::lock_guard guard(mutex_);
        if (!announced_ || busy_) {
            announced_ = false; // whoever works with the session has logged in, or does
            return nullptr;
        }
        announced_ = false;
        busy_ = true;
        session = std::move(session_);
    }
    if (session) {
        session->catchUp();
    }
    if (session && session->usable()) {
        return session;
    }
    return std::make_unique<Session>(parameters_);
}

void EntrySession::endLogin(std::unique_ptr<Session> session)
{
    LoginResult login;
    if (session) {
        countTraffic(*session, 0, observer_);
        login = session->login();
    }
    giveBack(std::move(session), login);
}

CommandResult EntrySession::execute(SD_UINT16 lun, std::span<const SD_UINT8> command, std::size_t allocationLength)
{
    const Deadline deadline = deadlineIn(request_.deadline);
    CommandResult result;
    std::unique_ptr<Session> session;
    {
        std::unique_lock lock(mutex_);
        const bool waited = busy_;
        if (!changed_.wait_until(lock, deadline, [&] { return !busy_; })) {
            result.login.reach = Reach::timeout;
            return result;
        }
        if (waited && failure_ && !session_) {
            result.login = *failure_; // it was this session's login that was waited for
            return result;
        }
        busy_ = true;
        announced_ = false;
        session = std::move(session_);
    }
    SD_UINT64 commands = 0;
    try {
        if (session) {
            session->catchUp();
        }
        if (!session || !session->usable()) {
            session = std::make_unique<Session>(parameters_);
            serveUntil(session, deadline);
        }
        result.login = session->login();
        const LoginResult login = result.login;
        for (int attempt = 0; attempt < 2 && session->usable(); ++attempt) {
            session->beginCommand(lun, command, allocationLength);
            serveUntil(session, deadline);
            result = session->takeResult();
            commands += session->usable() ? 1 : 0;
            if (!isUnitAttention(result)) {
                break;
            }
        }
        countTraffic(*session, commands, observer_);
        giveBack(std::move(session), login);
    } catch (...) {
        giveBack(nullptr, {});
        throw;
    }
    return result;
}

EntrySession::Remains EntrySession::retire()
{
    const std::lock_guard guard(mutex_);
    retired_ = true;
    Remains remains{std::move(session_), {}};
    if (!busy_) {
        announced_ = false;
        remains.done = std::exchange(done_, {});
    }
    return remains;
}

// login is how the last login went, whatever became of the session since.
void EntrySession::giveBack(std::unique_ptr<Session> session, const LoginResult &login)
{
    std::vector<LoginDone> done;
    {
        const std::lock_guard guard(mutex_);
        busy_ = false;
        failure_ = login.reach == Reach::session ? std::nullopt : std::optional(login);
        if (session && session->usable() && !retired_) {
            session_ = std::move(session);
        }
        done = std::exchange(done_, {});
    }
    changed_.notify_all();
    session.reset();
    for (const LoginDone &tell : done) {
        tell(login);
    }
}

void logOut(std::vector<std::unique_ptr<Session>> sessions, PortObserver &observer)
{
    for (const auto &session : sessions) {
        if (session->usable()) {
            session->catchUp();
        }
        if (session->usable()) {
            session->beginLogout();
        }
    }
    serveUntil(sessions, deadlineIn(LOGOUT_TIME));
    for (const auto &session : sessions) {
        countTraffic(*session, 0, observer);
    }
}
