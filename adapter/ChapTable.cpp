// The CHAP table. It is read and replaced as a whole; the secrets go to the caller, to the database of the
// settings and to the port that logs in with them.
#include "Library.h"

#include <algorithm>
#include <iterator>

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
        for (SD_UINT32 number = 0; number < filled; ++number) {
            table[number] = *settings->chap[number];
        }
        *count = filled;
    });
}

SD_UINT32 SDSetCHAPTable(SDMGT_HANDLE handle, CHAPTABLE *table, SD_UINT32 *count)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(table, count);
        const SD_UINT32 records = *count;
        require(records >= 1 && records <= CHAP_CAPACITY, ERR_INVALID_PARAMETER);
        adapter.settings.change([&](Settings &settings) {
            settings.chap.clear();
            std::transform(table, table + records, std::back_inserter(settings.chap), shareChap);
        });
    });
}
}
