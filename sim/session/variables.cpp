#include "sim/session/variables.h"

#include "sim/core/text.h"

namespace sim {

Value Variables::get(std::u16string_view name, int repetition) const {
    const std::u16string key = toLower(name);
    std::lock_guard lock(mutex_);
    auto var = values_.find(key);
    if (var == values_.end()) return {};
    auto rep = var->second.repetitions.find(repetition);
    return rep == var->second.repetitions.end() ? Value{} : rep->second;
}

void Variables::set(std::u16string_view name, int repetition, Value v) {
    std::u16string key = toLower(name);
    std::lock_guard lock(mutex_);
    if (v.isEmpty()) {
        auto var = values_.find(key);
        if (var == values_.end()) return;
        var->second.repetitions.erase(repetition);
        if (var->second.repetitions.empty()) values_.erase(var);
        return;
    }
    Entry& entry = values_[std::move(key)];
    entry.spelling = name;
    entry.repetitions[repetition] = std::move(v);
}

std::vector<std::pair<std::u16string, Value>> Variables::list() const {
    std::vector<std::pair<std::u16string, Value>> out;
    std::lock_guard lock(mutex_);
    for (const auto& [key, entry] : values_) {
        for (const auto& [repetition, value] : entry.repetitions) {
            std::u16string name = entry.spelling;
            if (repetition != 1) {
                const std::string number = std::to_string(repetition);
                name += u'[';
                name.append(number.begin(), number.end());
                name += u']';
            }
            out.emplace_back(std::move(name), value);
        }
    }
    return out;
}

void Variables::clear() {
    std::lock_guard lock(mutex_);
    values_.clear();
}

bool Variables::empty() const {
    std::lock_guard lock(mutex_);
    return values_.empty();
}

}  // namespace sim
