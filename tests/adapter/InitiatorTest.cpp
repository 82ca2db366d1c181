// What the adapter does on the network: SCSI commands, sessions, pings; what it counts and logs of that.
#include "AdapterTest.h"

#include <sys/stat.h>

#include <algorithm>
#include <numeric>
#include <optional>

namespace
{

using Initiator = AdapterTest;
using ByteList = std::vector<SD_UINT8>;

constexpr SD_UINT8 FILL = 0xEE; // what the response areas hold before a command

struct Answer {
    SD_UINT32 status;
    ByteList data;
    ByteList sense;
};

enum class Command { reportLuns, inquiry, readCapacity };

Answer send(SDMGT_HANDLE handle, Command command, SD_UINT16 targetId, SD_UINT16 lun, SD_UINT32 size)
{
    TARGETINFORMATION target{};
    target.TargetID = targetId;
    target.LUN = lun;
    Answer answer{0, ByteList(size + 1, FILL), ByteList(SENSE_SIZE + 1, FILL)};
    void *data = answer.data.data();
    void *sense = answer.sense.data();
    if (command == Command::reportLuns) {
        answer.status = SDSendScsiReportLunsCmdiSCSI(handle, &target, data, size, sense, SENSE_SIZE);
    } else if (command == Command::inquiry) {
        answer.status = SDSendScsiInquiryCmdiSCSI(handle, &target, data, size, sense, SENSE_SIZE);
    } else {
        answer.status = SDSendScsiReadCapacityCmdiSCSI(handle, &target, static_cast<READ_CAPACITY_DATA *>(data), size,
                                                       sense, SENSE_SIZE);
    }
    EXPECT_EQ(answer.data.back(), FILL) << "written beyond the response area";
    EXPECT_EQ(answer.sense.back(), FILL) << "written beyond the sense area";
    answer.data.pop_back();
    answer.sense.pop_back();
    return answer;
}

SD_UINT32 bigEndian(const ByteList &bytes, std::size_t place, int count)
{
    return std::accumulate(bytes.begin() + static_cast<std::ptrdiff_t>(place),
                           bytes.begin() + static_cast<std::ptrdiff_t>(place) + count, SD_UINT32{0},
                           [](SD_UINT32 value, SD_UINT8 byte) { return (value << 8) | byte; });
}

// Sense key, code and qualifier of fixed-format sense data; 0 when there is none.
SD_UINT32 senseOf(const Answer &answer)
{
    const ByteList &sense = answer.sense;
    if (sense[0] == 0) {
        return 0;
    }
    EXPECT_EQ(sense[0], 0x70);
    EXPECT_EQ(sense[7], 10);
    return (SD_UINT32{sense[2]} << 16) | (SD_UINT32{sense[12]} << 8) | sense[13];
}

std::vector<SD_UINT32> lunsOf(const Answer &answer, std::size_t entries)
{
    std::vector<SD_UINT32> luns;
    for (std::size_t entry = 0; entry < entries; ++entry) {
        luns.push_back(bigEndian(answer.data, 8 + 8 * entry, 2));
        EXPECT_EQ(bigEndian(answer.data, 10 + 8 * entry, 4), 0U);
    }
    return luns;
}

TEST_F(Initiator, ReportLunsDeliversTheStandardsList)
{
    const SDMGT_HANDLE handle = open(0);
    struct {
        SD_UINT16 target;
        SD_UINT32 size, units;
    } const cases[] = {{0, 264, 1},     {1, 264, 4},     {42, 264, 0},  {5, 264, 40},  {5, 2048, 40}, {6, 2048, 161},
                       {17, 2048, 300}, {17, 4096, 300}, {17, 16, 300}, {17, 23, 300}, {511, 264, 1}};
    for (const auto &each : cases) {
        const Answer answer = send(handle, Command::reportLuns, each.target, 0, each.size);
        ASSERT_EQ(answer.status, 0U) << each.target;
        EXPECT_EQ(bigEndian(answer.data, 0, 4), 8 * each.units) << each.target;
        EXPECT_EQ(bigEndian(answer.data, 4, 4), 0U);
        const std::size_t sent = std::min(8 + 8 * each.units, each.size);
        EXPECT_TRUE(std::all_of(answer.data.begin() + static_cast<std::ptrdiff_t>(sent), answer.data.end(),
                                [](SD_UINT8 byte) { return byte == FILL; }));
        const auto luns = lunsOf(answer, (sent - 8) / 8);
        for (std::size_t number = 1; number < luns.size(); ++number) {
            EXPECT_LT(luns[number - 1], luns[number]);
        }
    }
    EXPECT_EQ(lunsOf(send(handle, Command::reportLuns, 1, 0, 264), 4), (std::vector<SD_UINT32>{0, 1, 5, 9}));
    const auto sparse = lunsOf(send(handle, Command::reportLuns, 6, 0, 2048), 161);
    EXPECT_EQ(sparse[115], 255U);
    EXPECT_EQ(sparse[116], 0x4100U) << "flat addressing from 256 on";
    EXPECT_EQ(sparse[160], 0x7FFFU);

    const Answer tooShort = send(handle, Command::reportLuns, 1, 0, 15);
    EXPECT_EQ(tooShort.status, ERR_SCSI_CHECK_CONDITION);
    EXPECT_EQ(senseOf(tooShort), 0x052400U);
    const Answer worn = send(open(1), Command::reportLuns, 64, 0, 264);
    EXPECT_EQ(worn.status, ERR_SCSI_TOLERATED);
    EXPECT_EQ(bigEndian(worn.data, 0, 4), 16U);
    EXPECT_EQ(senseOf(worn), 0x011701U);
    EXPECT_EQ(send(open(1), Command::inquiry, 64, 0, 36).status, 0U);
}

TEST_F(Initiator, WhatIsNotThereFailsWithSenseData)
{
    const SDMGT_HANDLE handle = open(0);
    DEVICEENTRYISCSI entry = sampleEntry(8);
    entry.EntryInfo.IPAddr = {};
    ASSERT_EQ(SDSetDDBEntry(handle, &entry, 8), 0U); // neither address nor text of one
    setText(entry.DeviceInfo.targetAddr, toText(poolAddress(8)));
    ASSERT_EQ(SDSetDDBEntry(handle, &entry, 9), 0U); // the text alone
    entry.DeviceInfo.portNumber = 3261;
    ASSERT_EQ(SDSetDDBEntry(handle, &entry, 10), 0U);
    struct {
        SD_UINT32 adapter;
        SD_UINT16 target, lun;
        SD_UINT32 status, sense;
    } const cases[] = {
        {0, 1, 2, ERR_SCSI_CHECK_CONDITION, 0x052500},
        {0, 1, 0x0105, ERR_SCSI_CHECK_CONDITION, 0x052500},
        {0, 1, 0x8001, ERR_SCSI_CHECK_CONDITION, 0x052500},
        {0, 6, 0x412C, ERR_SCSI_CHECK_CONDITION, 0x052500},
        {0, 42, 0, ERR_SCSI_CHECK_CONDITION, 0x052500},
        {0, 2, 0, ERR_NO_SUCH_TARGET, 0x052500},
        {0, 512, 0, ERR_NO_SUCH_TARGET, 0x052500},
        {0, 100, 0, ERR_UNREACHABLE, 0x0B0800},
        {1, 300, 0, ERR_NO_SUCH_TARGET, 0x052500},
        {0, 8, 0, ERR_UNREACHABLE, 0x0B0800},
        {0, 9, 0, 0, 0},
        {0, 10, 0, ERR_UNREACHABLE, 0x0B0800},
    };
    for (const auto &each : cases) {
        for (const Command command : {Command::inquiry, Command::readCapacity}) {
            const Answer answer = send(open(each.adapter), command, each.target, each.lun, 8);
            EXPECT_EQ(answer.status, each.status) << each.target << " " << each.lun;
            EXPECT_EQ(senseOf(answer), each.sense) << each.target << " " << each.lun;
        }
    }
    EXPECT_EQ(send(handle, Command::inquiry, 1, 2, 36).data[0], 0x7F);
    TARGETINFORMATION otherBus{};
    otherBus.BusNumber = 1;
    SD_UINT8 data[36];
    EXPECT_EQ(SDSendScsiInquiryCmdiSCSI(handle, &otherBus, data, 36, nullptr, 0), ERR_NO_SUCH_TARGET);
}

TEST_F(Initiator, LogoutEndsTheSessionAndResetMakesItAnew)
{
    const SDMGT_HANDLE handle = open(0);
    LOGOUTISCSI logout{};
    logout.TargetID = 3;
    EXPECT_EQ(SDSendiSCSILogout(handle, &logout), ERR_NO_SUCH_ENTRY);
    logout.TargetID = 1;
    ASSERT_EQ(SDSendiSCSILogout(handle, &logout), 0U);
    ASSERT_EQ(SDSendiSCSILogout(handle, &logout), 0U) << "a second logout finds nothing to do";
    EXPECT_EQ(entryAt(handle, 1).DeviceState, 3U);
    DISCISCSINODE node{};
    ASSERT_EQ(SDGetDiscNodePropertyiSCSI(handle, 0, 1, 0, &node), 0U);
    EXPECT_EQ(node.SessionID, 0);
    EXPECT_EQ(send(handle, Command::inquiry, 1, 0, 36).status, ERR_NO_SUCH_TARGET);
    EXPECT_EQ(send(handle, Command::inquiry, 0, 0, 36).status, 0U);
    ASSERT_EQ(errorLog(handle).size(), 1U);
    EXPECT_EQ(errorLog(handle)[0].entryType, 2);

    logout.TargetID = 100; // does not answer
    ASSERT_EQ(SDSendiSCSILogout(handle, &logout), 0U);
    HBARESET reset{};
    ASSERT_EQ(SDResetHBA(handle, &reset), 0U);
    EXPECT_EQ(entryAt(handle, 1).DeviceState, 2U);
    EXPECT_NE(entryAt(handle, 1).TargetSessID, 0);
    EXPECT_EQ(entryAt(handle, 100).DeviceState, 1U);
    EXPECT_EQ(send(handle, Command::inquiry, 1, 0, 36).status, 0U);
    EXPECT_EQ(errorLog(handle).back().deviceIndex, 100);
    EXPECT_EQ(errorLog(handle).back().errorType, 1);
}

TEST_F(Initiator, ChapDecidesTheLogin)
{
    const SDMGT_HANDLE handle = open(0);
    std::vector<CHAPTABLE> factory(4);
    SD_UINT32 records = 4;
    ASSERT_EQ(SDGetCHAPTable(handle, factory.data(), &records), 0U);
    const auto withRecord = [&](std::size_t number, auto change) {
        std::vector<CHAPTABLE> table = factory;
        change(table[number]);
        return table;
    };
    const auto otherSecret = [](CHAPTABLE &record) {
        record.ChapSecret[0] ^= 1;
    };
    const auto shorterSecret = [](CHAPTABLE &record) {
        --record.ChapSecretLength;
    };
    const auto otherName = [](CHAPTABLE &record) {
        setText(record.ChapName, "initiator-x");
    };
    const auto linkTo = [](SD_UINT16 link) {
        return [link](CHAPTABLE &record) {
            record.Link = link;
        };
    };
    constexpr SD_UINT16 failed = 0x0201;
    struct {
        const char *what;
        std::vector<CHAPTABLE> table;
        SD_UINT16 target, chapIndex;
        SD_UINT32 status;
        SD_UINT16 detail;
    } const cases[] = {
        {"right", factory, 1, 1, 0, 0},
        {"none where it is demanded", factory, 1, 0, ERR_AUTHENTICATION, failed},
        {"another's", factory, 1, 2, ERR_AUTHENTICATION, failed},
        {"another secret", withRecord(1, otherSecret), 1, 1, ERR_AUTHENTICATION, failed},
        {"a part of the secret", withRecord(1, shorterSecret), 1, 1, ERR_AUTHENTICATION, failed},
        {"another name", withRecord(1, otherName), 1, 1, ERR_AUTHENTICATION, failed},
        {"a record that is not there", factory, 1, 99, ERR_AUTHENTICATION, 0},
        {"a record without a secret", withRecord(1, [](CHAPTABLE &record) { record = {}; }), 1, 1, ERR_AUTHENTICATION,
         0},
        {"where nobody asks", factory, 0, 1, 0, 0},
        {"both ways", factory, 5, 2, 0, 0},
        {"one way where both are possible", withRecord(2, linkTo(0)), 5, 2, 0, 0},
        {"the target proves itself otherwise", withRecord(3, otherSecret), 5, 2, ERR_AUTHENTICATION, 0},
        {"the target cannot prove itself", withRecord(1, linkTo(3)), 1, 1, ERR_AUTHENTICATION, 0},
        {"a link that leads nowhere", withRecord(2, linkTo(0x0105)), 5, 2, ERR_AUTHENTICATION, 0},
    };
    for (const auto &each : cases) {
        auto table = each.table;
        ASSERT_EQ(SDSetCHAPTable(handle, table.data(), &records), 0U);
        DEVICEENTRYISCSI entry = entryAt(handle, each.target);
        entry.CHAPTableIndex = each.chapIndex;
        const std::size_t logged = errorLog(handle).size();
        ASSERT_EQ(SDSetDDBEntry(handle, &entry, each.target), 0U);
        EXPECT_EQ(entryAt(handle, each.target).DeviceState, each.status == 0 ? 2U : 1U) << each.what;
        const Answer answer = send(handle, Command::inquiry, each.target, 0, 36);
        EXPECT_EQ(answer.status, each.status) << each.what;
        if (each.status != 0) {
            EXPECT_EQ(senseOf(answer), 0x0B0800U) << each.what;
            EXPECT_EQ(errorLog(handle).back().errorType, 2) << each.what;
            EXPECT_EQ(errorLog(handle).back().errorDetail, each.detail) << each.what;
        } else {
            EXPECT_EQ(errorLog(handle).size(), logged) << each.what;
        }
    }
    EXPECT_EQ(send(open(1), Command::inquiry, 3, 0, 36).status, 0U) << "a secret that is no text";
}

TEST_F(Initiator, AnEntryWithoutANameIsDiscovery)
{
    const SDMGT_HANDLE handle = open(0);
    const std::vector<SD_UINT32> factory = walk(handle);
    DEVICEENTRYISCSI portal = sampleEntry(0);
    portal.EntryInfo = {};
    portal.EntryInfo.IPAddr = makeAddress("10.20.0.12");
    portal.CHAPTableIndex = 2;
    ASSERT_EQ(SDSetDDBEntry(handle, &portal, 41), 0U);
    EXPECT_EQ(walk(handle), factory) << "each of its targets has an entry";
    for (const auto &[address, port] : {std::pair("10.20.0.14", 3260), {"10.20.0.12", 3261}, {"10.99.0.1", 0}}) {
        DEVICEENTRYISCSI nobody = portal;
        nobody.EntryInfo.IPAddr = makeAddress(address);
        nobody.DeviceInfo.portNumber = static_cast<SD_UINT16>(port);
        EXPECT_EQ(SDSetDDBEntry(handle, &nobody, 41), ERR_UNREACHABLE) << address;
    }
    EXPECT_EQ(walk(handle), factory);
    DEVICEENTRYISCSI free{};
    for (const SD_UINT32 index : {5U, 6U, 17U}) {
        ASSERT_EQ(SDSetDDBEntry(handle, &free, index), 0U);
    }
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(SDSetDDBEntry(handle, &portal, 41), 0U);
        EXPECT_EQ(walk(handle), (std::vector<SD_UINT32>{0, 1, 41, 42, 43, 44, 100, 511}));
    }
    const DEVICEENTRYISCSI found = entryAt(handle, 44);
    EXPECT_EQ(getText(found.EntryInfo.iSCSIName), targetName("array2.farm"));
    EXPECT_EQ(getText(found.DeviceInfo.targetAddr), "10.20.0.12");
    EXPECT_EQ(found.CHAPTableIndex, 2);
    EXPECT_EQ(found.DeviceState, 2U);
    EXPECT_EQ(entryAt(handle, 43).DeviceState, 1U) << "this target has nothing to prove itself by";
    EXPECT_EQ(send(handle, Command::reportLuns, 41, 0, 264).status, 0U);

