#include "Settings.h"

#include <string.h>

#include <algorithm>
#include <iterator>

SharedChap shareChap(const CHAPTABLE &record)
{
    const auto wipe = [](CHAPTABLE *wiped) {
        explicit_bzero(wiped, sizeof *wiped);
        delete wiped;
    };
    return {new CHAPTABLE(record), wipe};
}

SharedEntry Settings::find(SD_UINT32 index) const
{
    return index < slots.size() ? slots[index] : nullptr;
}

void Settings::place(const DEVICEENTRYISCSI &entry)
{
    slots.at(entry.TargetID) = std::make_shared<const DEVICEENTRYISCSI>(entry);
}

void Settings::free(SD_UINT32 index)
{
    slots.at(index).reset();
}

std::vector<SharedEntry> Settings::entries() const
{
    std::vector<SharedEntry> used;
    std::ranges::copy_if(slots, std::back_inserter(used), [](const SharedEntry &entry) { return entry != nullptr; });
    return used;
}

SD_UINT32 Settings::nextAfter(SD_UINT32 index) const
{
    const auto next =
        std::find_if(slots.begin() + index + 1, slots.end(), [](const SharedEntry &entry) { return entry != nullptr; });
    return next == slots.end() ? 0 : static_cast<SD_UINT32>(next - slots.begin());
}

const CHAPTABLE *Settings::findChap(SD_UINT32 index) const
{
    return index < chap.size() ? chap[index].get() : nullptr;
}
