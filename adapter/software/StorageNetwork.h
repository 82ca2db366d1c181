// The imagined storage network: hosts that answer, targets with their logical units, iSNS servers. It is the same for
// every adapter and never changes. One table has all that is known of a target, the factory's entry for it included.
#pragma once

#include "Exported.h"

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

inline constexpr SD_UINT16 ISCSI_PORT = 3260;
inline constexpr SD_UINT32 POOL_DISKS = 512;  // targets of the pool, which fill a device database
inline constexpr SD_UINT32 SHELF_DISKS = 600; // targets that only iSNS servers tell of

// The adapters, by what they are connected to.
inline constexpr SD_UINT32 IPV4_ADAPTER = 0;
inline constexpr SD_UINT32 IPV6_ADAPTER = 1;
inline constexpr SD_UINT32 FULL_ADAPTER = 2;
inline constexpr SD_UINT32 BARE_ADAPTER = 3;

// A name and a secret. They are samples, in the CHAP tables of the factory as well as at the targets.
struct Account {
    std::string_view name;
    std::string_view secret;
};

// What a target demands of those who log in, and how it proves itself when it is asked to.
struct ChapDemand {
    Account initiator;
    Account target; // without a name it cannot
};

// A text of one letter.
template <std::size_t Size>
constexpr std::array<char, Size> repeated(char letter)
{
    std::array<char, Size> text{};
    text.fill(letter);
    return text;
}
inline constexpr auto LONGEST_CHAP_NAME = repeated<256>('n');
inline constexpr auto LONGEST_SECRET = repeated<100>('s');

inline constexpr Account INITIATOR_A{"initiator-a", "sample-secret-one"};
inline constexpr Account INITIATOR_B{"initiator-b", "sample-secret-two"};
inline constexpr Account INITIATOR_V6{"initiator-v6", "\xC8 raw bytes \x80"};
inline constexpr Account ARRAY2{{LONGEST_CHAP_NAME.data(), 256}, {LONGEST_SECRET.data(), 100}};

// Logical units with consecutive numbers and of one size.
struct UnitRange {
    SD_UINT32 first;
    SD_UINT32 count;
    SD_UINT32 blockSize; // bytes
    SD_UINT64 blocks;
};

// How a target behaves.
enum class Behaviour {
    sound,
    slow,    // every command takes its time
    worn,    // succeeds after retries and says so
    offline, // nothing answers at its address
    retired, // the portal answers but no longer knows it
};

struct NamedTarget {
    std::string_view label; // the name's last part
    const char *address;
    std::span<const UnitRange> units{}; // in ascending order
    Behaviour behaviour = Behaviour::sound;
    const ChapDemand *chap = nullptr; // null: anybody may log in
    // The entry that the factory gives it.
    SD_UINT32 adapter;
    SD_UINT16 entry;
    SD_UINT16 chapIndex = 0;
    const char *alias;
};

std::span<const NamedTarget> namedTargets();

// A target that is there, as it answers.
struct ImaginedTarget {
    std::string name;
    std::span<const UnitRange> units;
    Behaviour behaviour = Behaviour::sound;
    const ChapDemand *chap = nullptr;
};

// The targets at an address, in the order in which discovery offers them.
std::vector<ImaginedTarget> targetsAt(const ISCSIIPADDR &address);
// The name of the host at the address of targets.
std::string hostNameOf(const ISCSIIPADDR &address);
// Whether anybody at this address answers a ping.
bool isHost(const ISCSIIPADDR &address);
// What the iSNS server at this address knows, if there is one.
std::optional<std::vector<SDM_ISNS_DISCOVERED_TARGET>> isnsTargetsAt(const ISCSIIPADDR &server);

// The iSCSI name of a target from its label.
std::string targetName(std::string_view label);

// Label and address of the disk with this number.
std::string poolLabel(SD_UINT32 disk);
ISCSIIPADDR poolAddress(SD_UINT32 disk);
std::string shelfLabel(SD_UINT32 disk);
ISCSIIPADDR shelfAddress(SD_UINT32 disk);
ISCSIIPADDR shelfAddress6(SD_UINT32 disk);
