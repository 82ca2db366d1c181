// The CHAP table. It is read and replaced as a whole; the secrets go to the caller and to the flash file only.
#include "Library.h"

#include <algorithm>

extern "C" {

SD_UINT32 SDGetCHAPEntryNum(SDMGT_HANDLE handle, SD_UINT32 *count)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(count);
        *count = static_cast<SD_UINT32>(adapter.settings.read()->chap.size());
    });
}

// Fills at most count records, and says how many. 128 always suffice.
SD_UINT32 SDGetCHAPTable(SDMGT_HANDLE handle, CHAPTABLE *table, SD_UINT32 *count)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(table, count);
        const auto settings = adapter.settings.read();
        const SD_UINT32 filled = std::min(*count, static_cast<SD_UINT32>(settings->chap.size()));
        std::copy_n(settings->chap.begin(), filled, table);
        *count = filled;
    });
}

SD_UINT32 SDSetCHAPTable(SDMGT_HANDLE handle, CHAPTABLE *table, SD_UINT32 *count)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(table, count);
        const SD_UINT32 records = *count;
        require(records >= 1 && records <= CHAP_CAPACITY, ERR_INVALID_PARAMETER);
        adapter.settings.change([&](Settings &settings) { settings.chap.assign(table, table + records); });
    });
}
}
