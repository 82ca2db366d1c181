// An adapter as its callers see it.
#pragma once

#include "Exported.h"
#include "Fields.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

using ChapTable = std::vector<CHAPTABLE>;

template <typename Record>
bool same(const Record &one, const Record &other)
{
    return std::memcmp(&one, &other, sizeof one) == 0;
}

inline bool same(const ChapTable &one, const ChapTable &other)
{
    return std::ranges::equal(one, other, same<CHAPTABLE>);
}

// An open adapter, closed at the end. What reads expects to succeed, what writes answers the status.
class OpenAdapter
{
public:
    explicit OpenAdapter(SD_UINT32 index)
    {
        EXPECT_EQ(SDOpenDeviceiSCSI(index, &handle_), 0U);
    }
    OpenAdapter(const OpenAdapter &) = delete;
    OpenAdapter &operator=(const OpenAdapter &) = delete;
    ~OpenAdapter()
    {
        close();
    }
    void close()
    {
        if (handle_ != 0) {
            EXPECT_EQ(SDCloseDeviceiSCSI(std::exchange(handle_, 0)), 0U);
        }
    }
    operator SDMGT_HANDLE() const
    {
        return handle_;
    }

    SD_UINT32 write(SD_UINT32 index, DEVICEENTRYISCSI entry) const
    {
        return SDSetDDBEntry(handle_, &entry, index);
    }
    SD_UINT32 write(ChapTable table) const
    {
        auto count = static_cast<SD_UINT32>(table.size());
        return SDSetCHAPTable(handle_, table.data(), &count);
    }
    SD_UINT32 logOut(SD_UINT16 target) const
    {
        LOGOUTISCSI logout{};
        logout.TargetID = target;
        return SDSendiSCSILogout(handle_, &logout);
    }
    SD_UINT32 reset() const
    {
        HBARESET request{};
        return SDResetHBA(handle_, &request);
    }
    SD_UINT32 ping(const std::string &address, SD_UINT16 packets) const
    {
        PING request{makeAddress(address), packets, 0};
        request.IPAddr.Type = 0;
        return SDDiagPing(handle_, &request);
    }

    // What an operation delivers.
    template <typename Record>
    Record read(SD_UINT32 (*operation)(SDMGT_HANDLE, Record *)) const
    {
        Record record{};
        EXPECT_EQ(operation(handle_, &record), 0U);
        return record;
    }
    SD_UINT32 count() const
    {
        return read(SDGetDDBEntryNum);
    }
    HBAPORTSTATISCSI counters() const
    {
        return read(SDGetStatisticsiSCSI);
    }
    HBAISCSIPORTAL portal() const
    {
        HBAISCSIPORTAL portal{};
        EXPECT_EQ(SDGetHbaDevicePortalPropertyiSCSI(handle_, 0, &portal), 0U);
        return portal;
    }
    DEVICEENTRYISCSI entry(SD_UINT32 index) const
    {
        DEVICEENTRYISCSI entry{};
        EXPECT_EQ(SDGetDDBEntry(handle_, &entry, index), 0U);
        return entry;
    }
    // The indices that a walk along NextValid meets.
    std::vector<SD_UINT32> walk() const
    {
        std::vector<SD_UINT32> indices;
        SD_UINT32 index = 0;
        do {
            const DEVICEENTRYISCSI met = entry(index);
            EXPECT_EQ(met.TargetID, index);
            if (met.DeviceState != 0) {
                indices.push_back(index);
            }
            EXPECT_TRUE(met.NextValid == 0 || met.NextValid > index) << index << " leads to " << met.NextValid;
            index = met.NextValid > index ? met.NextValid : 0;
        } while (index != 0);
        return indices;
    }
    ChapTable chapTable() const
    {
        ChapTable table(CHAP_CAPACITY);
        SD_UINT32 count = CHAP_CAPACITY;
        EXPECT_EQ(SDGetCHAPTable(handle_, table.data(), &count), 0U);
        table.resize(count);
        return table;
    }
    // The entries of a log.
    template <typename Entry>
    std::vector<Entry> log(SD_UINT32 type) const
    {
        std::vector<Entry> entries(LOG_CAPACITY);
        SD_UINT32 count = 0;
        EXPECT_EQ(SDGetLogs(handle_, type, &count, entries.data()), 0U);
        entries.resize(count);
        return entries;
    }
    std::vector<CONNERRTABLE> errors() const
    {
        return log<CONNERRTABLE>(LOG_CONNECTION_ERRORS);
    }

private:
    SDMGT_HANDLE handle_ = 0;
};
