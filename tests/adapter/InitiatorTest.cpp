// What the adapter does on the network: SCSI commands, sessions, pings; what it counts and logs of that.
#include "AdapterTest.h"

#include <sys/stat.h>

#include <ctime>
#include <optional>

namespace
{

using Initiator = AdapterTest;
using Bytes = std::vector<SD_UINT8>;

constexpr SD_UINT8 FILL = 0xEE; // what the response areas hold before a command

struct Answer {
    SD_UINT32 status;
    Bytes data; // as far as it was written
    Bytes sense;
};

TARGETINFORMATION unitOf(SD_UINT16 target, SD_UINT16 lun = 0)
{
    TARGETINFORMATION unit{};
    unit.TargetID = target;
    unit.LUN = lun;
    return unit;
}

template <typename Response>
Answer send(SDMGT_HANDLE handle,
            SD_UINT32 (*command)(SDMGT_HANDLE, TARGETINFORMATION *, Response *, SD_UINT32, void *, SD_UINT32),
            TARGETINFORMATION unit, SD_UINT32 size)
{
    Answer answer{0, Bytes(size + 1, FILL), Bytes(SENSE_SIZE + 1, FILL)};
    void *data = answer.data.data();
    answer.status = command(handle, &unit, static_cast<Response *>(data), size, answer.sense.data(), SENSE_SIZE);
    EXPECT_EQ(answer.data.back(), FILL) << "written beyond the response area";
    EXPECT_EQ(answer.sense.back(), FILL) << "written beyond the sense area";
    while (!answer.data.empty() && answer.data.back() == FILL) {
        answer.data.pop_back();
    }
    return answer;
}

Answer reportLuns(SDMGT_HANDLE handle, SD_UINT16 target, SD_UINT32 size)
{
    return send(handle, SDSendScsiReportLunsCmdiSCSI, unitOf(target), size);
}

SD_UINT32 inquire(SDMGT_HANDLE handle, SD_UINT16 target)
{
    return send(handle, SDSendScsiInquiryCmdiSCSI, unitOf(target), 36).status;
}

SD_UINT64 wordAt(const Bytes &bytes, std::size_t place)
{
    SD_UINT64 word = 0;
    for (std::size_t byte = place; byte < place + 8; ++byte) {
        word = word << 8 | bytes.at(byte);
    }
    return word;
}

// The unit numbers of a list, as far as it was delivered.
std::vector<SD_UINT64> lunsOf(const Answer &answer)
{
    std::vector<SD_UINT64> luns;
    for (std::size_t place = 8; place + 8 <= answer.data.size(); place += 8) {
        const SD_UINT64 word = wordAt(answer.data, place);
        EXPECT_EQ(word << 16, 0U);
        luns.push_back(word >> 48);
    }
    return luns;
}

// Sense key, code and qualifier of fixed-format sense data; 0 when there is none.
SD_UINT32 senseOf(const Answer &answer)
{
    const Bytes &sense = answer.sense;
    if (sense[0] == 0) {
        return 0;
    }
    EXPECT_EQ(sense[0], 0x70);
    EXPECT_EQ(sense[7], 10);
    return (SD_UINT32{sense[2]} << 16) | (SD_UINT32{sense[12]} << 8) | sense[13];
}

TEST_F(Initiator, ReportLunsDeliversTheStandardsList)
{
    const OpenAdapter adapter(0);
    struct {
        SD_UINT16 target;
        SD_UINT32 room, units;
        std::size_t delivered;
    } const cases[] = {{42, 264, 0, 8},   {1, 264, 4, 40},   {5, 264, 40, 264},     {5, 2048, 40, 328},
                       {17, 16, 300, 16}, {17, 23, 300, 23}, {17, 4096, 300, 2408}, {511, 264, 1, 16}};
    for (const auto &each : cases) {
        const Answer answer = reportLuns(adapter, each.target, each.room);
        EXPECT_EQ(answer.status, 0U) << each.target;
        EXPECT_EQ(answer.data.size(), each.delivered) << each.target;
        EXPECT_EQ(wordAt(answer.data, 0), 8 * SD_UINT64{each.units} << 32) << each.target;
    }
    EXPECT_EQ(lunsOf(reportLuns(adapter, 1, 264)), (std::vector<SD_UINT64>{0, 1, 5, 9}));
    const auto sparse = lunsOf(reportLuns(adapter, 6, 2048));
    ASSERT_EQ(sparse.size(), 161U);
    EXPECT_EQ(sparse[115], 255U);
    EXPECT_EQ(sparse[116], 0x4100U) << "flat addressing from 256 on";
    EXPECT_EQ(sparse[160], 0x7FFFU);

    const Answer tooShort = reportLuns(adapter, 1, 15);
    EXPECT_EQ(tooShort.status, ERR_SCSI_CHECK_CONDITION);
    EXPECT_EQ(senseOf(tooShort), 0x052400U);
    const OpenAdapter other(1);
    const Answer worn = reportLuns(other, 64, 264);
    EXPECT_EQ(worn.status, ERR_SCSI_TOLERATED);
    EXPECT_EQ(lunsOf(worn).size(), 2U);
    EXPECT_EQ(senseOf(worn), 0x011701U);
    EXPECT_EQ(inquire(other, 64), 0U);
}

TEST_F(Initiator, WhatIsNotThereFailsWithSenseData)
{
    const OpenAdapter adapter(0);
    const OpenAdapter other(1);
    DEVICEENTRYISCSI entry = sampleEntry(8);
    entry.EntryInfo.IPAddr = {};
    ASSERT_EQ(adapter.write(8, entry), 0U); // neither address nor text of one
    setText(entry.DeviceInfo.targetAddr, toText(poolAddress(8)));
    entry.DeviceInfo.portNumber = 0;
    ASSERT_EQ(adapter.write(9, entry), 0U); // the text alone, and the usual port
    entry.DeviceInfo.portNumber = 3261;
    ASSERT_EQ(adapter.write(10, entry), 0U);
    struct {
        SDMGT_HANDLE handle;
        SD_UINT16 target, lun;
        SD_UINT32 status, sense;
    } const cases[] = {
        {adapter, 1, 2, ERR_SCSI_CHECK_CONDITION, 0x052500},
        {adapter, 1, 0x0105, ERR_SCSI_CHECK_CONDITION, 0x052500},
        {adapter, 1, 0x8001, ERR_SCSI_CHECK_CONDITION, 0x052500},
        {adapter, 6, 0x412C, ERR_SCSI_CHECK_CONDITION, 0x052500},
        {adapter, 42, 0, ERR_SCSI_CHECK_CONDITION, 0x052500},
        {adapter, 2, 0, ERR_NO_SUCH_TARGET, 0x052500},
        {adapter, 512, 0, ERR_NO_SUCH_TARGET, 0x052500},
        {adapter, 100, 0, ERR_UNREACHABLE, 0x0B0800},
        {other, 300, 0, ERR_NO_SUCH_TARGET, 0x052500},
        {adapter, 8, 0, ERR_UNREACHABLE, 0x0B0800},
        {adapter, 9, 0, 0, 0},
        {adapter, 10, 0, ERR_UNREACHABLE, 0x0B0800},
    };
    for (const auto &each : cases) {
        const TARGETINFORMATION unit = unitOf(each.target, each.lun);
        for (const Answer &answer : {send(each.handle, SDSendScsiInquiryCmdiSCSI, unit, 8),
                                     send(each.handle, SDSendScsiReadCapacityCmdiSCSI, unit, 8)}) {
            EXPECT_EQ(answer.status, each.status) << each.target << " " << each.lun;
            EXPECT_EQ(senseOf(answer), each.sense) << each.target << " " << each.lun;
        }
    }
    EXPECT_EQ(send(adapter, SDSendScsiInquiryCmdiSCSI, unitOf(1, 2), 36).data.at(0), 0x7F);
    TARGETINFORMATION otherBus = unitOf(1);
    otherBus.BusNumber = 1;
    EXPECT_EQ(send(adapter, SDSendScsiInquiryCmdiSCSI, otherBus, 36).status, ERR_NO_SUCH_TARGET);
}

TEST_F(Initiator, LogoutEndsTheSessionAndResetMakesItAnew)
{
    const OpenAdapter adapter(0);
    EXPECT_EQ(adapter.logOut(3), ERR_NO_SUCH_ENTRY);
    ASSERT_EQ(adapter.logOut(1), 0U);
    ASSERT_EQ(adapter.logOut(1), 0U) << "a second logout finds nothing to do";
    EXPECT_EQ(adapter.entry(1).DeviceState, 3U);
    DISCISCSINODE node{};
    ASSERT_EQ(SDGetDiscNodePropertyiSCSI(adapter, 0, 1, 0, &node), 0U);
    EXPECT_EQ(node.SessionID, 0);
    EXPECT_EQ(inquire(adapter, 1), ERR_NO_SUCH_TARGET);
    EXPECT_EQ(inquire(adapter, 0), 0U);
    ASSERT_EQ(adapter.errors().size(), 1U);
    EXPECT_EQ(adapter.errors()[0].entryType, 2);
    EXPECT_EQ(adapter.errors()[0].dupErrorCnt, 0);

    ASSERT_EQ(adapter.logOut(100), 0U); // does not answer
    ASSERT_EQ(adapter.ping("10.20.0.1", 1), 0U);
    ASSERT_EQ(adapter.reset(), 0U);
    EXPECT_EQ(adapter.log<ARPTABLE>(LOG_ARP).size(), 3U) << "of the targets alone";
    EXPECT_EQ(adapter.entry(1).DeviceState, 2U);
    EXPECT_NE(adapter.entry(1).TargetSessID, 0);
    EXPECT_EQ(adapter.entry(100).DeviceState, 1U);
    EXPECT_EQ(inquire(adapter, 1), 0U);
    EXPECT_EQ(adapter.errors().back().deviceIndex, 100);
    EXPECT_EQ(adapter.errors().back().errorType, 1);
}

TEST_F(Initiator, ChapDecidesTheLogin)
{
    const OpenAdapter adapter(0);
    const ChapTable factory = adapter.chapTable();
    constexpr SD_UINT16 failed = 0x0201;
    constexpr SD_UINT16 unanswered = 0; // the adapter itself ends the login, or does not begin it
    struct {
        const char *what;
        void (*change)(ChapTable &table);
        SD_UINT16 target, chapIndex;
        std::optional<SD_UINT16> failure; // as it is logged
    } const cases[] = {
        {"right", [](ChapTable &) {}, 1, 1, {}},
        {"none where it is demanded", [](ChapTable &) {}, 1, 0, failed},
        {"another's", [](ChapTable &) {}, 1, 2, failed},
        {"another secret", [](ChapTable &table) { ++table[1].ChapSecret[0]; }, 1, 1, failed},
        {"a part of the secret", [](ChapTable &table) { --table[1].ChapSecretLength; }, 1, 1, failed},
        {"another name", [](ChapTable &table) { setText(table[1].ChapName, "initiator-x"); }, 1, 1, failed},
        {"a record that is not there", [](ChapTable &) {}, 1, 99, unanswered},
        {"a record without a secret", [](ChapTable &table) { table[1] = {}; }, 1, 1, unanswered},
        {"where nobody asks", [](ChapTable &) {}, 0, 1, {}},
        {"both ways", [](ChapTable &) {}, 5, 2, {}},
        {"one way where both are possible", [](ChapTable &table) { table[2].Link = 0; }, 5, 2, {}},
        {"the target proves itself otherwise", [](ChapTable &table) { ++table[3].ChapSecret[0]; }, 5, 2, unanswered},
        {"the target cannot prove itself", [](ChapTable &table) { table[1].Link = 3; }, 1, 1, unanswered},
        {"a link that leads nowhere", [](ChapTable &table) { table[2].Link = 0x0103; }, 5, 2, unanswered},
    };
    for (const auto &each : cases) {
        SCOPED_TRACE(each.what);
        ChapTable table = factory;
        each.change(table);
        ASSERT_EQ(adapter.write(table), 0U);
        DEVICEENTRYISCSI entry = adapter.entry(each.target);
        entry.CHAPTableIndex = each.chapIndex;
        const std::size_t logged = adapter.errors().size();
        ASSERT_EQ(adapter.write(each.target, entry), 0U);
        EXPECT_EQ(adapter.entry(each.target).DeviceState, each.failure ? 1U : 2U);
        const Answer answer = send(adapter, SDSendScsiInquiryCmdiSCSI, unitOf(each.target), 36);
        EXPECT_EQ(answer.status, each.failure ? ERR_AUTHENTICATION : 0U);
        if (each.failure) {
            EXPECT_EQ(senseOf(answer), 0x0B0800U);
            EXPECT_EQ(adapter.errors().back().errorType, 2);
            EXPECT_EQ(adapter.errors().back().errorDetail, each.failure);
        } else {
            EXPECT_EQ(adapter.errors().size(), logged);
        }
    }
    EXPECT_EQ(inquire(OpenAdapter(1), 3), 0U) << "a secret that is no text";
}

TEST_F(Initiator, AnEntryWithoutANameIsDiscovery)
{
    const OpenAdapter adapter(0);
    const std::vector<SD_UINT32> factory = adapter.walk();
    DEVICEENTRYISCSI portal = sampleEntry(0);
    portal.EntryInfo = {};
    portal.EntryInfo.IPAddr = makeAddress("10.20.0.12");
    portal.CHAPTableIndex = 2;
    ASSERT_EQ(adapter.write(41, portal), 0U);
    EXPECT_EQ(adapter.walk(), factory) << "each of its targets has an entry";
    for (const auto &[address, port] : {std::pair("10.20.0.14", 3260), {"10.20.0.12", 3261}, {"10.99.0.1", 0}}) {
        DEVICEENTRYISCSI nobody = portal;
        nobody.EntryInfo.IPAddr = makeAddress(address);
        nobody.DeviceInfo.portNumber = static_cast<SD_UINT16>(port);
        EXPECT_EQ(adapter.write(41, nobody), ERR_UNREACHABLE) << address;
    }
    EXPECT_EQ(adapter.walk(), factory);
    for (const SD_UINT32 index : {5U, 6U, 17U}) {
        ASSERT_EQ(adapter.write(index, {}), 0U);
    }
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(adapter.write(41, portal), 0U);
        EXPECT_EQ(adapter.walk(), (std::vector<SD_UINT32>{0, 1, 41, 42, 43, 44, 100, 511}));
    }
    const DEVICEENTRYISCSI found = adapter.entry(44);
    EXPECT_EQ(getText(found.EntryInfo.iSCSIName), targetName("array2.farm"));
    EXPECT_EQ(getText(found.DeviceInfo.targetAddr), "10.20.0.12");
    EXPECT_EQ(found.CHAPTableIndex, 2);
    EXPECT_EQ(found.DeviceState, 2U);
    EXPECT_EQ(adapter.entry(43).DeviceState, 1U) << "this target has nothing to prove itself by";
    EXPECT_EQ(inquire(adapter, 41), 0U);

