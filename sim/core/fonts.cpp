#include "sim/core/fonts.h"

#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include <map>
#include <mutex>
#include <shared_mutex>
#include <vector>

namespace sim::fonts {

namespace {

// Font names compare without case, code point by code point.
std::u16string key(std::u16string_view name) {
    std::u16string out;
    out.reserve(name.size());
    size_t i = 0;
    while (i < name.size()) {
        UChar32 c;
        U16_NEXT(name.data(), i, name.size(), c);
        c = u_foldCase(c, U_FOLD_CASE_DEFAULT);
        if (U_IS_BMP(c)) {
            out.push_back(static_cast<char16_t>(c));
        } else {
            out.push_back(U16_LEAD(c));
            out.push_back(U16_TRAIL(c));
        }
    }
    return out;
}

// Shared by every thread of the host: ids are handed out once and never reused.
class FontTable {
public:
    uint16_t idOf(std::u16string_view name) {
        const std::u16string k = key(name);
        {
            std::shared_lock lock(mutex_);
            if (auto it = ids_.find(k); it != ids_.end()) return it->second;
        }
        std::unique_lock lock(mutex_);
        if (auto it = ids_.find(k); it != ids_.end()) return it->second;
        // Ids start at 1; when the table is full, names share the last id rather than 0xFFFF.
        const uint16_t id = static_cast<uint16_t>(std::min<size_t>(names_.size() + 1, 0xFFFE));
        if (id == names_.size() + 1) names_.emplace_back(name);
        ids_.emplace(k, id);
        return id;
    }

    std::optional<std::u16string> nameOf(uint16_t id) {
        std::shared_lock lock(mutex_);
        if (id == 0 || id > names_.size()) return std::nullopt;
        return names_[id - 1];
    }

private:
    std::shared_mutex mutex_;
    std::map<std::u16string, uint16_t> ids_;
    std::vector<std::u16string> names_;  // names_[id - 1], as first written
};

FontTable& table() {
    static FontTable t;
    return t;
}

}  // namespace

uint16_t idOf(std::u16string_view name) { return table().idOf(name); }

std::optional<std::u16string> nameOf(uint16_t id) { return table().nameOf(id); }

}  // namespace sim::fonts
