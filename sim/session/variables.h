// A set of calculation variables ("$" or "$$"), with repetitions. Names match ignoring case,
// as the host's do. Safe to use from several threads.
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sim/core/value.h"

namespace sim {

class Variables {
public:
    // An unset variable or repetition reads as the invalid (empty) value.
    Value get(std::u16string_view name, int repetition) const;
    // Setting an empty value removes the repetition: an empty variable does not exist.
    void set(std::u16string_view name, int repetition, Value v);
    void clear();
    bool empty() const;
    // Every set repetition as "name" (repetition 1) or "name[n]", in the spelling last used to
    // set it, ordered by name ignoring case.
    std::vector<std::pair<std::u16string, Value>> list() const;

private:
    struct Entry {
        std::u16string spelling;
        std::map<int, Value> repetitions;
    };
    mutable std::mutex mutex_;
    std::map<std::u16string, Entry, std::less<>> values_;  // by lower-cased name
};

}  // namespace sim
