// Sessions with tgtd: what goes over the wire, CHAP, and the life of a session.
#include "DaemonTest.h"

#include <optional>

namespace
{

using Target = DaemonTest;

Credentials credentials(const std::string &name, const std::string &secret)
{
    return {name, Secret(std::span(reinterpret_cast<const SD_UINT8 *>(secret.data()), secret.size()))};
}

TEST_F(Target, AnswersComeAsTheTargetSentThemAndAreCounted)
{
    const SessionRequest request = requestTo(OPEN);
    EXPECT_EQ(port.logIn(request).reach, Reach::session);
    // The unit attention after a login is not the caller's affair.
    EXPECT_EQ(port.readCapacity(request, 1).status, SCSI_GOOD);
    const CommandResult missing = port.readCapacity(request, 77);
    EXPECT_EQ(missing.status, SCSI_CHECK_CONDITION);
    EXPECT_TRUE(missing.data.empty());
    ASSERT_GE(missing.sense.size(), 14U);
    EXPECT_EQ(missing.sense[2] & 0x0F, SENSE_ILLEGAL_REQUEST);

    const HBAPORTSTATISCSI before = port.counters();
    const CommandResult list = port.reportLuns(request);
    const HBAPORTSTATISCSI after = port.counters();
    EXPECT_EQ(list.data.size(), 8U + 2 * 8); // the controller and a disk
    EXPECT_EQ(after.iSCSITxPDUCount - before.iSCSITxPDUCount, 1U);
    EXPECT_EQ(after.iSCSITxBytesCount - before.iSCSITxBytesCount, 48U);
    EXPECT_EQ(after.iSCSIRxPDUCount - before.iSCSIRxPDUCount, 1U);
    EXPECT_EQ(after.iSCSIRxBytesCount - before.iSCSIRxBytesCount, 48U + list.data.size());
    EXPECT_EQ(after.iSCSICompleteIOsCount - before.iSCSICompleteIOsCount, 1U);

    // A list that is cut off names its full length all the same.
    EXPECT_EQ(port.reportLuns(request, 16).data, std::vector(list.data.begin(), list.data.begin() + 16));
}

TEST_F(Target, ChapProvesBothSides)
{
    const Credentials initiator = credentials("initiator", "initiators secret");
    const Credentials another = credentials("another", "another initiators secret");
    const Credentials target = credentials("target", "secret of the target");
    const Credentials unusable = credentials("initiator", std::string("with\0zero byte", 14)); // libiscsi takes texts
    struct {
        const char *what, *name;
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
        SessionRequest request = requestTo(tried.name);
        request.own = tried.own;
        request.targets = tried.targets;
        const LoginResult login = port.logIn(request);
        EXPECT_EQ(login.reach, tried.reach) << tried.what;
        EXPECT_EQ(login.status, tried.status) << tried.what;
    }
}

TEST_F(Target, LogoutEndsTheSession)
{
    const SessionRequest request = requestTo(OPEN);
    const auto threads = countOwn("task");
    EXPECT_EQ(port->discover(request).targets.size(), 3U);
    const auto before = countOwn("fd");
    port.logIn(request);
    EXPECT_EQ(countOwn("fd"), before + 1);
    port->logout(request.index);
    EXPECT_EQ(countOwn("fd"), before);
    // An entry that leads elsewhere now has no session with its former target.
    port.logIn(request);
    EXPECT_EQ(port.logIn(requestTo("iqn.2024-01.example:nobody")).reach, Reach::unknownTarget);
    port.close();
    awaitUntil([&] { return countOwn("task") <= threads; }); // one that has ended is there a moment longer
    EXPECT_EQ(countOwn("task"), threads) << "a thread outlives the port";
}

} // namespace