    const SDMGT_HANDLE full = open(2);
    portal.EntryInfo.IPAddr = shelfAddress(7);
    portal.CHAPTableIndex = 0;
    EXPECT_EQ(SDSetDDBEntry(full, &portal, 0), ERR_DATABASE_FULL);
    ASSERT_EQ(SDSetDDBEntry(full, &free, 100), 0U);
    ASSERT_EQ(SDSetDDBEntry(full, &portal, 300), 0U) << "from the index on, and from the beginning";
    EXPECT_EQ(getText(entryAt(full, 100).EntryInfo.iSCSIName), targetName(shelfLabel(7)));
}

TEST_F(Initiator, TheStateOfAnEntryIsWhatBecameOfItsLogin)
{
    const SDMGT_HANDLE handle = open(0);
    DEVICEENTRYISCSI entry = sampleEntry(7);
    for (const SD_UINT32 written : {1U, 2U, 4U, 77U}) {
        entry.DeviceState = written;
        entry.EntryInfo.IPAddr = poolAddress(7);
        ASSERT_EQ(SDSetDDBEntry(handle, &entry, 7), 0U);
        EXPECT_EQ(entryAt(handle, 7).DeviceState, 2U) << written;
        entry.EntryInfo.IPAddr = poolAddress(8);
        ASSERT_EQ(SDSetDDBEntry(handle, &entry, 7), 0U);
        EXPECT_EQ(entryAt(handle, 7).DeviceState, 1U) << written;
    }
    entry.EntryInfo.IPAddr = poolAddress(7);
    entry.DeviceState = 3;
    ASSERT_EQ(SDSetDDBEntry(handle, &entry, 7), 0U);
    EXPECT_EQ(entryAt(handle, 7).DeviceState, 3U) << "logged out, as was asked";
    EXPECT_EQ(errorLog(handle).back().errorDetail, 0x0203);
    EXPECT_EQ(errorLog(handle).back().dupErrorCnt, 3);
}

