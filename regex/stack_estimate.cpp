#include "regex/stack_estimate.h"

#include <algorithm>
#include <cstdint>
#include <cwctype>
#include <vector>

namespace {

// Sanitizers widen every frame and add their own.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t kFrameBytes = 768;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr std::size_t kFrameBytes = 768;
#else
constexpr std::size_t kFrameBytes = 128;
#endif
#else
constexpr std::size_t kFrameBytes = 128;
#endif
// Compiling recurses per nesting level and per term of a sequence.
constexpr std::size_t kCompileBytesPerUnit = 4 * kFrameBytes;
constexpr std::size_t kBaseBytes = std::size_t{8} << 20;
// A lookahead runs a sub-matcher, its state on the stack.
constexpr std::size_t kLookaheadWeight = 8;

constexpr std::size_t kSaturated = std::size_t{1} << 50;

std::size_t add(std::size_t a, std::size_t b) { return std::min(a + b, kSaturated); }
std::size_t mul(std::size_t a, std::size_t b) {
    if (a == 0 || b == 0) return 0;
    return a > kSaturated / b ? kSaturated : a * b;
}

struct Level {
    std::size_t weight = 0;
    std::size_t atoms = 0;
    bool lookahead = false;
};

struct Part {  // what a quantifier applies to
    std::size_t weight = 0;
    std::size_t atoms = 0;
};

// Reads "{n}", "{n,}" or "{n,m}" at `i`; false when it is not one.
bool readCount(std::wstring_view p, std::size_t& i, std::size_t& low, std::size_t& high,
               bool& unbounded) {
    std::size_t j = i + 1;
    auto number = [&](std::size_t& value) {
        const std::size_t start = j;
        value = 0;
        while (j < p.size() && p[j] >= L'0' && p[j] <= L'9') {
            value = std::min<std::size_t>(value * 10 + static_cast<std::size_t>(p[j] - L'0'),
                                          kSaturated);
            ++j;
        }
        return j > start;
    };
    if (!number(low)) return false;
    unbounded = false;
    high = low;
    if (j < p.size() && p[j] == L',') {
        ++j;
        if (!number(high)) unbounded = true;
    }
    if (j >= p.size() || p[j] != L'}') return false;
    i = j;
    return true;
}

}  // namespace

namespace rvl {

std::size_t RegexStackBytes(std::wstring_view p, std::size_t textLength) {
    std::vector<Level> levels(1);
    Part last;
    std::size_t heaviestLoop = 0;
    auto addPart = [&](Part part) {
        levels.back().weight = add(levels.back().weight, part.weight);
        levels.back().atoms = add(levels.back().atoms, part.atoms);
        last = part;
    };
    // Replaces the last part by `copies` copies of it plus `extra` states around each.
    auto repeatLast = [&](std::size_t copies, std::size_t extra) {
        Level& level = levels.back();
        level.weight -= last.weight;
        level.atoms -= last.atoms;
        addPart({mul(add(last.weight, extra), std::max<std::size_t>(copies, 1)),
                 mul(last.atoms, std::max<std::size_t>(copies, 1))});
        last = {};
    };
    for (std::size_t i = 0; i < p.size(); ++i) {
        const wchar_t c = p[i];
        switch (c) {
            case L'\\':
                ++i;
                addPart({1, 1});
                break;
            case L'[': {
                std::size_t j = i + 1;
                if (j < p.size() && p[j] == L'^') ++j;
                if (j < p.size() && p[j] == L']') ++j;
                while (j < p.size() && p[j] != L']') j += p[j] == L'\\' ? 2 : 1;
                i = j;
                addPart({1, 1});
                break;
            }
            case L'(': {
                Level level;
                if (i + 2 < p.size() && p[i + 1] == L'?') {
                    level.lookahead = p[i + 2] == L'=' || p[i + 2] == L'!';
                    i += 2;
                }
                levels.push_back(level);
                last = {};
                break;
            }
            case L')':
                if (levels.size() > 1) {
                    const Level closed = levels.back();
                    levels.pop_back();
                    addPart({add(closed.weight, 2 + (closed.lookahead ? kLookaheadWeight : 0)),
                             closed.atoms});
                } else {
                    addPart({1, 1});
                }
                break;
            case L'|':
                levels.back().weight = add(levels.back().weight, 2);
                last = {};
                break;
            case L'*':
            case L'+': {
                const std::size_t loop = add(last.weight, 3);
                heaviestLoop = std::max(heaviestLoop, loop);
                repeatLast(1, 3);
                if (i + 1 < p.size() && p[i + 1] == L'?') ++i;
                break;
            }
            case L'?':
                repeatLast(1, 2);
                if (i + 1 < p.size() && p[i + 1] == L'?') ++i;
                break;
            case L'{': {
                std::size_t low = 0, high = 0;
                bool unbounded = false;
                if (!readCount(p, i, low, high, unbounded)) {
                    addPart({1, 1});
                    break;
                }
                if (unbounded) heaviestLoop = std::max(heaviestLoop, add(last.weight, 3));
                repeatLast(unbounded ? add(low, 1) : high, 3);
                if (i + 1 < p.size() && p[i + 1] == L'?') ++i;
                break;
            }
            default:
                addPart({1, 1});
                break;
        }
    }
    std::size_t weight = 0, atoms = 0;
    for (const Level& level : levels) {
        weight = add(weight, level.weight);
        atoms = add(atoms, level.atoms);
    }
    const std::size_t loopFrames = mul(add(textLength, 1), heaviestLoop + 4);
    const std::size_t onceFrames = mul(add(weight, 4), add(std::min(atoms, textLength), 1));
    const std::size_t frames = add(loopFrames, onceFrames);
    return add(add(kBaseBytes, mul(p.size(), kCompileBytesPerUnit)), mul(frames, kFrameBytes));
}

}  // namespace rvl