    const OpenAdapter full(2);
    portal.EntryInfo.IPAddr = shelfAddress(7);
    portal.CHAPTableIndex = 0;
    EXPECT_EQ(full.write(0, portal), ERR_DATABASE_FULL);
    ASSERT_EQ(full.write(100, {}), 0U);
    ASSERT_EQ(full.write(300, portal), 0U) << "from the index on, and from the beginning";
    EXPECT_EQ(getText(full.entry(100).EntryInfo.iSCSIName), targetName(shelfLabel(7)));
}

TEST_F(Initiator, TheStateOfAnEntryIsWhatBecameOfItsLogin)
{
    const OpenAdapter adapter(0);
    DEVICEENTRYISCSI entry = sampleEntry(7);
    for (const SD_UINT32 written : {1U, 2U, 4U, 77U}) {
        entry.DeviceState = written;
        entry.EntryInfo.IPAddr = poolAddress(7);
        ASSERT_EQ(adapter.write(7, entry), 0U);
        EXPECT_EQ(adapter.entry(7).DeviceState, 2U) << written;
        entry.EntryInfo.IPAddr = poolAddress(8);
        ASSERT_EQ(adapter.write(7, entry), 0U);
        EXPECT_EQ(adapter.entry(7).DeviceState, 1U) << written;
    }
    entry.DeviceState = 3;
    ASSERT_EQ(adapter.write(7, entry), 0U);
    EXPECT_EQ(adapter.entry(7).DeviceState, 3U) << "logged out, as was asked";
    EXPECT_EQ(adapter.errors().back().errorDetail, 0x0203);
    EXPECT_EQ(adapter.errors().back().dupErrorCnt, 3);
}

