// The frame of every operation: the handle is looked up, the work is done, failures become a status, the trace gets its
// line. Nothing that is thrown leaves an operation.
#pragma once

#include "Adapter.h"
#include "Exported.h"
#include "Failure.h"

#include <memory>

// The adapter behind an open handle. Throws ERR_INVALID_HANDLE.
std::shared_ptr<Adapter> adapterOf(SDMGT_HANDLE handle);

// Adds a line to the trace, if one is kept.
void trace(const char *operation, SDMGT_HANDLE handle, SD_UINT32 status) noexcept;

// Runs work and turns what it throws into a status.
template <typename Work>
SD_UINT32 statusOf(Work &&work)
{
    try {
        work();
        return 0;
    } catch (const Failure &failure) {
        return failure.status;
    } catch (...) {
        return ERR_NO_MEMORY; // what the library itself can still meet: no memory, or no lock for want of it
    }
}

// An operation on an open adapter.
template <typename Work>
SD_UINT32 operate(const char *operation, SDMGT_HANDLE handle, Work &&work)
{
    const SD_UINT32 status = statusOf([&] {
        const std::shared_ptr<Adapter> adapter = adapterOf(handle);
        work(*adapter);
        adapter->activity.writeWhenDue();
    });
    trace(operation, handle, status);
    return status;
}
