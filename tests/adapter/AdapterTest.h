// What the tests of the software adapter share: a folder for settings of their own, records to write.
#pragma once

#include "OpenAdapter.h"
#include "Sandbox.h"
#include "StorageNetwork.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

inline std::string readFile(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline std::string writeFile(const std::filesystem::path &path, const std::string &text)
{
    std::ofstream(path, std::ios::binary) << text;
    return path;
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
        setenv("TAVO_ADAPTER_FLASH", folder.c_str(), 1);
    }
    // Writes a few settings to adapter 3, closes it and returns the file's contents.
    std::string writeSettings() const
    {
        {
            const OpenAdapter adapter(3);
            ChapTable table(2);
            setText(table[1].ChapSecret, "a secret");
            EXPECT_EQ(adapter.write(17, sampleEntry(17)), 0U);
            EXPECT_EQ(adapter.write(table), 0U);
        }
        EXPECT_FALSE(std::filesystem::exists(settings.string() + "-wal")) << "the last one to close tidies up";
        return readFile(settings);
    }

    const TemporaryFolder temporary;
    const std::filesystem::path folder = temporary.path;
    const std::filesystem::path settings = folder / "settings.db";
};
