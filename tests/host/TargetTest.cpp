// Sessions with tgtd: what goes over the wire, CHAP, and the life of a session.
#include "PortTest.h"
#include "ScsiStandard.h"

#include <memory>
#include <optional>

namespace
{

const std::string OPEN = "iqn.2024-01.example:open";
const std::string GUARDED = "iqn.2024-01.example:guarded"; // asks initiators for a proof
const std::string MUTUAL = "iqn.2024-01.example:mutual";   // and gives one itself

class Target : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        if (TargetDaemon::isInstalled()) {
            daemon_ = std::make_unique<TargetDaemon>(
                "add_target 1 " + OPEN + "; add_unit 1 1 --bstype null -b /dev/null; add_target 2 " + GUARDED
                + "; add_target 3 " + MUTUAL
                + "; add_account 2 initiator 'initiators secret'; add_account 3 another 'another initiators secret'"
                + "; add_account 3 target 'secret of the target' --outgoing");
        }
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
        return requestFor(daemon_->port(), name);
    }

    static inline std::unique_ptr<TargetDaemon> daemon_;
    Counters counters_;
    std::unique_ptr<TargetPort> port_;
};

TEST_F(Target, AnswersComeAsTheTargetSentThemAndAreCounted)
{
    const SessionRequest request = to(OPEN);
    EXPECT_EQ(logIn(*port_, request).reach, Reach::session);
    // The unit attention after a login is not the caller's affair.
    EXPECT_TRUE(succeeded(readCapacity(*port_, request, 1)));
    const CommandResult missing = readCapacity(*port_, request, 77);
    EXPECT_EQ(missing.status, SCSI_CHECK_CONDITION);
    EXPECT_TRUE(missing.data.empty());
    ASSERT_GE(missing.sense.size(), 14U);
    EXPECT_EQ(missing.sense[2] & 0x0F, SENSE_ILLEGAL_REQUEST);

    const HBAPORTSTATISCSI before = counters_.sum();
    const CommandResult list = reportLuns(*port_, request);
    const HBAPORTSTATISCSI after = counters_.sum();
    EXPECT_EQ(list.data.size(), 8U + 2 * 8); // the controller and a disk
    EXPECT_EQ(after.iSCSITxPDUCount - before.iSCSITxPDUCount, 1U);
    EXPECT_EQ(after.iSCSITxBytesCount - before.iSCSITxBytesCount, 48U);
    EXPECT_EQ(after.iSCSIRxPDUCount - before.iSCSIRxPDUCount, 1U);
    EXPECT_EQ(after.iSCSIRxBytesCount - before.iSCSIRxBytesCount, 48U + list.data.size());
    EXPECT_EQ(after.iSCSICompleteIOsCount - before.iSCSICompleteIOsCount, 1U);

    // A list that is cut off names its full length all the same.
    const CommandResult part = reportLuns(*port_, request, 16);
    EXPECT_EQ(part.data, std::vector(list.data.begin(), list.data.begin() + 16));
}

TEST_F(Target, ChapProvesBothSides)
{
    const Credentials initiator = credentials("initiator", "initiators secret");
    const Credentials another = credentials("another", "another initiators secret");
    const Credentials target = credentials("target", "secret of the target");
    const Credentials unusable = credentials("initiator", std::string("with\0zero byte", 14)); // libiscsi takes texts
    struct {
        const char *what;
        const std::string &name;
        std::optional<Credentials> own, targets;
        Reach reach;
        SD_UINT16 status;
    } const cases[] = {
        {"right secret", GUARDED, initiator, {}, Reach::session, 0},
        {"given though not asked for", OPEN, initiator, {}, Reach::session, 0},
        {"no credentials", GUARDED, {}, {}, Reach::authentication, 0x0201},
        {"wrong name", GUARDED, credentials("nobody", "initiators secret"), {}, Reach::authentication, 0x0201},
        {"both prove themselves", MUTUAL, another, target, Reach::session, 0},
        {"target has another secret", MUTUAL, another, credentials("target", "none"), Reach::authentication, 0},
        {"target has another name", MUTUAL, another, credentials("stranger", "secret of the target"),
         Reach::authentication, 0},
        {"target has no secret", GUARDED, initiator, target, Reach::authentication, 0x0201},
        {"target wants no CHAP", OPEN, initiator, target, Reach::authentication, 0},
        {"secret with a zero byte", GUARDED, unusable, {}, Reach::authentication, 0},
    };
    for (const auto &tried : cases) {
        SessionRequest request = to(tried.name);
        request.own = tried.own;
        request.targets = tried.targets;
        const LoginResult login = logIn(*port_, request);
        EXPECT_EQ(login.reach, tried.reach) << tried.what;
        EXPECT_EQ(login.status, tried.status) << tried.what;
    }
}

TEST_F(Target, TwoInitiatorsOfOneNameDoNotThrowEachOtherOut)
{
    Counters others;
    const auto other = openPortOf("lo", others);
    const SessionRequest request = to(OPEN);
    EXPECT_EQ(logIn(*port_, request).reach, Reach::session);
    EXPECT_EQ(logIn(*other, request).reach, Reach::session);
    const SD_UINT64 before = counters_.sum().iSCSITxPDUCount;
    EXPECT_TRUE(succeeded(reportLuns(*port_, request)));
    EXPECT_EQ(counters_.sum().iSCSITxPDUCount - before, 1U) << "logged in anew";
}

TEST_F(Target, LogoutEndsTheSession)
{
    const SessionRequest request = to(OPEN);
    const std::size_t threads = countOwn("task");
    EXPECT_EQ(port_->discover(request).targets.size(), 3U);
    const std::size_t before = countOwn("fd");
    logIn(*port_, request);
    EXPECT_EQ(countOwn("fd"), before + 1);
    port_->logout(request.index);
    EXPECT_EQ(countOwn("fd"), before);
    // An entry that leads elsewhere now has no session with its former target.
    logIn(*port_, request);
    EXPECT_EQ(logIn(*port_, to("iqn.2024-01.example:nobody")).reach, Reach::unknownTarget);
    port_.reset();
    awaitUntil([&] { return countOwn("task") <= threads; }); // one that has ended is there a moment longer
    EXPECT_EQ(countOwn("task"), threads) << "a thread outlives the port";
}

} // namespace