TEST_F(Initiator, CountersGrowAndAreReset)
{
    const SDMGT_HANDLE handle = open(0);
    const HBAPORTSTATISCSI before = statistics(handle);
    ASSERT_EQ(send(handle, Command::inquiry, 1, 0, 36).status, 0U);
    HBAPORTSTATISCSI after = statistics(handle);
    EXPECT_EQ(after.iSCSICompleteIOsCount, before.iSCSICompleteIOsCount + 1);
    EXPECT_EQ(after.iSCSIRxBytesCount, before.iSCSIRxBytesCount + 48 + 36);
    EXPECT_EQ(after.MACTxFramesCount, before.MACTxFramesCount + 1);
    ASSERT_EQ(ping(handle, "10.20.0.11", 7), 0U);
    EXPECT_EQ(ping(handle, "10.99.0.1", 5), ERR_UNREACHABLE);
    EXPECT_EQ(ping(handle, "10.20.0.11", 0), ERR_INVALID_PARAMETER);
    const HBAPORTSTATISCSI pinged = statistics(handle);
    EXPECT_EQ(pinged.IPTxPacketsCount, after.IPTxPacketsCount + 12);
    EXPECT_EQ(pinged.IPRxPacketsCount, after.IPRxPacketsCount + 7);
    ASSERT_EQ(SDResetStatisticsiSCSI(handle, 0), 0U);
    after = statistics(open(0));
    const HBAPORTSTATISCSI zero{};
    EXPECT_EQ(std::memcmp(&after, &zero, sizeof zero), 0);
    EXPECT_EQ(statistics(open(1)).MACRxBytesCount, 18446744073709551615U);

    // Without a place to count, the work is done all the same.
    const auto elsewhere = folder / "elsewhere";
    std::filesystem::create_directory(elsewhere);
    setenv("TAVO_ADAPTER_FLASH", elsewhere.c_str(), 1);
    const SDMGT_HANDLE without = open(0);
    std::filesystem::remove(elsewhere);
    EXPECT_EQ(send(without, Command::inquiry, 1, 0, 36).status, 0U);
    EXPECT_EQ(SDResetStatisticsiSCSI(without, 0), ERR_FLASH_WRITE);
}