TEST_F(Initiator, CountersGrowAndAreReset)
{
    const OpenAdapter adapter(0);
    const HBAPORTSTATISCSI before = adapter.counters();
    ASSERT_EQ(inquire(adapter, 1), 0U);
    const HBAPORTSTATISCSI inquired = adapter.counters();
    EXPECT_EQ(inquired.iSCSICompleteIOsCount, before.iSCSICompleteIOsCount + 1);
    EXPECT_EQ(inquired.iSCSIRxBytesCount, before.iSCSIRxBytesCount + 48 + 36);
    EXPECT_EQ(inquired.MACTxFramesCount, before.MACTxFramesCount + 1);
    ASSERT_EQ(adapter.ping("10.20.0.11", 7), 0U);
    EXPECT_EQ(adapter.ping("10.20.0.5", 1), 0U) << "the adapter answers itself";
    EXPECT_EQ(OpenAdapter(3).ping("0.0.0.0", 1), ERR_UNREACHABLE) << "it has no address";
    EXPECT_EQ(adapter.ping("10.99.0.1", 5), ERR_UNREACHABLE);
    EXPECT_EQ(adapter.ping("10.20.0.11", 0), ERR_INVALID_PARAMETER);
    const HBAPORTSTATISCSI pinged = adapter.counters();
    EXPECT_EQ(pinged.IPTxPacketsCount, inquired.IPTxPacketsCount + 13);
    EXPECT_EQ(pinged.IPRxPacketsCount, inquired.IPRxPacketsCount + 8);
    ASSERT_EQ(SDResetStatisticsiSCSI(adapter, 0), 0U);
    EXPECT_TRUE(same(OpenAdapter(0).counters(), {}));
    EXPECT_EQ(OpenAdapter(1).counters().MACRxBytesCount, 18446744073709551615U);

    // Without a place to count, the work is done all the same.
    const auto elsewhere = folder / "elsewhere";
    std::filesystem::create_directory(elsewhere);
    setenv("TAVO_ADAPTER_FLASH", elsewhere.c_str(), 1);
    const OpenAdapter without(0);
    std::filesystem::remove(elsewhere);
    EXPECT_EQ(inquire(without, 1), 0U);
    EXPECT_EQ(SDResetStatisticsiSCSI(without, 0), ERR_FLASH_WRITE);
}

