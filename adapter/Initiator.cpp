#include "Initiator.h"

#include "Failure.h"
#include "Fields.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <latch>

namespace
{

constexpr SD_UINT16 ISCSI_PORT = 3260;
constexpr std::chrono::milliseconds NO_PATIENCE{0};
constexpr std::chrono::seconds USUAL_DEADLINE{10};
constexpr SD_UINT32 FIRST_NEW_SESSION = 0x0200; // TargetSessID of the sessions that a reset makes

// The session parameters of an entry, filled up with those of the firmware block where it has none.
ISCSIDEVICE parametersOf(const Settings &settings, const ISCSIDEVICE &own)
{
    ISCSIDEVICE parameters = own;
    const ISCSIDEVICE &usual = settings.block.DeviceInfo;
    const auto fill = [](auto &value, auto other) {
        value = value == 0 ? other : value;
    };
    fill(parameters.exeThrottle, usual.exeThrottle);
    fill(parameters.retryCount, usual.retryCount);
    fill(parameters.retryDelay, usual.retryDelay);
    fill(parameters.iSCSIOptions, usual.iSCSIOptions);
    fill(parameters.TCPOptions, usual.TCPOptions);
    fill(parameters.IPOptions, usual.IPOptions);
    fill(parameters.MaxRxDataSegmentLen, usual.MaxRxDataSegmentLen);
    fill(parameters.firstBurstSize, usual.firstBurstSize);
    fill(parameters.DefaultTime2Wait, usual.DefaultTime2Wait);
    fill(parameters.DefaultTime2Retain, usual.DefaultTime2Retain);
    fill(parameters.maxOutstandingR2T, usual.maxOutstandingR2T);
    fill(parameters.keepAliveTimeout, usual.keepAliveTimeout);
    fill(parameters.maxBurstSize, usual.maxBurstSize);
    fill(parameters.taskMngmntTimeout, usual.taskMngmntTimeout);
    return parameters;
}

// The credentials of a record of the CHAP table; none when it holds no secret.
std::optional<Credentials> credentialsOf(const CHAPTABLE *record)
{
    if (record == nullptr || record->ChapSecretLength == 0) {
        return std::nullopt;
    }
    const std::size_t length = std::min<std::size_t>(record->ChapSecretLength, sizeof record->ChapSecret);
    return Credentials{getText(record->ChapName), Secret(std::span(record->ChapSecret).first(length))};
}

// What a session with an entry's target is made of; none when the CHAP table lacks a record that it needs.
std::optional<SessionRequest> requestOf(const Settings &settings, const DEVICEENTRYISCSI &entry)
{
    SessionRequest request;
    request.index = entry.TargetID;
    request.target = addressOf(entry);
    request.parameters = parametersOf(settings, entry.DeviceInfo);
    request.initiatorName = getText(settings.block.iSCSIName);
    request.initiatorAlias = getText(settings.block.Alias);
    request.deadline = deadlineOf(settings, entry.DeviceInfo);
    if (entry.CHAPTableIndex != 0) {
        const CHAPTABLE *record = settings.findChap(entry.CHAPTableIndex);
        request.own = credentialsOf(record);
        if (!request.own) {
            return std::nullopt;
        }
        if (record->Link != 0) {
            request.targets = credentialsOf(settings.findChap(record->Link));
            if (!request.targets) {
                return std::nullopt;
            }
        }
    }
    return request;
}

void logConnection(Adapter &adapter, SD_UINT32 index, SD_UINT16 state, SD_UINT8 type, SD_UINT8 error, SD_UINT16 detail)
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    CONNERRTABLE entry{};
    entry.timeStamp.seconds = static_cast<SD_UINT32>(now.tv_sec);
    entry.timeStamp.milliseconds = static_cast<SD_UINT32>(now.tv_nsec / 1000000);
    entry.deviceIndex = static_cast<SD_UINT16>(index);
    entry.connState = state;
    entry.entryType = type;
    entry.errorType = error;
    entry.errorDetail = detail;
    adapter.activity.logError(entry);
}

void logFailure(Adapter &adapter, SD_UINT32 index, const LoginResult &result)
{
    switch (result.reach) {
    case Reach::session:
        return;
    case Reach::unreachable:
        logConnection(adapter, index, CONNECTION_OPENING, LOG_ENTRY_LOGIN, LOG_ERROR_UNREACHABLE, 0);
        return;
    case Reach::timeout:
        logConnection(adapter, index, CONNECTION_LOGIN, LOG_ENTRY_LOGIN, LOG_ERROR_TIMEOUT, 0);
        return;
    case Reach::unknownTarget:
    case Reach::authentication:
    case Reach::refused:
        logConnection(adapter, index, CONNECTION_LOGIN, LOG_ENTRY_LOGIN, LOG_ERROR_REFUSED, result.status);
        return;
    }
}

