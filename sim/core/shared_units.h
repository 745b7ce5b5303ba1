// The units of a text. A long text made whole (assigned, not edited) shares its units with its
// copies until one of them changes: values are copied far more often than they change (every
// text handed to or taken from a plug-in is copied), and copying megabytes each time would cost
// more than the text itself. Texts made together (the fields of a SQL result row) may share one
// block of units instead, so that they take one allocation, not one each.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <span>
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
    friend class UnitsBlock;
    // Below this many units a copy is as cheap as sharing.
    static constexpr std::size_t kShareFrom = 4096;
    // The view of units that never change, kept in the block that holds them.
    using Shared = std::shared_ptr<const std::u16string_view>;
    explicit SharedUnits(Shared shared) : units_(std::move(shared)) {}

    void set(std::u16string units) {
        if (units.size() >= kShareFrom) {
            struct Owned {
                std::u16string units;
                std::u16string_view view;
            };
            auto owned = std::make_shared<Owned>(Owned{std::move(units), {}});
            owned->view = owned->units;
            units_ = Shared(owned, &owned->view);
        } else {
            units_ = std::move(units);
        }
    }

    std::variant<std::u16string, Shared> units_;
};

// The units of several texts in one block: the views of the texts first, then their units one
// after the other, taken from `units` and cut where `ends` say.
class UnitsBlock {
public:
    UnitsBlock(std::u16string_view units, std::span<const std::size_t> ends) : count_(ends.size()) {
        constexpr std::size_t kUnitsPerSlot = sizeof(Slot) / sizeof(char16_t);
        const std::size_t tail = (units.size() + kUnitsPerSlot - 1) / kUnitsPerSlot;
        slots_ = std::make_shared_for_overwrite<Slot[]>(count_ + tail);
        char16_t* copy = nullptr;
        if (!units.empty()) {
            copy = new (static_cast<void*>(slots_.get() + count_)) char16_t[units.size()];
            std::copy(units.begin(), units.end(), copy);
        }
        std::size_t start = 0;
        for (std::size_t i = 0; i < count_; ++i) {
            new (static_cast<void*>(slots_.get() + i))
                std::u16string_view(copy + start, ends[i] - start);
            start = ends[i];
        }
    }

    std::size_t size() const { return count_; }
    // The units of text `i` (i < size()), shared with the block.
    SharedUnits at(std::size_t i) const {
        const auto* view =
            std::launder(reinterpret_cast<const std::u16string_view*>(slots_.get() + i));
        return SharedUnits(SharedUnits::Shared(slots_, view));
    }

private:
    // Room for a view or for a few units, made only as the block is filled.
    struct Slot {
        alignas(std::u16string_view) std::byte bytes[sizeof(std::u16string_view)];
    };
    std::size_t count_;
    std::shared_ptr<Slot[]> slots_;
};

}  // namespace sim
