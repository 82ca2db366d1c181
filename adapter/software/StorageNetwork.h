// Names and addresses of the software storage network, for whoever writes device database entries that lead there.
#pragma once

#include "Exported.h"

#include <string>
#include <string_view>

inline constexpr SD_UINT32 POOL_DISKS = 512;  // targets of the pool, which fill a device database
inline constexpr SD_UINT32 SHELF_DISKS = 600; // targets that only iSNS servers tell of

// The iSCSI name of a target from its last part.
std::string targetName(std::string_view label);

// Label and address of the disk with this number.
std::string poolLabel(SD_UINT32 disk);
ISCSIIPADDR poolAddress(SD_UINT32 disk);
std::string shelfLabel(SD_UINT32 disk);
ISCSIIPADDR shelfAddress(SD_UINT32 disk);
ISCSIIPADDR shelfAddress6(SD_UINT32 disk);

// A name as long as iSCSI allows, 223 characters.
std::string longestLabel();
