#include "TargetPort.h"

#include <string.h>

#include <algorithm>

Secret::Secret(std::span<const SD_UINT8> bytes) : length_(std::min(bytes.size(), bytes_.size()))
{
    std::copy_n(bytes.begin(), length_, bytes_.begin());
}

Secret::~Secret()
{
    explicit_bzero(bytes_.data(), bytes_.size());
}
