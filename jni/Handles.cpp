#include "Handles.h"

#include <cstddef>
#include <iterator>

static SDMGT_HANDLE hbaHandles[32];

bool isAdapterIndex(jint dev)
{
    return dev >= 0 && static_cast<std::size_t>(dev) < std::size(hbaHandles);
}

void clearHandles()
{
    for (SDMGT_HANDLE &handle : hbaHandles) {
        handle = 0;
    }
}

SDMGT_HANDLE hbaHandle(jint dev)
{
    return hbaHandles[dev];
}

void storeHandle(jint dev, SDMGT_HANDLE handle)
{
    hbaHandles[dev] = handle;
}
