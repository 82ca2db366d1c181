// The software storage network: hosts that answer, targets with their logical units, iSNS servers. It is the same for
// every adapter and never changes. Commands are answered with the bytes of the SCSI standards.
#include "StorageNetwork.h"

#include "Flash.h"
#include "Fields.h"
#include "ScsiStandard.h"
#include "NetworkSeam.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

namespace
{

constexpr SD_UINT16 ISCSI_PORT = 3260;
constexpr SD_UINT32 FIRST_FLAT_LUN = 256; // below, units are addressed as peripherals
constexpr SD_UINT64 GIBIBYTE = 1ULL << 30;

struct Unit {
    SD_UINT32 lun;
    SD_UINT32 blockSize; // bytes
    SD_UINT64 blocks;
};

struct SoftwareTarget {
    std::vector<Unit> units; // in ascending order
    bool slow = false;       // every command takes its time
    bool worn = false;       // succeeds after retries and says so
};

// The targets that are listed one by one; those of the pool and of the shelf follow from their number.
struct NamedTarget {
    const char *label; // null stands for the longest name
    const char *address;
};

constexpr NamedTarget NAMED_TARGETS[] = {
    {"array1.boot", "10.20.0.11"},   {"array1.data", "10.20.0.11"},  {"array2.many", "10.20.0.12"},
    {"array2.sparse", "10.20.0.12"}, {"array2.farm", "10.20.0.12"},  {"array3.empty", "10.20.0.13"},
    {nullptr, "10.20.0.13"},         {"array6.boot", "fd00:20::11"}, {"array6.data", "fd00:20::11"},
    {"array6.worn", "fd00:20::12"},  {"array6.slow", "fd00:20::12"},
};

struct IsnsServer {
    const char *address;
    SD_UINT32 targets; // how many disks of the shelf it tells of
};

constexpr IsnsServer ISNS_SERVERS[] = {
    {"10.20.0.53", 12},
    {"fd00:20::53", 36},
    {"10.22.0.53", 48},
    {"10.22.0.54", SHELF_DISKS},
};

// Hosts that answer a ping but have no targets.
constexpr const char *OTHER_HOSTS[] = {
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

std::string nameOf(const NamedTarget &target)
{
    return targetName(target.label == nullptr ? longestLabel() : std::string(target.label));
}

bool isAt(const NamedTarget &target, const ISCSIIPADDR &address)
{
    return sameAddress(makeAddress(target.address), address);
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

// The names of the targets at this address.
std::vector<std::string> namesAt(const ISCSIIPADDR &address)
{
    std::vector<std::string> names;
    for (const NamedTarget &target : NAMED_TARGETS) {
        if (isAt(target, address)) {
            names.push_back(nameOf(target));
        }
    }
    if (const auto disk = poolDiskAt(address)) {
        names.push_back(targetName(poolLabel(*disk)));
    }
    if (const auto disk = shelfDiskAt(address)) {
        names.push_back(targetName(shelfLabel(*disk)));
    }
    return names;
}

// Units 0 to count - 1 of the same size.
std::vector<Unit> equalUnits(SD_UINT32 count, SD_UINT64 bytes)
{
    std::vector<Unit> units;
    for (SD_UINT32 lun = 0; lun < count; ++lun) {
        units.push_back({lun, 512, bytes / 512});
    }
    return units;
}

SoftwareTarget describe(const std::string &name)
{
    const auto is = [&](std::string_view label) {
        return name == targetName(label);
    };
    if (is("array1.data") || is("array6.data")) {
        // Not contiguous; one with long blocks, one beyond 2 TiB, one empty.
        return {{{0, 512, 500 * GIBIBYTE / 512},
                 {1, 4096, 1024 * GIBIBYTE / 4096},
                 {5, 512, 3072 * GIBIBYTE / 512},
                 {9, 512, 1}}};
    }
    if (is("array2.many")) {
        return {equalUnits(40, 100 * GIBIBYTE)};
    }
    if (is("array2.sparse")) {
        SoftwareTarget target{equalUnits(100, 20 * GIBIBYTE)};
        for (SD_UINT32 lun = 240; lun < 300; ++lun) {
            target.units.push_back({lun, 512, 20 * GIBIBYTE / 512});
        }
        target.units.push_back({16383, 512, 20 * GIBIBYTE / 512});
        return target;
    }
    if (is("array2.farm")) {
        return {equalUnits(300, 10 * GIBIBYTE)};
    }
    if (is("array3.empty")) {
        return {};
    }
    if (is("array6.slow")) {
        return {equalUnits(1, 64 * GIBIBYTE), true};
    }
    if (is("array6.worn")) {
        return {equalUnits(2, 64 * GIBIBYTE), false, true};
    }
    return {equalUnits(1, 64 * GIBIBYTE)};
}

void putBigEndian(SD_UINT8 *place, SD_UINT64 value, int bytes)
{
    for (int byte = bytes - 1; byte >= 0; --byte) {
        place[byte] = static_cast<SD_UINT8>(value);
        value >>= 8;
    }
}

CommandResult check(SD_UINT8 key, SD_UINT16 code)
{
    return {Reach::session, SCSI_CHECK_CONDITION, {}, senseData(key, code)};
}

// The unit that a first-level number means: peripheral addressing on bus 0 for 0 to 255, flat addressing for all. The
// flat form of a low number means the same unit.
const Unit *findUnit(const SoftwareTarget &target, SD_UINT16 lun)
{
    const SD_UINT32 method = lun >> 14;
    if (method > 1 || (method == 0 && lun > 0xFF)) {
        return nullptr;
    }
    const auto unit = std::ranges::lower_bound(target.units, static_cast<SD_UINT32>(lun & 0x3FFF), {}, &Unit::lun);
    return unit != target.units.end() && unit->lun == (lun & 0x3FFFU) ? &*unit : nullptr;
}

// The list's header tells its full length, also when the list is cut off at the allocation length.
CommandResult reportLuns(const SoftwareTarget &target, std::span<const SD_UINT8> command)
{
    const SD_UINT32 allocation =
        (SD_UINT32{command[6]} << 24) | (SD_UINT32{command[7]} << 16) | (SD_UINT32{command[8]} << 8) | command[9];
    if (allocation < 16) {
        return check(SENSE_ILLEGAL_REQUEST, ASC_INVALID_FIELD);
    }
    std::vector<SD_UINT8> list(8 + 8 * target.units.size());
    putBigEndian(list.data(), list.size() - 8, 4);
    SD_UINT8 *entry = list.data() + 8;
    for (const Unit &unit : target.units) {
        putBigEndian(entry, unit.lun < FIRST_FLAT_LUN ? unit.lun : 0x4000 | unit.lun, 2);
        entry += 8;
    }
    list.resize(std::min<std::size_t>(list.size(), allocation));
    return {Reach::session, SCSI_GOOD, std::move(list), {}};
}

// Standard INQUIRY data, 96 bytes. A unit that does not exist has data too: it says so in its first byte.
CommandResult inquiry(const Unit *unit, const std::string &name, std::span<const SD_UINT8> command)
{
    if (command[1] != 0 || command[2] != 0) {
        return check(SENSE_ILLEGAL_REQUEST, ASC_INVALID_FIELD); // no vital product data here
    }
    constexpr std::size_t size = 96;
    std::vector<SD_UINT8> data(size);
    data[0] = unit == nullptr ? INQUIRY_NO_UNIT : 0x00; // a connected direct access device
    data[2] = 0x06;                                     // SPC-4
    data[3] = 0x12;                                     // LUNs are reported, response format 2
    data[4] = size - 5;                                 // bytes that follow this one
    data[7] = 0x02;                                     // command queuing
    char text[45];
    (void)std::snprintf(
        text, sizeof text, "%-8.8s%-16.16s%-4.4s%08X", "VARDEN",
        unit == nullptr          ? ""
        : unit->blockSize == 512 ? "TAVO DISK 512"
                                 : "TAVO DISK 4096",
        "0104",
        unit == nullptr
            ? 0U
            : static_cast<unsigned>(checksum(std::span(reinterpret_cast<const SD_UINT8 *>(name.data()), name.size()))
                                    + unit->lun));
    std::copy_n(text, 36, data.begin() + 8);
    const SD_UINT16 standards[] = {0x00A0, 0x0960, 0x0460, 0x04C0}; // SAM-5, iSCSI, SPC-4, SBC-3
    for (std::size_t standard = 0; standard < std::size(standards); ++standard) {
        putBigEndian(&data[58 + 2 * standard], standards[standard], 2);
    }
    data.resize(std::min<std::size_t>(size, command[3] * 256U + command[4]));
    return {Reach::session, SCSI_GOOD, std::move(data), {}};
}

CommandResult readCapacity(const Unit &unit)
{
    std::vector<SD_UINT8> data(8);
    putBigEndian(data.data(), std::min<SD_UINT64>(unit.blocks - 1, 0xFFFFFFFF), 4);
    putBigEndian(data.data() + 4, unit.blockSize, 4);
    return {Reach::session, SCSI_GOOD, std::move(data), {}};
}

CommandResult answer(const SoftwareTarget &target, const std::string &name, SD_UINT16 lun,
                     std::span<const SD_UINT8> command)
{
    const Unit *unit = findUnit(target, lun);
    if (command.size() == 12 && command[0] == SCSI_REPORT_LUNS) {
        return reportLuns(target, command); // also when the unit addressed does not exist
    }
    if (command.size() == 6 && command[0] == SCSI_INQUIRY) {
        return inquiry(unit, name, command);
    }
    if (unit == nullptr) {
        return check(SENSE_ILLEGAL_REQUEST, ASC_UNIT_NOT_SUPPORTED);
    }
    if (command.size() == 10 && command[0] == SCSI_READ_CAPACITY_10) {
        return readCapacity(*unit);
    }
    return check(SENSE_ILLEGAL_REQUEST, ASC_INVALID_OPERATION_CODE);
}

class SoftwareNetwork : public TargetPort
{
public:
    std::optional<MacAddress> findHost(const ISCSIIPADDR &address) override
    {
        const auto isHere = [&](const char *host) {
            return sameAddress(makeAddress(host), address);
        };
        const auto isServer = [&](const IsnsServer &server) {
            return isHere(server.address);
        };
        if (namesAt(address).empty() && std::ranges::none_of(OTHER_HOSTS, isHere)
            && std::ranges::none_of(ISNS_SERVERS, isServer)) {
            return std::nullopt;
        }
        // A locally administered address that follows from the host's own.
        MacAddress mac{0x02, 0x53};
        for (std::size_t byte = 0; byte < sizeof address.IPAddress; ++byte) {
            mac[2 + byte % 4] = static_cast<SD_UINT8>(mac[2 + byte % 4] * 7 + address.IPAddress[byte]);
        }
        return mac;
    }

    std::optional<DiscoveredPortal> discover(const ISCSIIPADDR &address) override
    {
        DiscoveredPortal portal{"", namesAt(address)};
        if (portal.targetNames.empty()) {
            return std::nullopt;
        }
        // The host is called after its first target: array1 for array1.boot.
        const std::string &first = portal.targetNames.front();
        const std::size_t begin = first.find(':') + 1;
        portal.hostName = first.substr(begin, first.find('.', begin) - begin) + ".san.example";
        if (portal.hostName.starts_with("array3.")) {
            portal.hostName.insert(0, 128 - portal.hostName.size(), 'x'); // as long as the record's field
        }
        return portal;
    }

    Reach login(const TargetAddress &target) override
    {
        const auto names = namesAt(target.address);
        if (names.empty() || target.port != ISCSI_PORT) {
            return Reach::noAnswer;
        }
        return std::ranges::find(names, target.name) == names.end() ? Reach::unknownName : Reach::session;
    }

    CommandResult execute(const TargetAddress &address, SD_UINT16 lun, std::span<const SD_UINT8> command) override
    {
        const Reach reach = login(address);
        if (reach != Reach::session) {
            CommandResult result;
            result.reach = reach;
            return result;
        }
        const SoftwareTarget target = describe(address.name);
        if (target.slow) {
            std::this_thread::sleep_for(std::chrono::milliseconds(250));
        }
        CommandResult result = answer(target, address.name, lun, command);
        if (target.worn && result.status == SCSI_GOOD) {
            result.status = SCSI_CHECK_CONDITION;
            result.sense = senseData(SENSE_RECOVERED_ERROR, ASC_RECOVERED_WITH_RETRIES);
        }
        return result;
    }

    std::optional<std::vector<SDM_ISNS_DISCOVERED_TARGET>> queryIsns(const ISCSIIPADDR &server) override
    {
        const auto found = std::ranges::find_if(
            ISNS_SERVERS, [&](const IsnsServer &known) { return sameAddress(makeAddress(known.address), server); });
        if (found == std::end(ISNS_SERVERS)) {
            return std::nullopt;
        }
        std::vector<SDM_ISNS_DISCOVERED_TARGET> targets(found->targets);
        for (SD_UINT32 disk = 0; disk < targets.size(); ++disk) {
            SDM_ISNS_DISCOVERED_TARGET &target = targets[disk];
            target.numPortals = 2;
            target.targetPortal[0] = {shelfAddress(disk), ISCSI_PORT, 0};
            target.targetPortal[1] = {shelfAddress6(disk), ISCSI_PORT, 0};
            if (server.Type == ADDRESS_IPV6) {
                std::swap(target.targetPortal[0], target.targetPortal[1]);
            }
            target.DDID = 1 + disk % 3;
            setText(target.targetName, targetName(shelfLabel(disk)));
            setText(target.targetAlias, "shelf disk " + std::to_string(disk));
        }
        return targets;
    }
};

} // namespace

TargetPort &targetPort()
{
    static TargetPort *const port = new SoftwareNetwork;
    return *port;
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
