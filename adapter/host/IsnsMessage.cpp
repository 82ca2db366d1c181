// Messages of iSNS, see IsnsMessage.h. A message is a header and attributes; an attribute is a tag, a length and a
// value filled up to words. All numbers are big-endian.
#include "IsnsMessage.h"

#include "Fields.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <map>

namespace
{

constexpr SD_UINT16 PROTOCOL_VERSION = 1;
constexpr SD_UINT16 FROM_CLIENT = 0x8000;
constexpr SD_UINT16 LAST_PIECE = 0x0800;
constexpr SD_UINT16 FIRST_PIECE = 0x0400;
constexpr std::size_t ATTRIBUTE_HEADER_SIZE = 8;

enum Tag : SD_UINT32 {
    DELIMITER = 0,
    ENTITY_NAME = 1,
    ENTITY_PROTOCOL = 2,
    NODE_NAME = 32,
    NODE_TYPE = 33,
    NODE_ALIAS = 34,
    GROUP_NODE_NAME = 48, // a portal group ties a node to a portal
    GROUP_PORTAL_ADDRESS = 49,
    GROUP_PORTAL_PORT = 50,
    DOMAIN_ID = 2065,
};

constexpr SD_UINT32 PROTOCOL_ISCSI = 2;
constexpr SD_UINT32 TYPE_TARGET = 1;
constexpr SD_UINT32 TYPE_INITIATOR = 2;
constexpr SD_UINT32 PORT_IS_UDP = 0x10000;

using Bytes = std::span<const SD_UINT8>;

SD_UINT32 bigEndian(Bytes bytes)
{
    SD_UINT32 value = 0;
    for (const SD_UINT8 byte : bytes) {
        value = value << 8 | byte;
    }
    return value;
}

class MessageWriter
{
public:
    MessageWriter(IsnsFunction function, SD_UINT16 transaction) : bytes_(ISNS_HEADER_SIZE)
    {
        put(0, PROTOCOL_VERSION);
        put(2, static_cast<SD_UINT16>(function));
        put(6, FROM_CLIENT | FIRST_PIECE | LAST_PIECE);
        put(8, transaction);
    }
    void text(Tag tag, const std::string &value)
    {
        const std::size_t terminated = (value.size() + 4) / 4 * 4;
        header(tag, terminated);
        bytes_.insert(bytes_.end(), value.begin(), value.end());
        bytes_.resize(bytes_.size() + terminated - value.size());
    }
    void number(Tag tag, SD_UINT32 value)
    {
        header(tag, sizeof value);
        append(value);
    }
    void empty(Tag tag)
    {
        header(tag, 0);
    }
    std::vector<SD_UINT8> finish()
    {
        put(4, static_cast<SD_UINT16>(bytes_.size() - ISNS_HEADER_SIZE));
        return std::move(bytes_);
    }

private:
    void header(Tag tag, std::size_t length)
    {
        append(tag);
        append(static_cast<SD_UINT32>(length));
    }
    void append(SD_UINT32 value)
    {
        for (int shift = 24; shift >= 0; shift -= 8) {
            bytes_.push_back(static_cast<SD_UINT8>(value >> shift));
        }
    }
    void put(std::size_t place, SD_UINT16 value)
    {
        bytes_[place] = static_cast<SD_UINT8>(value >> 8);
        bytes_[place + 1] = static_cast<SD_UINT8>(value);
    }

