#include "Files.h"

#include <unistd.h>

#include <cerrno>

Descriptor::~Descriptor()
{
    if (number_ >= 0) {
        close(number_);
    }
}

bool readAll(int descriptor, std::span<SD_UINT8> bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = read(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

bool writeAll(int descriptor, std::span<const SD_UINT8> bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}