SD_UINT32 stateAfter(const LoginResult &result)
{
    return result.reach == Reach::session ? ENTRY_SESSION : ENTRY_CONFIGURED;
}

// Whether an entry is still the one whose login this was, and not logged out meanwhile.
bool isStill(const SharedEntry &entry, const DEVICEENTRYISCSI &asked)
{
    return entry != nullptr && entry->DeviceState != ENTRY_LOGGED_OUT && entry->CHAPTableIndex == asked.CHAPTableIndex
           && std::memcmp(&entry->DeviceInfo, &asked.DeviceInfo, sizeof asked.DeviceInfo) == 0
           && std::memcmp(&entry->EntryInfo, &asked.EntryInfo, sizeof asked.EntryInfo) == 0;
}

void setState(Settings &settings, SD_UINT32 index, SD_UINT32 state)
{
    DEVICEENTRYISCSI changed = *settings.find(index);
    if (changed.DeviceState == ENTRY_LOGGED_OUT && state == ENTRY_SESSION) {
        changed.TargetSessID = static_cast<SD_UINT16>(FIRST_NEW_SESSION + index);
    }
    changed.DeviceState = state;
    settings.place(changed);
}

// Keeps the outcome of a login: in the log, and as the state of the entry when that is another one and no other writer
// is in the way for longer than patience.
void recordLogin(Adapter &adapter, const DEVICEENTRYISCSI &asked, const LoginResult &result,
                 std::chrono::milliseconds patience) noexcept
{
    try {
        logFailure(adapter, asked.TargetID, result);
        const SD_UINT32 state = stateAfter(result);
        const SharedEntry now = adapter.settings.read()->find(asked.TargetID);
        if (isStill(now, asked) && now->DeviceState != state) {
            adapter.settings.changeSoon(
                [&](Settings &settings) {
                    if (isStill(settings.find(asked.TargetID), asked)) {
                        setState(settings, asked.TargetID, state);
                    }
                },
                patience);
        }
    } catch (...) {
        return; // the entry keeps the state with which it was written
    }
}

// Starts a login; done gets the outcome. Meanwhile it is counted as under way.
void startLogin(Adapter &adapter, const Settings &settings, const DEVICEENTRYISCSI &entry, LoginDone done)
{
    const auto request = requestOf(settings, entry);
    if (!request) {
        adapter.port().logout(entry.TargetID);
        done({Reach::authentication, 0});
        return;
    }
    std::atomic<int> &underWay = adapter.loginsUnderWay.at(entry.TargetID);
    ++underWay;
    adapter.port().login(*request, [&underWay, done = std::move(done)](const LoginResult &result) {
        done(result);
        --underWay;
    });
}

} // namespace

SD_UINT32 statusOf(Reach reach)
{
    switch (reach) {
    case Reach::session:
        return 0;
    case Reach::timeout:
        return ERR_TIMEOUT;
    case Reach::unknownTarget:
        return ERR_NO_SUCH_TARGET;
    case Reach::authentication:
        return ERR_AUTHENTICATION;
    case Reach::refused:
        return ERR_LOGIN_REFUSED;
    case Reach::unreachable:
        break;
    }
    return ERR_UNREACHABLE;
}

TargetAddress addressOf(const DEVICEENTRYISCSI &entry)
{
    TargetAddress target{entry.EntryInfo.IPAddr, entry.DeviceInfo.portNumber, getText(entry.EntryInfo.iSCSIName)};
    if (isZero(target.address)) {
        target.address = makeAddress(getText(entry.DeviceInfo.targetAddr));
    }
    if (target.port == 0) {
        target.port = ISCSI_PORT;
    }
    return target;
}

void setSessionId(DEVICEENTRYISCSI &entry)
{
    entry.InitiatorSessID[4] = static_cast<SD_UINT8>(entry.TargetID >> 8);
    entry.InitiatorSessID[5] = static_cast<SD_UINT8>(entry.TargetID);
}

std::chrono::milliseconds deadlineOf(const Settings &settings, const ISCSIDEVICE &parameters)
{
    const std::chrono::seconds seconds(parametersOf(settings, parameters).taskMngmntTimeout);
    return seconds.count() == 0 ? USUAL_DEADLINE : seconds;
}

void login(Adapter &adapter, const DEVICEENTRYISCSI &entry)
{
    startLogin(adapter, *adapter.settings.read(), entry,
               [&adapter, entry](const LoginResult &result) { recordLogin(adapter, entry, result, WRITER_PATIENCE); });
}

