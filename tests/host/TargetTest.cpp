// Discovery, login, CHAP and SCSI commands against tgtd.
#include "PortTest.h"

#include "Fields.h"
#include "ScsiStandard.h"

#include <algorithm>
#include <set>

namespace
{

constexpr int MANY_UNITS = 250;
constexpr SD_UINT64 TEBIBYTE = 1ULL << 40;
constexpr const char *OPEN = "iqn.2024-01.example:open";
constexpr const char *GUARDED = "iqn.2024-01.example:guarded"; // asks initiators for a proof
constexpr const char *MUTUAL = "iqn.2024-01.example:mutual";   // and gives one itself

class Target : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        if (!isInstalled("tgtd")) {
            return;
        }
        daemon_ = std::make_unique<TargetDaemon>();
        const int open = daemon_->addTarget(OPEN);
        daemon_->addDisk(open, 1, 3 * TEBIBYTE, 512);
        daemon_->addDisk(open, 2, TEBIBYTE, 4096);
        const int guarded = daemon_->addTarget(GUARDED);
        daemon_->addAccount(guarded, "initiator", "initiators secret", false);
        const int mutual = daemon_->addTarget(MUTUAL);
        daemon_->addAccount(mutual, "another", "another initiators secret", false);
        daemon_->addAccount(mutual, "target", "secret of the target", true);
    }
    static void TearDownTestSuite()
    {
        daemon_.reset();
    }
    void SetUp() override
    {
        if (!daemon_) {
            GTEST_SKIP() << "tgtd is not installed";
        }
        port_ = openPortOf("lo", counters_);
    }
    static SessionRequest to(const std::string &name)
    {
        return requestFor(daemon_->address(), daemon_->port(), name);
    }

    static inline std::unique_ptr<TargetDaemon> daemon_;
    Counters counters_;
    std::unique_ptr<TargetPort> port_;
};

TEST_F(Target, DiscoveryNamesAllTargetsWithTheirPortals)
{
    const DiscoveryResult found = port_->discover(to(""));
    EXPECT_EQ(found.login.reach, Reach::session);
    std::set<std::string> names;
    for (const OfferedTarget &target : found.targets) {
        names.insert(target.name);
        ASSERT_FALSE(target.portals.empty());
        EXPECT_EQ(toText(target.portals[0].address), "127.0.0.1");
        EXPECT_EQ(target.portals[0].port, daemon_->port());
    }
    EXPECT_EQ(names, (std::set<std::string>{OPEN, GUARDED, MUTUAL}));
}

TEST_F(Target, AnswersComeAsTheTargetSentThem)
{
    const SessionRequest request = to(OPEN);
    EXPECT_EQ(logIn(*port_, request).reach, Reach::session);

    // The list names its full length, also where it is cut off.
    const CommandResult list = reportLuns(*port_, request);
    EXPECT_TRUE(succeeded(list));
    EXPECT_EQ(list.data.size(), 8 + 3 * 8); // the controller and two disks
    EXPECT_EQ(wordAt(list.data, 0), 3 * 8U);
    const CommandResult part = reportLuns(*port_, request, 16);
    EXPECT_EQ(part.data, std::vector(list.data.begin(), list.data.begin() + 16));

    const CommandResult identity = inquiry(*port_, request, 1);
    ASSERT_EQ(identity.data.size(), 36U);
    EXPECT_EQ(identity.data[0], 0); // a disk

    // The unit attention after a login is not the caller's affair.
    const CommandResult large = readCapacity(*port_, request, 1);
    EXPECT_TRUE(succeeded(large));
    EXPECT_EQ(wordAt(large.data, 0), 0xFFFFFFFF); // more than the command can tell
    EXPECT_EQ(wordAt(large.data, 4), 512U);
    const CommandResult longBlocks = readCapacity(*port_, request, 2);
    EXPECT_EQ(wordAt(longBlocks.data, 0), TEBIBYTE / 4096 - 1);
    EXPECT_EQ(wordAt(longBlocks.data, 4), 4096U);

    const CommandResult missing = readCapacity(*port_, request, 77);
    EXPECT_EQ(missing.login.reach, Reach::session);
    EXPECT_EQ(missing.status, SCSI_CHECK_CONDITION);
    EXPECT_TRUE(missing.data.empty());
    ASSERT_GE(missing.sense.size(), 14U);
    EXPECT_EQ(missing.sense[2] & 0x0F, SENSE_ILLEGAL_REQUEST);
}

TEST_F(Target, CountsWhatGoesOverTheWire)
{
    const SessionRequest request = to(OPEN);
    logIn(*port_, request);
    reportLuns(*port_, request);
    const HBAPORTSTATISCSI before = counters_.sum();
    const CommandResult list = reportLuns(*port_, request);
    const HBAPORTSTATISCSI after = counters_.sum();
    EXPECT_EQ(after.iSCSITxPDUCount - before.iSCSITxPDUCount, 1U);
    EXPECT_EQ(after.iSCSITxBytesCount - before.iSCSITxBytesCount, 48U);
    EXPECT_EQ(after.iSCSIRxPDUCount - before.iSCSIRxPDUCount, 1U);
    EXPECT_EQ(after.iSCSIRxBytesCount - before.iSCSIRxBytesCount, 48U + list.data.size());
    EXPECT_EQ(after.iSCSICompleteIOsCount - before.iSCSICompleteIOsCount, 1U);
}

