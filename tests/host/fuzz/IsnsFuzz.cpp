// Any bytes as the answer of an iSNS server: whatever comes out fits its records.
#include "IsnsMessage.h"

#include <cstdlib>
#include <iterator>

extern "C" int LLVMFuzzerTestOneInput(const SD_UINT8 *data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const SD_UINT8 *data, std::size_t size)
{
    const std::span bytes(data, size);
    (void)parseIsnsHeader(bytes);
    const auto targets = parseIsnsTargets(bytes);
    if (targets) {
        for (const SDM_ISNS_DISCOVERED_TARGET &target : *targets) {
            if (target.numPortals > std::size(target.targetPortal)) {
                std::abort();
            }
        }
    }
    return 0;
}