TEST_F(Initiator, LogAndArpTableAreBounded)
{
    const OpenAdapter adapter(2);
    DEVICEENTRYISCSI entry = sampleEntry(0);
    entry.EntryInfo.IPAddr = makeAddress("10.99.0.1");
    const auto started = static_cast<SD_UINT32>(std::time(nullptr));
    // Attempts at targets that do not answer, some twice; the entries of 0 to 129 are enough to push the first two out.
    for (SD_UINT32 index = 0; index < 130; ++index) {
        ASSERT_EQ(adapter.write(index, entry), 0U);
        ASSERT_EQ(adapter.ping(toText(poolAddress(index)), 1), 0U);
    }
    EXPECT_EQ(inquire(adapter, 5), ERR_UNREACHABLE);
    const auto errors = adapter.errors();
    ASSERT_EQ(errors.size(), LOG_CAPACITY);
    EXPECT_EQ(errors.front().deviceIndex, 2);
    EXPECT_EQ(errors[errors.size() - 2].deviceIndex, 129);
    const CONNERRTABLE &last = errors.back();
    EXPECT_EQ(last.deviceIndex, 5);
    EXPECT_EQ(last.dupErrorCnt, 1);
    EXPECT_EQ(last.errorType, 1);
    EXPECT_GE(last.timeStamp.seconds, started);
    EXPECT_LE(last.timeStamp.seconds, started + 600);
    const auto neighbours = adapter.log<ARPTABLE>(LOG_ARP);
    ASSERT_EQ(neighbours.size(), LOG_CAPACITY);
    EXPECT_TRUE(sameAddress(neighbours.front().ipAddr, poolAddress(2)));
    EXPECT_TRUE(sameAddress(neighbours.back().ipAddr, poolAddress(129)));
    EXPECT_EQ(neighbours.back().ipAddr.Type, ADDRESS_IPV4);
    EXPECT_EQ(neighbours.back().valid, 1);
}