TEST_F(Target, ChapProvesBothSides)
{
    const Credentials initiator = credentials("initiator", "initiators secret");
    const Credentials another = credentials("another", "another initiators secret");
    const Credentials target = credentials("target", "secret of the target");
    struct Case {
        const char *what;
        const char *name;
        std::optional<Credentials> own;
        std::optional<Credentials> targets;
        Reach reach;
        SD_UINT16 status;
    };
    const Case cases[] = {
        {"nothing asked, nothing given", OPEN, {}, {}, Reach::session, 0},
        {"given though not asked for", OPEN, initiator, {}, Reach::session, 0},
        {"right secret", GUARDED, initiator, {}, Reach::session, 0},
        {"no credentials", GUARDED, {}, {}, Reach::authentication, 0x0201},
        {"wrong secret", GUARDED, credentials("initiator", "wrong secret here"), {}, Reach::authentication, 0x0201},
        {"wrong name", GUARDED, credentials("nobody", "initiators secret"), {}, Reach::authentication, 0x0201},
        {"both prove themselves", MUTUAL, another, target, Reach::session, 0},
        {"target's secret is another", MUTUAL, another, credentials("target", "not that of the target"),
         Reach::authentication, 0},
        {"target has another name", MUTUAL, another, credentials("stranger", "secret of the target"),
         Reach::authentication, 0},
        {"target asked for no proof gives none", MUTUAL, another, {}, Reach::session, 0},
        {"target without a secret cannot prove itself", GUARDED, initiator, target, Reach::authentication, 0x0201},
        {"target that wants no CHAP does not prove itself", OPEN, initiator, target, Reach::authentication, 0},
        {"secret that libiscsi cannot take",
         GUARDED,
         credentials("initiator", std::string("with\0zero byte", 14)),
         {},
         Reach::authentication,
         0},
    };
    for (const Case &tried : cases) {
        SessionRequest request = to(tried.name);
        request.own = tried.own;
        request.targets = tried.targets;
        const LoginResult login = logIn(*port_, request);
        EXPECT_EQ(login.reach, tried.reach) << tried.what;
        EXPECT_EQ(login.status, tried.status) << tried.what;
        EXPECT_EQ(reportLuns(*port_, request).login.reach, tried.reach) << tried.what;
    }
}

TEST_F(Target, ReasonsStayApart)
{
    const LoginResult unknown = logIn(*port_, to("iqn.2024-01.example:nobody"));
    EXPECT_EQ(unknown.reach, Reach::unknownTarget);
    EXPECT_EQ(unknown.status, 0x0203);
    SessionRequest nobody = to(OPEN);
    nobody.target.port = freePort("127.0.0.1");
    EXPECT_EQ(logIn(*port_, nobody).reach, Reach::unreachable);
    EXPECT_EQ(port_->discover(nobody).login.reach, Reach::unreachable);
}

TEST_F(Target, TwoInitiatorsOfOneNameDoNotThrowEachOtherOut)
{
    Counters others;
    const auto other = openPortOf("lo", others);
    const SessionRequest request = to(OPEN);
    EXPECT_EQ(logIn(*port_, request).reach, Reach::session);
    EXPECT_EQ(logIn(*other, request).reach, Reach::session);
    const auto loggedIn = [](const HBAPORTSTATISCSI &counters) {
        return counters.iSCSITxPDUCount;
    };
    for (int round = 0; round < 3; ++round) {
        const SD_UINT64 before = loggedIn(counters_.sum());
        EXPECT_TRUE(succeeded(reportLuns(*port_, request)));
        EXPECT_TRUE(succeeded(reportLuns(*other, request)));
        EXPECT_EQ(loggedIn(counters_.sum()) - before, 1U) << "logged in anew";
    }
}

TEST_F(Target, HundredsOfUnitsAndTargets)
{
    TargetDaemon crowded;
    const int target = crowded.addTarget("iqn.2024-01.example:crowd0");
    for (int lun = 1; lun <= MANY_UNITS; ++lun) {
        crowded.addUnit(target, lun);
    }
    for (int number = 1; number < MANY_UNITS; ++number) {
        crowded.addTarget("iqn.2024-01.example:crowd" + std::to_string(number));
    }
    const SessionRequest request = requestFor(crowded.address(), crowded.port(), "iqn.2024-01.example:crowd0");
    EXPECT_EQ(wordAt(reportLuns(*port_, request, 4096).data, 0), 8U * (MANY_UNITS + 1));
    EXPECT_TRUE(succeeded(inquiry(*port_, request, MANY_UNITS)));

    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(port_->discover(request).targets.size(), static_cast<std::size_t>(MANY_UNITS));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

TEST_F(Target, Ipv6)
{
    TargetDaemon six("::1");
    const std::string name = "iqn.2024-01.example:six";
    six.addTarget(name);
    const SessionRequest request = requestFor(six.address(), six.port(), name);
    EXPECT_TRUE(succeeded(reportLuns(*port_, request)));
    const DiscoveryResult found = port_->discover(request);
    ASSERT_EQ(found.targets.size(), 1U);
    EXPECT_EQ(toText(found.targets[0].portals.at(0).address), "::1");
    EXPECT_EQ(found.targets[0].portals.at(0).port, six.port());
}

TEST_F(Target, LogoutEndsTheSession)
{
    const SessionRequest request = to(OPEN);
    const std::size_t threads = countOwn("task");
    port_->discover(request); // so that what is opened once is open
    const std::size_t before = countOwn("fd");
    logIn(*port_, request);
    EXPECT_EQ(countOwn("fd"), before + 1);
    port_->logout(request.index);
    EXPECT_EQ(countOwn("fd"), before);
    // An entry that leads elsewhere now has no session with its former target.
    logIn(*port_, request);
    logIn(*port_, to("iqn.2024-01.example:nobody"));
    port_->logoutAll();
    port_.reset();
    EXPECT_EQ(countOwn("task"), threads) << "a thread outlives the port";
}

} // namespace
