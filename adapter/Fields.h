// Small helpers for the contract's records: text fields and addresses.
#pragma once

#include "Exported.h"

#include <algorithm>
#include <string>
#include <string_view>

// Values of an address's Type.
inline constexpr SD_UINT16 ADDRESS_NONE = 0; // all bytes are zero
inline constexpr SD_UINT16 ADDRESS_IPV4 = 1;
inline constexpr SD_UINT16 ADDRESS_IPV6 = 2;

// Fills a text field: the rest becomes zero, what does not fit is cut off.
template <std::size_t Size>
void setText(SD_UINT8 (&field)[Size], std::string_view text)
{
    const std::size_t length = std::min(Size, text.size());
    std::copy_n(text.data(), length, field);
    std::fill(field + length, field + Size, SD_UINT8{0});
}

// The text of a field: up to its first zero byte, or the whole field.
template <std::size_t Size>
std::string getText(const SD_UINT8 (&field)[Size])
{
    return {field, std::find(field, field + Size, SD_UINT8{0})};
}

// The address that a text like "10.20.0.5" or "fd00:20::5" names; the all-zero address when it names none.
ISCSIIPADDR makeAddress(std::string_view text);

// The address as people write it.
std::string toText(const ISCSIIPADDR &address);

// Sets the Type that goes with the bytes. Callers hand over the bytes alone.
void setAddressType(ISCSIIPADDR &address);

bool isZero(const ISCSIIPADDR &address);
bool sameAddress(const ISCSIIPADDR &one, const ISCSIIPADDR &other);
