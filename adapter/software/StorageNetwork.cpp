#include "StorageNetwork.h"

#include "Fields.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace
{

constexpr SD_UINT64 GIBIBYTE = 1ULL << 30;

constexpr UnitRange gibibytes(SD_UINT32 first, SD_UINT32 count, SD_UINT64 size, SD_UINT32 blockSize = 512)
{
    return {first, count, blockSize, size * GIBIBYTE / blockSize};
}

constexpr UnitRange ONE_DISK[]{gibibytes(0, 1, 64)};
constexpr UnitRange TWO_DISKS[]{gibibytes(0, 2, 64)};
constexpr UnitRange MANY_DISKS[]{gibibytes(0, 40, 100)};
constexpr UnitRange FARM_DISKS[]{gibibytes(0, 300, 10)};
constexpr UnitRange SPARSE_DISKS[]{
    gibibytes(0, 100, 20),
    gibibytes(240, 60, 20),
    gibibytes(16383, 1, 20),
};
// Not contiguous; one with long blocks, one beyond 2 TiB, one of a single block.
constexpr UnitRange DATA_DISKS[]{
    gibibytes(0, 1, 500),
    gibibytes(1, 1, 1024, 4096),
    gibibytes(5, 1, 3072),
    {9, 1, 512, 1},
};

constexpr ChapDemand DEMANDS_A{INITIATOR_A, {}};
constexpr ChapDemand DEMANDS_B{INITIATOR_B, ARRAY2};
constexpr ChapDemand DEMANDS_V6{INITIATOR_V6, {}};

// Makes a name as long as iSCSI allows, 223 characters.
constexpr std::string_view LONGEST_LABEL = "array3.long-mnopqrstuvwxyzabcdefghijklmnopqrstuvwxyz"
                                           "abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwxyz"
                                           "abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwxyz"
                                           "abcdefghijklmnopqrstuvwxyzabcdefghijklm";

constexpr NamedTarget NAMED_TARGETS[]{
    {
        .label = "array1.boot",
        .address = "10.20.0.11",
        .units = ONE_DISK,
        .adapter = IPV4_ADAPTER,
        .entry = 0,
        .alias = "boot disk",
    },
    {
        .label = "array1.data",
        .address = "10.20.0.11",
        .units = DATA_DISKS,
        .chap = &DEMANDS_A,
        .adapter = IPV4_ADAPTER,
        .entry = 1,
        .chapIndex = 1,
        .alias = "data disks",
    },
    {
        .label = "array2.many",
        .address = "10.20.0.12",
        .units = MANY_DISKS,
        .chap = &DEMANDS_B,
        .adapter = IPV4_ADAPTER,
        .entry = 5,
        .chapIndex = 2,
        .alias = "forty disks",
    },
    {
        .label = "array2.sparse",
        .address = "10.20.0.12",
        .units = SPARSE_DISKS,
        .adapter = IPV4_ADAPTER,
        .entry = 6,
        .alias = "disks with flat addresses",
    },
    {
        .label = "array2.farm",
        .address = "10.20.0.12",
        .units = FARM_DISKS,
        .chap = &DEMANDS_B,
        .adapter = IPV4_ADAPTER,
        .entry = 17,
        .chapIndex = 2,
        .alias = "three hundred disks",
    },
    {
        .label = "array3.empty",
        .address = "10.20.0.13",
        .adapter = IPV4_ADAPTER,
        .entry = 42,
        .alias = "nothing behind it",
    },
    {
        .label = "array4.offline",
        .address = "10.20.0.14",
        .behaviour = Behaviour::offline,
        .adapter = IPV4_ADAPTER,
        .entry = 100,
        .alias = "switched off",
    },
    {
        .label = LONGEST_LABEL,
        .address = "10.20.0.13",
        .units = ONE_DISK,
        .chap = &DEMANDS_A,
        .adapter = IPV4_ADAPTER,
        .entry = 511,
        .chapIndex = 1,
        .alias = "an alias of thirty-two characters",
    },
    {
        .label = "array6.boot",
        .address = "fd00:20::11",
        .units = ONE_DISK,
        .adapter = IPV6_ADAPTER,
        .entry = 2,
        .alias = "boot disk",
    },
    {
        .label = "array6.data",
        .address = "fd00:20::11",
        .units = DATA_DISKS,
        .chap = &DEMANDS_V6,
        .adapter = IPV6_ADAPTER,
        .entry = 3,
        .chapIndex = 1,
        .alias = "data disks",
    },
    {
        .label = "array6.worn",
        .address = "fd00:20::12",
        .units = TWO_DISKS,
        .behaviour = Behaviour::worn,
        .adapter = IPV6_ADAPTER,
        .entry = 64,
        .alias = "recovered errors",
    },
    {
        .label = "array6.slow",
        .address = "fd00:20::12",
        .units = ONE_DISK,
        .behaviour = Behaviour::slow,
        .chap = &DEMANDS_V6,
        .adapter = IPV6_ADAPTER,
        .entry = 65,
        .chapIndex = 1,
        .alias = "a slow disk",
    },
    {
        .label = "array6.retired",
        .address = "fd00:20::12",
        .behaviour = Behaviour::retired,
        .adapter = IPV6_ADAPTER,
        .entry = 300,
        .alias = "no longer there",
    },
};

struct IsnsServer {
    const char *address;
    SD_UINT32 targets; // how many disks of the shelf it tells of
};

constexpr IsnsServer ISNS_SERVERS[]{
    {"10.20.0.53", 12},
    {"fd00:20::53", 36},
    {"10.22.0.53", 48},
    {"10.22.0.54", SHELF_DISKS},
};

// Hosts that answer a ping but have no targets.
constexpr const char *OTHER_HOSTS[]{
    "10.20.0.1",  "10.20.0.2",  "10.20.0.3",  "10.20.0.4", "fd00:20::1",
    "fd00:20::2", "fd00:20::3", "fd00:20::4", "10.22.0.1", "10.22.0.2",
};

// The address of a disk by number below a prefix such as "10.22": 250 to a network.
ISCSIIPADDR numberedAddress(const char *prefix, SD_UINT32 disk)
{
    return makeAddress(std::string(prefix) + "." + std::to_string(1 + disk / 250) + "."
                       + std::to_string(1 + disk % 250));
}

std::string numberedLabel(const char *prefix, SD_UINT32 disk)
{
    char label[40];
    (void)std::snprintf(label, sizeof label, "%s%04u", prefix, static_cast<unsigned>(disk));
    return label;
}

bool isAt(const char *host, const ISCSIIPADDR &address)
{
    return sameAddress(makeAddress(host), address);
}

// The number of the disk at this address of the pool, or none.
std::optional<SD_UINT32> poolDiskAt(const ISCSIIPADDR &address)
{
    const SD_UINT32 disk = (address.IPAddress[2] - 1U) * 250 + address.IPAddress[3] - 1U;
    return disk < POOL_DISKS && sameAddress(poolAddress(disk), address) ? std::optional(disk) : std::nullopt;
}

std::optional<SD_UINT32> shelfDiskAt(const ISCSIIPADDR &address)
{
    const SD_UINT8 *bytes = address.IPAddress;
    SD_UINT32 disk = (bytes[2] - 1U) * 250 + bytes[3] - 1U;
    if (disk < SHELF_DISKS && sameAddress(shelfAddress(disk), address)) {
        return disk;
    }
    disk = bytes[14] * 256U + bytes[15] - 1U;
    return disk < SHELF_DISKS && sameAddress(shelfAddress6(disk), address) ? std::optional(disk) : std::nullopt;
}

const IsnsServer *serverAt(const ISCSIIPADDR &address)
{
    const auto found =
        std::ranges::find_if(ISNS_SERVERS, [&](const IsnsServer &known) { return isAt(known.address, address); });
    return found == std::end(ISNS_SERVERS) ? nullptr : found;
}

} // namespace

