// Files of the callers: images that are read, traces and crash records that are written.
#pragma once

#include "Exported.h"

#include <span>
#include <string>
#include <string_view>
#include <utility>

// An open file or folder; -1 is none.
class Descriptor
{
public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor &&other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(number_, other.number_);
        return *this;
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor();

    int number() const
    {
        return number_;
    }
    explicit operator bool() const
    {
        return number_ >= 0;
    }

private:
    int number_ = -1;
};

// Reads exactly as many bytes; false when that fails or the file ends before.
bool readAll(int descriptor, std::span<SD_UINT8> bytes);
// Writes all bytes; false with errno when that fails.
bool writeAll(int descriptor, std::span<const SD_UINT8> bytes);

// Opens a file that lines are added to, and makes it when it is missing. In a folder that others can write to, a
// symbolic link or a file that somebody else has made is not touched: none is opened.
Descriptor openForLines(const std::string &path);
// Replaces a file, or makes it: whole or not at all, with the mode that it had. What is there and is no ordinary file
// (a device, a folder) is left alone, and so is what openForLines would not touch. False when that fails.
bool replaceFile(const std::string &path, std::string_view text);
