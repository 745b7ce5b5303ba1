// The units of a text. A long text made whole (assigned, not edited) shares its units with its
// copies until one of them changes: values are copied far more often than they change (every
// text handed to or taken from a plug-in is copied), and copying megabytes each time would cost
// more than the text itself.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace sim {

class SharedUnits {
public:
    SharedUnits() = default;
    explicit SharedUnits(std::u16string units) { set(std::move(units)); }

    std::u16string_view view() const {
        if (const auto* shared = std::get_if<Shared>(&units_)) return **shared;
        return std::get<std::u16string>(units_);
    }

    // Changes the units through `change(std::u16string&)`. Shared units are copied first, and
    // the changed units stay with this text alone: a text changed in a loop is copied once, and
    // no text ever decides from a share count, which other threads may be changing, that it
    // may take over a buffer another text was reading.
    template <class Change>
    void edit(Change&& change) {
        Shared reading;  // keeps shared units alive while `change` may read a view of them
        if (auto* shared = std::get_if<Shared>(&units_)) {
            reading = std::move(*shared);
            units_ = std::u16string(*reading);
        }
        change(std::get<std::u16string>(units_));
    }

private:
    // Below this many units a copy is as cheap as sharing.
    static constexpr std::size_t kShareFrom = 4096;
    using Shared = std::shared_ptr<const std::u16string>;

    void set(std::u16string units) {
        if (units.size() >= kShareFrom) {
            units_ = std::make_shared<const std::u16string>(std::move(units));
        } else {
            units_ = std::move(units);
        }
    }

    std::variant<std::u16string, Shared> units_;
};

}  // namespace sim