void loginAll(Adapter &adapter, const SettingsStore::Change &change)
{
    const auto before = adapter.settings.read();
    const std::vector<SharedEntry> entries = before->entries();
    struct Outcomes {
        explicit Outcomes(std::size_t count) : results(count), outstanding(static_cast<std::ptrdiff_t>(count)) {}
        std::vector<LoginResult> results;
        std::latch outstanding;
    };
    const auto outcomes = std::make_shared<Outcomes>(entries.size());
    adapter.port().logoutAll();
    adapter.activity.forgetNeighbours();
    for (std::size_t number = 0; number < entries.size(); ++number) {
        startLogin(adapter, *before, *entries[number], [outcomes, number](const LoginResult &result) {
            outcomes->results[number] = result;
            outcomes->outstanding.count_down();
        });
    }
    outcomes->outstanding.wait();
    const std::vector<LoginResult> &results = outcomes->results;
    adapter.settings.change([&](Settings &settings) {
        change(settings);
        for (std::size_t number = 0; number < entries.size(); ++number) {
            const SharedEntry &asked = entries[number];
            const SharedEntry now = settings.find(asked->TargetID);
            const SD_UINT32 state = stateAfter(results[number]);
            if (now != nullptr && now->DeviceState != state && (now == asked || isStill(now, *asked))) {
                setState(settings, asked->TargetID, state);
            }
        }
    });
    for (std::size_t number = 0; number < entries.size(); ++number) {
        logFailure(adapter, entries[number]->TargetID, results[number]);
    }
}

void endSession(Adapter &adapter, SD_UINT32 index, bool logged)
{
    adapter.port().logout(index);
    if (logged) {
        logConnection(adapter, index, CONNECTION_CLOSED, LOG_ENTRY_LOGOUT, LOG_ERROR_NONE, 0);
    }
}

CommandResult execute(Adapter &adapter, const Settings &settings, const DEVICEENTRYISCSI &entry, SD_UINT16 lun,
                      std::span<const SD_UINT8> command, std::size_t allocationLength)
{
    const auto request = requestOf(settings, entry);
    CommandResult result;
    if (request) {
        result = adapter.port().execute(*request, lun, command, allocationLength);
    } else {
        result.login.reach = Reach::authentication;
    }
    if (result.login.reach != Reach::session || entry.DeviceState != ENTRY_SESSION) {
        recordLogin(adapter, entry, result.login, NO_PATIENCE); // the next command finds the same difference
    }
    return result;
}

DiscoveryResult discover(Adapter &adapter, const DEVICEENTRYISCSI &entry)
{
    auto request = requestOf(*adapter.settings.read(), entry);
    if (!request) {
        return {{Reach::authentication, 0}, "", {}};
    }
    request->target.name.clear();
    return adapter.port().discover(*request);
}

void addDiscovered(Adapter &adapter, const DEVICEENTRYISCSI &entry)
{
    const DiscoveryResult found = discover(adapter, entry);
    logFailure(adapter, entry.TargetID, found.login);
    require(found.login.reach == Reach::session, statusOf(found.login.reach));
    const TargetAddress asked = addressOf(entry);
    std::vector<DEVICEENTRYISCSI> added;
    bool full = false;
    adapter.settings.change([&](Settings &settings) {
        added.clear();
        std::vector<std::string> known;
        for (const SharedEntry &other : settings.entries()) {
            known.push_back(getText(other->EntryInfo.iSCSIName));
        }
        SD_UINT32 tried = 0;
        for (const OfferedTarget &offered : found.targets) {
            if (std::ranges::find(known, offered.name) != known.end()) {
                continue;
            }
            while (tried < DDB_SLOTS && settings.find((entry.TargetID + tried) % DDB_SLOTS) != nullptr) {
                ++tried;
            }
            full = tried == DDB_SLOTS;
            if (full) {
                return;
            }
            // Where the portal that was asked offers the target itself the entry leads there.
            TargetAddress portal = asked;
            const auto same = [&](const TargetAddress &other) {
                return sameAddress(other.address, asked.address) && other.port == asked.port;
            };
            if (!offered.portals.empty() && std::ranges::none_of(offered.portals, same)) {
                portal = offered.portals.front();
            }
            DEVICEENTRYISCSI target = entry;
            target.TargetID = (entry.TargetID + tried) % DDB_SLOTS;
            target.DeviceState = ENTRY_CONFIGURED;
            target.EntryInfo.IPAddr = portal.address;
            setAddressType(target.EntryInfo.IPAddr);
            target.DeviceInfo.portNumber = portal.port;
            setText(target.DeviceInfo.targetAddr, toText(portal.address));
            setText(target.EntryInfo.iSCSIName, offered.name);
            setSessionId(target);
            settings.place(target);
            added.push_back(target);
        }
    });
    for (const DEVICEENTRYISCSI &target : added) {
        login(adapter, target);
    }
    require(!full, ERR_DATABASE_FULL);
}
