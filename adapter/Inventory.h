// The other half of the seam: which adapters there are, and how they are before anybody has changed anything. Declared
// here, defined by what is linked (software/ or host/).
#pragma once

#include "Activity.h"
#include "Settings.h"

#include <array>
#include <memory>
#include <string>

using MacAddress = std::array<SD_UINT8, 6>;

// What cannot be changed about an adapter. Texts are cut to their field where they go out.
struct AdapterModel {
    SD_UINT32 index = 0;
    std::string key;        // its settings are kept under this name, whatever its index is next time
    std::string deviceName; // also its first alias
    std::string serialNumber;
    std::string manufacturer;
    std::string model;
    std::string optionRomVersion;
    std::string firmwareVersion;
    MacAddress mac{};
    SD_UINT16 type = 0;
    SD_UINT32 driverAttributes = 0;
    SD_UINT32 firmwareAttributes = 0;
    bool isnsSupported = false;
    DRIVERINFO driver{};
    CHIPINFO chip{};
};

// What SDGetVersioniSCSI says.
std::string libraryVersion();

// The adapter with this index as it is now, or null.
std::shared_ptr<const AdapterModel> findModel(SD_UINT32 index);

// Settings and counters of an adapter for which none have been stored.
Settings factorySettings(const AdapterModel &model);
Activity factoryActivity(const AdapterModel &model);
// The firmware's default block, and the contents proposed for a new entry.
INITFWISCSI defaultBlock(const AdapterModel &model);
DEVICEENTRYISCSI defaultEntry(const AdapterModel &model);
