#include "Activity.h"

#include "Fields.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace
{

// The counters as the 64-bit numbers that they are, without the reserved words at the end.
using Numbers = std::array<SD_UINT64, offsetof(HBAPORTSTATISCSI, Reserved) / sizeof(SD_UINT64)>;

template <typename Operation>
void combine(HBAPORTSTATISCSI &counters, const HBAPORTSTATISCSI &other, Operation operation)
{
    Numbers numbers;
    Numbers others;
    std::memcpy(numbers.data(), &counters, sizeof numbers);
    std::memcpy(others.data(), &other, sizeof others);
    std::ranges::transform(numbers, others, numbers.begin(), operation);
    std::memcpy(&counters, numbers.data(), sizeof numbers);
}

bool sameError(const CONNERRTABLE &one, const CONNERRTABLE &other)
{
    return one.deviceIndex == other.deviceIndex && one.connState == other.connState && one.entryType == other.entryType
           && one.errorType == other.errorType && one.errorDetail == other.errorDetail;
}

} // namespace

void add(HBAPORTSTATISCSI &counters, const HBAPORTSTATISCSI &more)
{
    combine(counters, more, std::plus<>());
}

void subtract(HBAPORTSTATISCSI &counters, const HBAPORTSTATISCSI &less)
{
    combine(counters, less, std::minus<>());
}

bool renewBaseline(HBAPORTSTATISCSI &baseline, const HBAPORTSTATISCSI &counted)
{
    bool renewed = false;
    combine(baseline, counted, [&](SD_UINT64 base, SD_UINT64 count) {
        renewed = renewed || count < base;
        return count < base ? 0 : base;
    });
    return renewed;
}

void addError(Activity &activity, const CONNERRTABLE &entry)
{
    CONNERRTABLE newest = entry;
    const auto same =
        std::ranges::find_if(activity.errors, [&](const CONNERRTABLE &other) { return sameError(other, entry); });
    if (same != activity.errors.end()) {
        newest.dupErrorCnt = static_cast<SD_UINT8>(std::min(same->dupErrorCnt + entry.dupErrorCnt + 1, 255));
        activity.errors.erase(same);
    } else if (activity.errors.size() == LOG_CAPACITY) {
        activity.errors.erase(activity.errors.begin());
    }
    activity.errors.push_back(newest);
}

void addNeighbour(Activity &activity, const Neighbour &neighbour)
{
    std::erase_if(activity.neighbours,
                  [&](const Neighbour &other) { return sameAddress(other.entry.ipAddr, neighbour.entry.ipAddr); });
    if (activity.neighbours.size() == LOG_CAPACITY) {
        activity.neighbours.erase(activity.neighbours.begin());
    }
    activity.neighbours.push_back(neighbour);
}
