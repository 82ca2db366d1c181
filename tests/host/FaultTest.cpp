// Targets that fail in every way: each ends in a status within the deadline, and nothing is left behind.
#include "DaemonTest.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <future>
#include <set>
#include <thread>

namespace
{

using namespace std::chrono_literals;

constexpr auto SHORT_DEADLINE = 700ms;
constexpr auto MARGIN = 400ms; // for a busy machine
constexpr const char *NAME = "iqn.2024-01.example:faulty";

constexpr SD_UINT8 GARBAGE = 0xA5;
constexpr std::size_t ALL = 1000000;

enum class At { login, command };
enum class Then { stays, closes, repeats };

// What a target answers, and what it does then, in the order in which it is read.
struct Fault { // NOLINT(clang-analyzer-optin.performance.Padding)
    const char *what;
    At at;
    SD_UINT8 opcode;
    std::size_t data; // bytes in the answer
    std::size_t sent; // bytes of it that are sent
    Then then;
    Reach reach;          // what becomes of the command
    SD_UINT16 status = 0; // of the login
};

constexpr Fault FAULTS[]{
    {"silent after connecting", At::login, LOGIN_RESPONSE, 0, 0, Then::stays, Reach::timeout},
    {"closes instead of an answer", At::login, LOGIN_RESPONSE, 0, 0, Then::closes, Reach::refused},
    {"answers the login with garbage", At::login, GARBAGE, 100000, ALL, Then::stays, Reach::refused},
    {"half a login answer", At::login, LOGIN_RESPONSE, 0, 20, Then::stays, Reach::timeout},
    {"half a login answer and an end", At::login, LOGIN_RESPONSE, 0, 20, Then::closes, Reach::refused},
    {"login answer that promises too much", At::login, LOGIN_RESPONSE, 100000, ALL, Then::stays, Reach::refused},
    {"login text without an end", At::login, LOGIN_RESPONSE, 64, ALL, Then::stays, Reach::refused},
    {"not authenticated", At::login, LOGIN_RESPONSE, 0, ALL, Then::stays, Reach::authentication, 0x0201},
    {"not authorised", At::login, LOGIN_RESPONSE, 0, ALL, Then::stays, Reach::authentication, 0x0202},
    {"not found", At::login, LOGIN_RESPONSE, 0, ALL, Then::stays, Reach::unknownTarget, 0x0203},
    {"moved", At::login, LOGIN_RESPONSE, 0, ALL, Then::stays, Reach::refused, 0x0101},
    {"of another version", At::login, LOGIN_RESPONSE, 0, ALL, Then::stays, Reach::refused, 0x0206},
    {"closes instead of a command's answer", At::command, SCSI_RESPONSE, 0, 0, Then::closes, Reach::unreachable},
    {"silent to a command", At::command, SCSI_RESPONSE, 0, 0, Then::stays, Reach::timeout},
    {"answers a command with garbage", At::command, GARBAGE, 100000, ALL, Then::stays, Reach::unreachable},
    {"half an answer to a command", At::command, SCSI_RESPONSE, 0, 30, Then::stays, Reach::timeout},
    {"more data than asked for", At::command, DATA_IN, 5000, ALL, Then::stays, Reach::unreachable},
    {"data without end", At::command, DATA_IN, 8, ALL, Then::repeats, Reach::timeout},
    {"pings without end", At::command, NOP_IN, 100000, ALL, Then::repeats, Reach::timeout},
};

std::vector<SD_UINT8> answerOf(const Fault &fault, const Pdu &request)
{
    Pdu answer = fault.at == At::login ? loginAnswer(request, fault.status) : answerTo(request, fault.opcode);
    answer.data.assign(fault.data, GARBAGE);
    if (fault.opcode == GARBAGE) {
        std::ranges::fill(answer.header, GARBAGE);
    } else if (fault.opcode == NOP_IN) { // which asks for an answer
        std::fill_n(answer.header.begin() + 16, 4, SD_UINT8{0xFF});
        answer.header[23] = 1;
    }
    std::vector<SD_UINT8> bytes = bytesOf(answer);
    bytes.resize(std::min(bytes.size(), fault.sent));
    return bytes;
}

void play(const Fault &fault, ScriptedConnection &to)
{
    if (fault.at == At::command) {
        to.acceptLogin();
    }
    const Pdu request = to.receive();
    do {
        to.send(answerOf(fault, request));
    } while (fault.then == Then::repeats);
    if (fault.then == Then::stays) {
        to.stayUntilClosed();
    }
}

TEST(Fault, EachIsAStatusWithinTheDeadline)
{
    const OpenPort port;
    for (const Fault &fault : FAULTS) {
        const auto descriptors = countOwn("fd");
        {
            const ScriptedTarget target([&](ScriptedConnection &to) { play(fault, to); });
            const SessionRequest request = requestFor(target.port(), NAME, SHORT_DEADLINE);
            // The second command finds no session any more and meets the same.
            for (int attempt = 0; attempt < 2; ++attempt) {
                CommandResult result;
                EXPECT_LT(timeOf([&] { result = port.reportLuns(request); }), SHORT_DEADLINE + MARGIN) << fault.what;
                EXPECT_EQ(result.login.reach, fault.reach) << fault.what;
                EXPECT_EQ(result.login.status, fault.status) << fault.what;
            }
            port->logout(request.index);
        }
        EXPECT_EQ(countOwn("fd"), descriptors) << fault.what;
    }
}

// Sense data of every length up to more than there can be; what is told and what is there differ.
TEST(Fault, SenseDataOfAnyLength)
{
    const ScriptedTarget target([](ScriptedConnection &to) {
        to.acceptLogin();
        for (std::size_t length = 0;; ++length) {
            Pdu answer = answerTo(to.receive(), SCSI_RESPONSE);
            answer.header[3] = SCSI_CHECK_CONDITION;
            answer.data.assign(length, 0x05);
            to.send(answer);
        }
    });
    const OpenPort port;
    const SessionRequest request = requestFor(target.port(), NAME);
    for (std::size_t length = 0; length < 300; ++length) {
        const CommandResult result = port.reportLuns(request);
        ASSERT_EQ(result.login.reach, Reach::session) << length;
        EXPECT_EQ(result.status, SCSI_CHECK_CONDITION);
        EXPECT_TRUE(result.data.empty());
        const std::size_t padded = (length + 3) / 4 * 4; // libiscsi does not tell what is filled up
        EXPECT_EQ(result.sense.size(), length == 0 ? 0 : padded - 2);
    }
}

// Of two sessions with one initiator name and session ID a target ends the older.
TEST(Fault, NoTwoSessionsHaveOneId)
{
    std::set<std::vector<SD_UINT8>> ids;
    const ScriptedTarget target([&](ScriptedConnection &to) {
        const Pdu request = to.receive();
        EXPECT_TRUE(ids.emplace(request.header.begin() + 8, request.header.begin() + 14).second);
        to.send(loginAnswer(request, 0x0203));
    });
    for (int session = 0; session < 5; ++session) {
        EXPECT_EQ(OpenPort().logIn(requestFor(target.port(), NAME)).reach, Reach::unknownTarget);
    }
}

// As when the units are listed: one of them never answers, which does not concern the others.
TEST(Fault, OneUnitOfManyIsSilent)
{
    const ScriptedTarget target([](ScriptedConnection &to) {
        to.acceptLogin();
        for (Pdu request = to.receive(); request.header[9] != 2; request = to.receive()) {
            to.send(answerTo(request, SCSI_RESPONSE));
        }
        to.stayUntilClosed();
    });
    const OpenPort port;
    const SessionRequest request = requestFor(target.port(), NAME, SHORT_DEADLINE);
    EXPECT_EQ(port.reach(request), Reach::session);
    for (SD_UINT16 lun = 0; lun < 5; ++lun) {
        CommandResult result;
        EXPECT_LT(timeOf([&] { result = port.readCapacity(request, lun); }), SHORT_DEADLINE + MARGIN);
        EXPECT_EQ(result.login.reach, lun == 2 ? Reach::timeout : Reach::session) << lun;
    }
}

TEST(Fault, APortThatClosesHasToldOfEveryLogin)
{
    constexpr SD_UINT32 entries = 512;
    const ScriptedTarget target([](ScriptedConnection &to) { to.stayUntilClosed(); });
    OpenPort port;
    std::atomic<SD_UINT32> ended{0};
    SessionRequest request = requestFor(target.port(), NAME);
    for (request.index = 0; request.index < entries; ++request.index) {
        port->login(request, [&](const LoginResult &login) {
            EXPECT_EQ(login.reach, Reach::timeout);
            ++ended;
        });
    }
    awaitUntil([] { return countOwn("fd") > 100; }); // many are under way
    EXPECT_EQ(ended, 0U) << "a login is waited for";
    EXPECT_LT(timeOf([&] { port.close(); }), 2s);
    EXPECT_EQ(ended, entries);
}

using Victim = DaemonTest;

TEST_F(Victim, KilledFrozenDeletedAndBackAgain)
{
    const SessionRequest request = requestTo(OPEN, SHORT_DEADLINE);
    EXPECT_EQ(port.reach(request), Reach::session);
    signal(SIGSTOP);
    EXPECT_EQ(port.reach(request), Reach::timeout);
    signal(SIGCONT);
    EXPECT_EQ(port.reach(request), Reach::session);
    killDaemon();
    EXPECT_EQ(port.reach(request), Reach::unreachable);
    startDaemon();
    EXPECT_EQ(port.reach(request), Reach::session);
    administer("administer --mode target --op delete --force --tid 1");
    EXPECT_EQ(port.reach(request), Reach::unknownTarget);
    killDaemon();
    startDaemon();
    EXPECT_EQ(port.reach(request), Reach::session);
    // A frozen target does not keep its port from going.
    signal(SIGSTOP);
    EXPECT_LT(timeOf([&] { port.close(); }), 2s + MARGIN);
}

TEST_F(Victim, EightThreadsReadWhileTheTargetComesAndGoes)
{
    const char *named = std::getenv("TAVO_SECONDS");
    const std::chrono::seconds duration(named == nullptr ? 5 : std::strtol(named, nullptr, 10));
    std::atomic<bool> ending{false};
    std::atomic<int> reads{0};
    std::atomic<int> failures{0};
    std::vector<std::future<Reach>> readers;
    for (SD_UINT32 reader = 0; reader < 8; ++reader) {
        readers.push_back(std::async(std::launch::async, [&, reader] {
            SessionRequest request = requestTo(OPEN, SHORT_DEADLINE);
            request.index = reader / 2; // two threads share a session
            while (!ending) {
                ++(port.reach(request) == Reach::session ? reads : failures);
            }
            return port.reach(request);
        }));
    }
    const auto end = std::chrono::steady_clock::now() + duration;
    while (std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(300ms);
        signal(SIGSTOP);
        std::this_thread::sleep_for(SHORT_DEADLINE + 100ms);
        signal(SIGCONT);
        std::this_thread::sleep_for(200ms);
        killDaemon();
        std::this_thread::sleep_for(100ms);
        startDaemon();
    }
    ending = true;
    for (auto &reader : readers) {
        EXPECT_EQ(reader.get(), Reach::session) << "a thread does not succeed at the end";
    }
    EXPECT_GT(reads, 100);
    EXPECT_GT(failures, 0);
}

} // namespace
