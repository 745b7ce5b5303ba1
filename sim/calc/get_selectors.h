// The Get ( selector ) answers a host without windows can give from its context alone: fresh
// identifiers, the machine, the account and the script state. (The selectors tied to the engine's
// own state are in the parser's selector list.)
#pragma once

#include <string_view>

#include "sim/calc/context.h"

namespace sim::calc {

struct GetAnswer {
    std::u16string_view name;  // lower case
    Value (*answer)(Context& context);
};

// nullptr for a selector not in the table.
const GetAnswer* findGetAnswer(std::u16string_view lowerName);

// A random (version 4) UUID in FileMaker's form: 36 characters, upper-case hex.
std::u16string randomUuid();

}  // namespace sim::calc
