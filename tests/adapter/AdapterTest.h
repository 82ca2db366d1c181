// What the tests of the software adapter share: a folder for settings of their own, open adapters, records to write.
#pragma once

#include "Fields.h"
#include "StorageNetwork.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

inline std::string readFile(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeFile(const std::filesystem::path &path, const std::string &text)
{
    std::ofstream(path, std::ios::binary) << text;
}

// A record that shows where it came from: every field has a value that follows from seed.
inline DEVICEENTRYISCSI sampleEntry(SD_UINT32 seed)
{
    DEVICEENTRYISCSI entry{};
    entry.Options = static_cast<SD_UINT8>(seed + 1);
    entry.exeCount = static_cast<SD_UINT16>(seed * 3 + 2);
    entry.DeviceInfo.exeThrottle = static_cast<SD_UINT16>(seed * 5 + 3);
    entry.DeviceInfo.portNumber = 3260;
    entry.EntryInfo.IPAddr = poolAddress(seed % POOL_DISKS);
    setText(entry.EntryInfo.iSCSIName, targetName(poolLabel(seed % POOL_DISKS)));
    setText(entry.EntryInfo.Alias, "sample " + std::to_string(seed));
    entry.DeviceState = 1 + seed % 2; // the adapter finds out
    entry.ReservedFlags = seed;
    entry.NextValid = 77; // the adapter does not care
    return entry;
}

class AdapterTest : public testing::Test
{
protected:
    AdapterTest()
    {
        std::string pattern = testing::TempDir() + "tavo-adapter-XXXXXX";
        folder = mkdtemp(pattern.data());
        setenv("TAVO_ADAPTER_FLASH", folder.c_str(), 1);
    }
    ~AdapterTest() override
    {
        for (const SDMGT_HANDLE handle : opened_) {
            SDCloseDeviceiSCSI(handle);
        }
        std::filesystem::remove_all(folder);
    }
    SDMGT_HANDLE open(SD_UINT32 index)
    {
        SDMGT_HANDLE handle = 0;
        EXPECT_EQ(SDOpenDeviceiSCSI(index, &handle), 0U);
        opened_.push_back(handle);
        return handle;
    }
    static DEVICEENTRYISCSI entryAt(SDMGT_HANDLE handle, SD_UINT32 index)
    {
        DEVICEENTRYISCSI entry{};
        EXPECT_EQ(SDGetDDBEntry(handle, &entry, index), 0U);
        return entry;
    }
    // The indices that a walk along NextValid meets.
    static std::vector<SD_UINT32> walk(SDMGT_HANDLE handle)
    {
        std::vector<SD_UINT32> indices;
        SD_UINT32 index = 0;
        do {
            const DEVICEENTRYISCSI entry = entryAt(handle, index);
            if (entry.DeviceState != 0) {
                indices.push_back(index);
            }
            EXPECT_EQ(entry.TargetID, index);
            EXPECT_TRUE(entry.NextValid == 0 || entry.NextValid > index);
            index = entry.NextValid;
        } while (index != 0);
        return indices;
    }
    static HBAPORTSTATISCSI statistics(SDMGT_HANDLE handle)
    {
        HBAPORTSTATISCSI counters{};
        EXPECT_EQ(SDGetStatisticsiSCSI(handle, &counters), 0U);
        return counters;
    }
    static std::vector<CONNERRTABLE> errorLog(SDMGT_HANDLE handle)
    {
        std::vector<CONNERRTABLE> entries(LOG_CAPACITY);
        SD_UINT32 count = 0;
        EXPECT_EQ(SDGetLogs(handle, LOG_CONNECTION_ERRORS, &count, entries.data()), 0U);
        entries.resize(count);
        return entries;
    }
    static std::vector<ARPTABLE> arpTable(SDMGT_HANDLE handle)
    {
        std::vector<ARPTABLE> entries(LOG_CAPACITY);
        SD_UINT32 count = 0;
        EXPECT_EQ(SDGetLogs(handle, LOG_ARP, &count, entries.data()), 0U);
        entries.resize(count);
        return entries;
    }
    static std::string firmwareVersion(SDMGT_HANDLE handle)
    {
        HBAISCSIPORTAL portal{};
        EXPECT_EQ(SDGetHbaDevicePortalPropertyiSCSI(handle, 0, &portal), 0U);
        return getText(portal.FWVersion);
    }
    static SD_UINT32 ping(SDMGT_HANDLE handle, const char *address, SD_UINT16 packets)
    {
        PING request{makeAddress(address), packets, 0};
        request.IPAddr.Type = 0;
        return SDDiagPing(handle, &request);
    }
    void close(SDMGT_HANDLE handle)
    {
        EXPECT_EQ(SDCloseDeviceiSCSI(handle), 0U);
        std::erase(opened_, handle);
    }
    // Writes a few settings to adapter 3, closes it and returns its file.
    std::string writeSettings()
    {
        const SDMGT_HANDLE handle = open(3);
        DEVICEENTRYISCSI entry = sampleEntry(17);
        SD_UINT32 count = 2;
        CHAPTABLE table[2] = {};
        setText(table[1].ChapSecret, "a secret");
        EXPECT_EQ(SDSetDDBEntry(handle, &entry, 17), 0U);
        EXPECT_EQ(SDSetCHAPTable(handle, table, &count), 0U);
        close(handle);
        EXPECT_FALSE(std::filesystem::exists(settings().string() + "-wal")) << "the last one to close tidies up";
        return readFile(settings());
    }
    // The file of the settings.
    std::filesystem::path settings() const
    {
        return folder / "settings.db";
    }

    std::filesystem::path folder;

private:
    std::vector<SDMGT_HANDLE> opened_;
};
