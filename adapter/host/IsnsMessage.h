// Messages of iSNS (RFC 4171): what the client sends, and what it takes from answers. Every length that an answer tells
// is checked before it is believed.
#pragma once

#include "Exported.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

inline constexpr std::size_t ISNS_HEADER_SIZE = 12;

enum class IsnsFunction : SD_UINT16 { deviceRegister = 0x0001, deviceQuery = 0x0002 };

struct IsnsHeader {
    SD_UINT16 function; // an answer has that of its request and the highest bit
    SD_UINT16 length;   // bytes after the header
    bool last;          // of the pieces of a message
    SD_UINT16 transaction;
};

// The header of a piece, or nothing when the bytes are none.
std::optional<IsnsHeader> parseIsnsHeader(std::span<const SD_UINT8> bytes);

// Registers an initiator.
std::vector<SD_UINT8> isnsRegistration(const std::string &initiatorName, SD_UINT16 transaction);
// Asks for all targets that the initiator may see, with their portals.
std::vector<SD_UINT8> isnsTargetQuery(const std::string &initiatorName, SD_UINT16 transaction);

// The status at the beginning of an answer, or nothing when it is too short.
std::optional<SD_UINT32> isnsStatus(std::span<const SD_UINT8> answer);
// The targets in the answer to a query, all pieces put together without their headers; nothing when it is malformed.
std::optional<std::vector<SDM_ISNS_DISCOVERED_TARGET>> parseIsnsTargets(std::span<const SD_UINT8> answer);