TEST_F(Initiator, CrashRecordIsWholeOrNotThere)
{
    OpenAdapter adapter(0);
    const auto record = [&](const std::filesystem::path &file) {
        return SDGetCrashRecord(adapter, file.c_str());
    };
    const auto file = folder / "crash.txt";
    const auto link = folder / "link";
    ASSERT_EQ(record(file), 0U);
    const std::string report = readFile(file);
    EXPECT_NE(report.find("serial number: TV2040A000117"), std::string::npos);
    EXPECT_NE(report.find(targetName("array4.offline")), std::string::npos);
    EXPECT_EQ(report.find("secret"), std::string::npos);
    EXPECT_EQ(report.find("initiator-a"), std::string::npos);
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    std::filesystem::create_symlink(file, link);
    EXPECT_EQ(record(link), 0U);
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms::owner_all) << "the mode stays";
    std::filesystem::permissions(folder, std::filesystem::perms::all);
    EXPECT_EQ(record(link), ERR_OUTPUT_FILE) << "anybody may have made it";
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    if (chown(file.c_str(), 1, 1) == 0) {
        EXPECT_EQ(record(file), ERR_OUTPUT_FILE) << "it is somebody else's";
    }
    SDMGT_HANDLE traced = adapter;
    EXPECT_EQ(SDEnableDebugTraceiSCSI(&traced, link.c_str(), 1), ERR_OUTPUT_FILE);
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0); // a pipe or device stays one
    for (const auto &bad : {folder / "pipe", folder / "none" / "crash", folder, std::filesystem::path()}) {
        EXPECT_EQ(record(bad), ERR_OUTPUT_FILE) << bad;
    }
    for (const auto &left : std::filesystem::directory_iterator(folder)) {
        EXPECT_NE(left.path().extension(), ".new") << "nothing half-written stays";
    }
}

} // namespace
