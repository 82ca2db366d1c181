// The software storage network: names and addresses.
#include "SoftwareTargets.h"

#include "Records.h"

#include <cstdio>

namespace
{

// The address of a disk by number below a prefix such as "10.22": 250 to a network.
ISCSIIPADDR numberedAddress(const char *prefix, SD_UINT32 disk)
{
    return makeAddress(std::string(prefix) + "." + std::to_string(1 + disk / 250) + "."
                       + std::to_string(1 + disk % 250));
}

std::string numberedLabel(const char *prefix, SD_UINT32 disk)
{
    char label[40];
    std::snprintf(label, sizeof label, "%s%04u", prefix, static_cast<unsigned>(disk));
    return label;
}

} // namespace

std::string targetName(std::string_view label)
{
    return "iqn.2004-07.com.varden.tavo:" + std::string(label);
}

std::string poolLabel(SD_UINT32 disk)
{
    return numberedLabel("pool.disk", disk);
}

ISCSIIPADDR poolAddress(SD_UINT32 disk)
{
    return numberedAddress("10.22", disk);
}

std::string shelfLabel(SD_UINT32 disk)
{
    return numberedLabel("shelf.disk", disk);
}

ISCSIIPADDR shelfAddress(SD_UINT32 disk)
{
    return numberedAddress("10.24", disk);
}

ISCSIIPADDR shelfAddress6(SD_UINT32 disk)
{
    char text[24];
    std::snprintf(text, sizeof text, "fd00:24::%x", static_cast<unsigned>(disk + 1));
    return makeAddress(text);
}

std::string longestLabel()
{
    constexpr std::size_t nameLimit = 223;
    std::string label = "array3.long-";
    const std::size_t prefix = targetName("").size();
    while (prefix + label.size() < nameLimit) {
        label += static_cast<char>('a' + label.size() % 26);
    }
    return label;
}
