// What callers can change about an adapter. A value: copies are cheap, since they share the entries and CHAP records.
#pragma once

#include "Exported.h"

#include <array>
#include <memory>
#include <vector>

// States of a device database entry. Callers may write others; the adapter treats them like ENTRY_CONFIGURED.
inline constexpr SD_UINT32 ENTRY_FREE = 0;       // the slot is not in use
inline constexpr SD_UINT32 ENTRY_CONFIGURED = 1; // not logged in: the adapter tries when it is asked for the target
inline constexpr SD_UINT32 ENTRY_SESSION = 2;    // logged in
inline constexpr SD_UINT32 ENTRY_LOGGED_OUT = 3; // logged out, until the adapter is reset or the entry written again
inline constexpr SD_UINT32 ENTRY_LOGGING_IN = 4; // a login is under way; shown, never stored

// Versions of the two images, in force and waiting for the next reset (empty when none is).
struct ImageVersions {
    SD_UINT8 firmware[128];
    SD_UINT8 nextFirmware[128];
    SD_UINT8 optionRom[128];
    SD_UINT8 nextOptionRom[128];
};

using SharedEntry = std::shared_ptr<const DEVICEENTRYISCSI>;
using SharedChap = std::shared_ptr<const CHAPTABLE>;

// A copy of a record of the CHAP table that is wiped when it goes.
SharedChap shareChap(const CHAPTABLE &record);

struct Settings {
    INITFWISCSI block{};
    ImageVersions versions{};
    SDM_ISNS_CONFIG isns{};
    std::array<SharedEntry, DDB_SLOTS> slots; // the device database; null is a slot not in use. NextValid is 0.
    std::vector<SharedChap> chap;             // the CHAP table, at most CHAP_CAPACITY records, none null

    // The entry with this index, or null; also for an index that cannot be.
    SharedEntry find(SD_UINT32 index) const;
    // Puts an entry into its slot (TargetID).
    void place(const DEVICEENTRYISCSI &entry);
    void free(SD_UINT32 index);
    // The entries in use, in the order of their index.
    std::vector<SharedEntry> entries() const;
    // The next index in use after this one, 0 when there is none.
    SD_UINT32 nextAfter(SD_UINT32 index) const;
    // The record with this index, or null when the table ends before.
    const CHAPTABLE *findChap(SD_UINT32 index) const;
};
