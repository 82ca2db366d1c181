// How a failure travels inside the library: it is thrown where it is met and becomes the operation's status.
#pragma once

#include "Exported.h"

struct Failure {
    SD_UINT32 status;
};

inline void require(bool condition, SD_UINT32 status)
{
    if (!condition) {
        throw Failure{status};
    }
}

// Pointers from the caller are tested before anything else is done.
template <typename... Pointer>
void requirePointers(Pointer... pointers)
{
    require((... && (pointers != nullptr)), ERR_INVALID_PARAMETER);
}
