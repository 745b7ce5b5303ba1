#include "sim/session/variables.h"

#include "sim/core/text.h"

namespace sim {

Value Variables::get(std::u16string_view name, int repetition) const {
    const std::u16string key = toLower(name);
    std::lock_guard lock(mutex_);
    auto var = values_.find(key);
    if (var == values_.end()) return {};
    auto rep = var->second.find(repetition);
    return rep == var->second.end() ? Value{} : rep->second;
}

void Variables::set(std::u16string_view name, int repetition, Value v) {
    std::u16string key = toLower(name);
    std::lock_guard lock(mutex_);
    if (v.isEmpty()) {
        auto var = values_.find(key);
        if (var == values_.end()) return;
        var->second.erase(repetition);
        if (var->second.empty()) values_.erase(var);
        return;
    }
    values_[std::move(key)][repetition] = std::move(v);
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
