// The device database: entries in use, what links them, and the logins that follow from writing them.
#include "Fields.h"
#include "Initiator.h"
#include "Library.h"

extern "C" {

SD_UINT32 SDGetDDBEntryNum(SDMGT_HANDLE handle, SD_UINT32 *count)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(count);
        *count = static_cast<SD_UINT32>(adapter.settings.read()->entries().size());
    });
}

// A slot that is not in use is no error: its entry is empty but for its own index and the way to the next one.
SD_UINT32 SDGetDDBEntry(SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry, SD_UINT32 index)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(entry);
        require(index < DDB_SLOTS, ERR_INVALID_PARAMETER);
        const auto settings = adapter.settings.read();
        *entry = {};
        entry->TargetID = index;
        if (const SharedEntry present = settings->find(index)) {
            *entry = *present;
            if (adapter.loginsUnderWay.at(index) > 0 && present->DeviceState != ENTRY_LOGGED_OUT) {
                entry->DeviceState = ENTRY_LOGGING_IN;
            }
        }
        entry->NextValid = settings->nextAfter(index);
    });
}

SD_UINT32 SDGetDefaultDDBEntry(SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(entry);
        *entry = defaultEntry(adapter.model());
    });
}

SD_UINT32 SDGetInitialDDBEntry(SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry, SD_UINT32 index)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(entry);
        require(index < DDB_SLOTS, ERR_INVALID_PARAMETER);
        *entry = defaultEntry(adapter.model());
        entry->TargetID = index;
        setSessionId(*entry);
    });
}

// Writes all of the entry except its index and NextValid, which are the adapter's. A DeviceState of 0 frees the slot, 3
// leaves the target logged out. With any other the adapter then logs in, and the state becomes 2 or 1 by the outcome:
// that does not decide the write.
//
// An entry with an address but no name has the portal there asked for its targets: see addDiscovered.
SD_UINT32 SDSetDDBEntry(SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry, SD_UINT32 index)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(entry);
        require(index < DDB_SLOTS, ERR_INVALID_PARAMETER);
        DEVICEENTRYISCSI written = *entry;
        written.TargetID = index;
        written.NextValid = 0;
        if (written.DeviceState == ENTRY_LOGGING_IN) {
            written.DeviceState = ENTRY_CONFIGURED;
        }
        setAddressType(written.EntryInfo.IPAddr);
        const bool wanted = written.DeviceState != ENTRY_FREE && written.DeviceState != ENTRY_LOGGED_OUT;
        const TargetAddress target = addressOf(written);
        if (wanted && target.name.empty() && !isZero(target.address)) {
            addDiscovered(adapter, written);
            return;
        }
        adapter.settings.change([&](Settings &settings) {
            if (written.DeviceState == ENTRY_FREE) {
                settings.free(index);
            } else {
                settings.place(written);
            }
        });
        if (wanted) {
            login(adapter, written);
        } else {
            endSession(adapter, index, false);
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
            const SharedEntry present = settings.find(index);
            require(present != nullptr, ERR_NO_SUCH_ENTRY);
            ended = present->DeviceState != ENTRY_LOGGED_OUT;
            DEVICEENTRYISCSI loggedOut = *present;
            loggedOut.DeviceState = ENTRY_LOGGED_OUT;
            loggedOut.TargetSessID = 0;
            settings.place(loggedOut);
        });
        endSession(adapter, index, ended);
    });
}
}
