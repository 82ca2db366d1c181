// The device database: entries in use, kept in the order of their index, and what links them.
#include "Initiator.h"
#include "Library.h"
#include "Fields.h"

#include <algorithm>
#include <utility>

std::vector<DEVICEENTRYISCSI>::const_iterator Settings::place(SD_UINT32 index) const
{
    return std::ranges::lower_bound(entries, index, {}, &DEVICEENTRYISCSI::TargetID);
}

const DEVICEENTRYISCSI *Settings::find(SD_UINT32 index) const
{
    const auto entry = place(index);
    return entry != entries.end() && entry->TargetID == index ? &*entry : nullptr;
}

DEVICEENTRYISCSI *Settings::find(SD_UINT32 index)
{
    const DEVICEENTRYISCSI *entry = std::as_const(*this).find(index);
    return entry == nullptr ? nullptr : &entries[static_cast<std::size_t>(entry - entries.data())];
}

void Settings::verify() const
{
    const auto unordered = [](const DEVICEENTRYISCSI &one, const DEVICEENTRYISCSI &next) {
        return one.TargetID >= next.TargetID;
    };
    const bool ordered = std::ranges::adjacent_find(entries, unordered) == entries.end();
    if (!ordered || (!entries.empty() && entries.back().TargetID >= DDB_SLOTS)) {
        throw Damaged{"its device database is not in order"};
    }
}

extern "C" {

SD_UINT32 SDGetDDBEntryNum(SDMGT_HANDLE handle, SD_UINT32 *count)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(count);
        *count = static_cast<SD_UINT32>(adapter.settings.read()->entries.size());
    });
}

// A slot that is not in use is no error: its entry is empty but for its own index and the way to the next one.
SD_UINT32 SDGetDDBEntry(SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry, SD_UINT32 index)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(entry);
        require(index < DDB_SLOTS, ERR_INVALID_PARAMETER);
        const auto settings = adapter.settings.read();
        auto place = settings->place(index);
        *entry = {};
        entry->TargetID = index;
        if (place != settings->entries.end() && place->TargetID == index) {
            *entry = *place++;
        }
        entry->NextValid = place == settings->entries.end() ? 0 : place->TargetID;
    });
}

SD_UINT32 SDGetDefaultDDBEntry(SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(entry);
        *entry = defaultEntry(adapter.model);
    });
}

SD_UINT32 SDGetInitialDDBEntry(SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry, SD_UINT32 index)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(entry);
        require(index < DDB_SLOTS, ERR_INVALID_PARAMETER);
        *entry = defaultEntry(adapter.model);
        entry->TargetID = index;
        entry->InitiatorSessID[4] = static_cast<SD_UINT8>(index >> 8);
        entry->InitiatorSessID[5] = static_cast<SD_UINT8>(index);
    });
}

// Writes all of the entry except its index and NextValid, which are the adapter's. A DeviceState of 0 frees the slot.
// Whether the adapter can log in to the target does not decide the write; a failed login goes to the log.
SD_UINT32 SDSetDDBEntry(SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry, SD_UINT32 index)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(entry);
        require(index < DDB_SLOTS, ERR_INVALID_PARAMETER);
        DEVICEENTRYISCSI written = *entry;
        written.TargetID = index;
        written.NextValid = 0;
        setAddressType(written.EntryInfo.IPAddr);
        adapter.settings.change([&](Settings &settings) {
            DEVICEENTRYISCSI *present = settings.find(index);
            if (written.DeviceState == ENTRY_FREE) {
                std::erase_if(settings.entries, [&](const DEVICEENTRYISCSI &other) { return other.TargetID == index; });
            } else if (present != nullptr) {
                *present = written;
            } else {
                settings.entries.insert(settings.place(index), written);
            }
        });
        if (written.DeviceState != ENTRY_FREE && written.DeviceState != ENTRY_LOGGED_OUT) {
            login(adapter, written);
        }
    });
}

// Ends the target's session. It stays ended until the adapter is reset or the entry is written again.
SD_UINT32 SDSendiSCSILogout(SDMGT_HANDLE handle, LOGOUTISCSI *logout)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(logout);
        const SD_UINT32 index = logout->TargetID;
        bool ended = false;
        adapter.settings.change([&](Settings &settings) {
            DEVICEENTRYISCSI *entry = settings.find(index);
            require(entry != nullptr, ERR_NO_SUCH_ENTRY);
            ended = entry->DeviceState != ENTRY_LOGGED_OUT;
            entry->DeviceState = ENTRY_LOGGED_OUT;
            entry->TargetSessID = 0;
        });
        if (ended) {
            recordLogout(adapter, index);
        }
    });
}
}