TEST_F(Initiator, LogAndArpTableAreBounded)
{
    const SDMGT_HANDLE handle = open(2);
    DEVICEENTRYISCSI entry = sampleEntry(0);
    entry.EntryInfo.IPAddr = makeAddress("10.99.0.1");
    const auto started = static_cast<SD_UINT32>(time(nullptr));
    // Attempts at targets that do not answer, some twice; the entries of 0 to 129 are enough to push the first two out.
    for (SD_UINT32 index = 0; index < 130; ++index) {
        ASSERT_EQ(SDSetDDBEntry(handle, &entry, index), 0U);
        ASSERT_EQ(ping(handle, toText(poolAddress(index)).c_str(), 1), 0U);
    }
    EXPECT_EQ(send(handle, Command::inquiry, 5, 0, 36).status, ERR_UNREACHABLE);
    const auto errors = errorLog(handle);
    ASSERT_EQ(errors.size(), LOG_CAPACITY);
    EXPECT_EQ(errors.front().deviceIndex, 2);
    EXPECT_EQ(errors[errors.size() - 2].deviceIndex, 129);
    EXPECT_EQ(errors.back().deviceIndex, 5);
    EXPECT_EQ(errors.back().dupErrorCnt, 1);
    EXPECT_EQ(errors.back().errorType, 1);
    EXPECT_GE(errors.back().timeStamp.seconds, started);
    EXPECT_LE(errors.back().timeStamp.seconds, started + 600);
    const auto neighbours = arpTable(handle);
    ASSERT_EQ(neighbours.size(), LOG_CAPACITY);
    EXPECT_TRUE(sameAddress(neighbours.front().ipAddr, poolAddress(2)));
    EXPECT_TRUE(sameAddress(neighbours.back().ipAddr, poolAddress(129)));
    EXPECT_EQ(neighbours.back().ipAddr.Type, ADDRESS_IPV4);
    EXPECT_EQ(neighbours.back().valid, 1);
    HBARESET reset{};
    ASSERT_EQ(SDResetHBA(handle, &reset), 0U);
    EXPECT_EQ(arpTable(handle).size(), LOG_CAPACITY) << "the sessions made anew fill the table again";
}