    std::vector<SD_UINT8> bytes_;
};

struct Attribute {
    SD_UINT32 tag;
    Bytes value;
};

// Takes the next attribute off the bytes; nothing when they do not hold a whole one.
std::optional<Attribute> takeAttribute(Bytes &bytes)
{
    if (bytes.size() < ATTRIBUTE_HEADER_SIZE) {
        return std::nullopt;
    }
    const SD_UINT32 tag = bigEndian(bytes.first(4));
    const SD_UINT32 length = bigEndian(bytes.subspan(4, 4));
    bytes = bytes.subspan(ATTRIBUTE_HEADER_SIZE);
    if (length > bytes.size()) {
        return std::nullopt;
    }
    const Attribute attribute{tag, bytes.first(length)};
    bytes = bytes.subspan(length);
    return attribute;
}

std::string textOf(Bytes value)
{
    return {value.begin(), std::ranges::find(value, SD_UINT8{0})};
}

// IPv4 addresses come as ::ffff:a.b.c.d or ::a.b.c.d.
ISCSIIPADDR addressOf(Bytes value)
{
    ISCSIIPADDR address{};
    if (value.size() != sizeof address.IPAddress) {
        return address;
    }
    const auto isZeroByte = [](SD_UINT8 byte) {
        return byte == 0;
    };
    const bool mapped = value[10] == 0xFF && value[11] == 0xFF;
    const bool compatible = value[10] == 0 && value[11] == 0 && value[12] != 0;
    if (std::ranges::all_of(value.first(10), isZeroByte) && (mapped || compatible)) {
        value = value.last(4);
    }
    std::ranges::copy(value, address.IPAddress);
    setAddressType(address);
    return address;
}

// Targets in the order in which the answer names them.
class TargetList
{
public:
    void take(const Attribute &attribute)
    {
        switch (attribute.tag) {
        case NODE_NAME:
            node_ = find(textOf(attribute.value));
            break;
        case NODE_ALIAS:
            if (node_ != nullptr) {
                setText(node_->targetAlias, textOf(attribute.value));
            }
            break;
        case DOMAIN_ID:
            if (node_ != nullptr && attribute.value.size() == 4) {
                node_->DDID = bigEndian(attribute.value);
            }
            break;
        case GROUP_NODE_NAME:
            group_ = find(textOf(attribute.value));
            break;
        case GROUP_PORTAL_ADDRESS:
            portal_.ipAddr = addressOf(attribute.value);
            break;
        case GROUP_PORTAL_PORT:
            takePort(attribute.value);
            break;
        default:
            break;
        }
    }
    std::vector<SDM_ISNS_DISCOVERED_TARGET> finish()
    {
        std::vector<SDM_ISNS_DISCOVERED_TARGET> targets;
        for (const std::string &name : order_) {
            targets.push_back(byName_.at(name));
        }
        return targets;
    }

private:
    SDM_ISNS_DISCOVERED_TARGET *find(const std::string &name)
    {
        const auto [place, isNew] = byName_.try_emplace(name);
        if (isNew) {
            setText(place->second.targetName, name);
            order_.push_back(name);
        }
        return &place->second;
    }
    void takePort(Bytes value)
    {
        const SD_UINT32 port = value.size() == 4 ? bigEndian(value) : PORT_IS_UDP;
        if (group_ != nullptr && (port & PORT_IS_UDP) == 0 && !isZero(portal_.ipAddr)
            && group_->numPortals < std::size(group_->targetPortal)) {
            portal_.port = static_cast<SD_UINT16>(port);
            group_->targetPortal[group_->numPortals] = portal_;
            ++group_->numPortals;
        }
        portal_ = {};
    }

    std::map<std::string, SDM_ISNS_DISCOVERED_TARGET> byName_;
    std::vector<std::string> order_;
    SDM_ISNS_DISCOVERED_TARGET *node_ = nullptr;
    SDM_ISNS_DISCOVERED_TARGET *group_ = nullptr;
    SDM_DISCOVERED_TARGET_PORTAL portal_{};
};

} // namespace

std::optional<IsnsHeader> parseIsnsHeader(std::span<const SD_UINT8> bytes)
{
    if (bytes.size() < ISNS_HEADER_SIZE || bigEndian(bytes.first(2)) != PROTOCOL_VERSION) {
        return std::nullopt;
    }
    const auto wordAt = [&](std::size_t place) {
        return static_cast<SD_UINT16>(bigEndian(bytes.subspan(place, 2)));
    };
    return IsnsHeader{wordAt(2), wordAt(4), (wordAt(6) & LAST_PIECE) != 0, wordAt(8)};
}

std::vector<SD_UINT8> isnsRegistration(const std::string &initiatorName, SD_UINT16 transaction)
{
    MessageWriter message(IsnsFunction::deviceRegister, transaction);
    message.text(NODE_NAME, initiatorName); // who asks
    message.text(ENTITY_NAME, initiatorName);
    message.empty(DELIMITER);
    message.text(ENTITY_NAME, initiatorName);
    message.number(ENTITY_PROTOCOL, PROTOCOL_ISCSI);
    message.text(NODE_NAME, initiatorName);
    message.number(NODE_TYPE, TYPE_INITIATOR);
    return message.finish();
}

std::vector<SD_UINT8> isnsTargetQuery(const std::string &initiatorName, SD_UINT16 transaction)
{
    MessageWriter message(IsnsFunction::deviceQuery, transaction);
    message.text(NODE_NAME, initiatorName); // who asks
    message.number(NODE_TYPE, TYPE_TARGET);
    message.empty(DELIMITER);
    for (const Tag wanted :
         {NODE_NAME, NODE_ALIAS, GROUP_NODE_NAME, GROUP_PORTAL_ADDRESS, GROUP_PORTAL_PORT, DOMAIN_ID}) {
        message.empty(wanted);
    }
    return message.finish();
}

std::optional<SD_UINT32> isnsStatus(std::span<const SD_UINT8> answer)
{
    return answer.size() < 4 ? std::nullopt : std::optional(bigEndian(answer.first(4)));
}

std::optional<std::vector<SDM_ISNS_DISCOVERED_TARGET>> parseIsnsTargets(std::span<const SD_UINT8> answer)
{
    if (answer.size() < 4) {
        return std::nullopt;
    }
    Bytes rest = answer.subspan(4); // after the status
    bool contents = false;
    TargetList targets;
    while (!rest.empty()) {
        const auto attribute = takeAttribute(rest);
        if (!attribute) {
            return std::nullopt;
        }
        if (contents) {
            targets.take(*attribute);
        }
        contents = contents || attribute->tag == DELIMITER; // before it the answer repeats the question
    }
    return targets.finish();
}