std::span<const NamedTarget> namedTargets()
{
    return NAMED_TARGETS;
}

std::vector<ImaginedTarget> targetsAt(const ISCSIIPADDR &address)
{
    std::vector<ImaginedTarget> targets;
    for (const NamedTarget &target : NAMED_TARGETS) {
        const bool there = target.behaviour != Behaviour::offline && target.behaviour != Behaviour::retired;
        if (there && isAt(target.address, address)) {
            targets.push_back({targetName(target.label), target.units, target.behaviour, target.chap});
        }
    }
    if (const auto disk = poolDiskAt(address)) {
        targets.push_back({targetName(poolLabel(*disk)), ONE_DISK});
    }
    if (const auto disk = shelfDiskAt(address)) {
        targets.push_back({targetName(shelfLabel(*disk)), ONE_DISK});
    }
    return targets;
}

std::string hostNameOf(const ISCSIIPADDR &address)
{
    const auto targets = targetsAt(address);
    if (targets.empty()) {
        return "";
    }
    // The host is called after its first target: array1 for array1.boot.
    constexpr std::size_t fieldSize = sizeof DISCISCSIPORTAL::hostName;
    const std::string &first = targets.front().name;
    const std::size_t begin = first.find(':') + 1;
    std::string name = first.substr(begin, first.find('.', begin) - begin) + ".san.example";
    if (name.starts_with("array3.")) {
        name.insert(0, fieldSize - name.size(), 'x');
    }
    return name;
}

bool isHost(const ISCSIIPADDR &address)
{
    return !targetsAt(address).empty() || serverAt(address) != nullptr
           || std::ranges::any_of(OTHER_HOSTS, [&](const char *host) { return isAt(host, address); });
}

std::optional<std::vector<SDM_ISNS_DISCOVERED_TARGET>> isnsTargetsAt(const ISCSIIPADDR &server)
{
    const IsnsServer *found = serverAt(server);
    if (found == nullptr) {
        return std::nullopt;
    }
    std::vector<SDM_ISNS_DISCOVERED_TARGET> targets(found->targets);
    for (SD_UINT32 disk = 0; disk < targets.size(); ++disk) {
        SDM_ISNS_DISCOVERED_TARGET &target = targets[disk];
        target.numPortals = 2;
        target.targetPortal[0] = {shelfAddress(disk), ISCSI_PORT, 0};
        target.targetPortal[1] = {shelfAddress6(disk), ISCSI_PORT, 0};
        if (makeAddress(found->address).Type == ADDRESS_IPV6) {
            std::swap(target.targetPortal[0], target.targetPortal[1]);
        }
        target.DDID = 1 + disk % 3;
        setText(target.targetName, targetName(shelfLabel(disk)));
        setText(target.targetAlias, "shelf disk " + std::to_string(disk));
    }
    return targets;
}

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
    (void)std::snprintf(text, sizeof text, "fd00:24::%x", static_cast<unsigned>(disk + 1));
    return makeAddress(text);
}