TEST_F(Initiator, NothingAnswersWithoutLink)
{
    const SDMGT_HANDLE handle = open(3);
    EXPECT_EQ(ping(handle, "10.20.0.11", 1), ERR_UNREACHABLE);
    EXPECT_EQ(ping(handle, "0.0.0.0", 1), ERR_UNREACHABLE);
    DEVICEENTRYISCSI entry = sampleEntry(4);
    ASSERT_EQ(SDSetDDBEntry(handle, &entry, 4), 0U);
    EXPECT_EQ(send(handle, Command::inquiry, 4, 0, 36).status, ERR_UNREACHABLE);
    EXPECT_EQ(errorLog(handle).size(), 1U);
    EXPECT_EQ(ping(open(0), "10.20.0.5", 1), 0U) << "the adapter answers itself";
}

TEST_F(Initiator, CrashRecordIsWholeOrNotThere)
{
    const SDMGT_HANDLE handle = open(0);
    const auto file = folder / "crash.txt";
    ASSERT_EQ(SDGetCrashRecord(handle, file.c_str()), 0U);
    const std::string report = readFile(file);
    EXPECT_NE(report.find("serial number: TV2040A000117"), std::string::npos);
    EXPECT_NE(report.find(targetName("array4.offline")), std::string::npos);
    EXPECT_EQ(report.find("secret"), std::string::npos);
    EXPECT_EQ(report.find("initiator-a"), std::string::npos);
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    ASSERT_EQ(SDGetCrashRecord(handle, file.c_str()), 0U);
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms::owner_all) << "the mode stays";
    std::filesystem::create_symlink(file, folder / "link");
    EXPECT_EQ(SDGetCrashRecord(handle, (folder / "link").c_str()), 0U);
    std::filesystem::permissions(folder, std::filesystem::perms::all);
    EXPECT_EQ(SDGetCrashRecord(handle, (folder / "link").c_str()), ERR_OUTPUT_FILE) << "anybody may have made it";
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
    SDMGT_HANDLE traced = handle;
    EXPECT_EQ(SDEnableDebugTraceiSCSI(&traced, (folder / "link").c_str(), 1), ERR_OUTPUT_FILE);
    EXPECT_EQ(SDGetCrashRecord(handle, (folder / "none" / "crash").c_str()), ERR_OUTPUT_FILE);
    EXPECT_EQ(SDGetCrashRecord(handle, folder.c_str()), ERR_OUTPUT_FILE);
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(SDGetCrashRecord(handle, (folder / "pipe").c_str()), ERR_OUTPUT_FILE) << "a pipe or device stays one";
    EXPECT_EQ(SDGetCrashRecord(handle, ""), ERR_OUTPUT_FILE);
    for (const auto &left : std::filesystem::directory_iterator(folder)) {
        EXPECT_NE(left.path().extension(), ".new") << "nothing half-written stays";
    }
}

} // namespace
