#include "SeededValues.h"

#include <string_view>

SeededValues::SeededValues(const std::string &seed)
{
    std::seed_seq sequence(seed.begin(), seed.end());
    random_.seed(sequence);
}

std::string SeededValues::bytes(std::size_t count)
{
    std::string out;
    while (out.size() < count) {
        out += char(random_());
    }
    return out;
}

std::string SeededValues::text(std::size_t length)
{
    constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.:-";
    std::string out;
    while (out.size() < length) {
        out += letters[random_() % letters.size()];
    }
    return out;
}

std::string SeededValues::number(unsigned bits)
{
    return std::to_string(static_cast<std::int32_t>(random_()) >> (32 - bits));
}

std::string SeededValues::flag()
{
    return std::to_string(random_() & 1U);
}

std::string SeededValues::shorts(std::size_t count)
{
    std::string out;
    for (std::size_t i = 0; i < count; ++i) {
        out += (i > 0 ? " " : "") + number(16);
    }
    return out;
}

std::string SeededValues::record(const Layout &layout, bool full)
{
    std::string out = bytes(layout.size);
    for (const Field &field : layout.fields) {
        if (field.kind == Field::Kind::RECORD) {
            out.replace(field.offset, field.width, record(methodTable().record(field.record), full));
        } else if (field.kind == Field::Kind::TEXT) {
            std::size_t length = full ? field.width : field.width * 5 / 8;
            out.replace(field.offset, length, text(length));
            out.replace(field.offset + length, full ? 0 : 1, full ? 0 : 1, '\0');
        }
    }
    return out;
}
