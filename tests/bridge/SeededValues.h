// Values that depend on nothing but a seed.
#pragma once

#include "MethodTable.h"

#include <random>
#include <string>

class SeededValues
{
public:
    explicit SeededValues(const std::string &seed);

    std::string bytes(std::size_t count);
    // Letters, digits and the marks of iSCSI names.
    std::string text(std::size_t length);
    // A number with as many bits, its sign included, in decimal digits.
    std::string number(unsigned bits);
    // 0 or 1.
    std::string flag();
    // `count` numbers of 16 bits.
    std::string shorts(std::size_t count);
    // A record whose every byte is set. A text ends within its field and rubbish follows, or it fills the field.
    std::string record(const Layout &layout, bool full);

private:
    std::mt19937 random_;
};
