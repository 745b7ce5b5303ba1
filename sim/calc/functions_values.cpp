// Value lists: texts whose values are separated by returns (CR, LF, U+2028 or U+2029). A return
// at the very end does not start another value.
#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_set>

#include "sim/calc/builtins.h"
#include "sim/calc/errors.h"
#include "sim/core/encoding.h"
#include "sim/core/text.h"

namespace sim::calc {

namespace {

bool isReturn(char16_t c) { return c == u'\r' || c == u'\n' || c == u'\u2028' || c == u'\u2029'; }

struct ValueSpan {
    uint32_t start;
    uint32_t length;
    uint32_t next;  // after the value's return, or the end of the text
};

std::vector<ValueSpan> splitValues(std::u16string_view s) {
    std::vector<ValueSpan> spans;
    uint32_t start = 0;
    const auto size = static_cast<uint32_t>(s.size());
    for (uint32_t i = 0; i < size; ++i) {
        if (isReturn(s[i])) {
            spans.push_back({start, i - start, i + 1});
            start = i + 1;
        }
    }
    if (start < size) spans.push_back({start, size - start, size});
    return spans;
}

// Values [first, first + count) of t (first from 0, clipped), each ending with a return.
Value valueRange(const Text& t, double first, double count) {
    const std::vector<ValueSpan> spans = splitValues(t.units());
    const double begin = std::max(first, 0.0);
    const double end = std::min(first + count, static_cast<double>(spans.size()));
    if (!(end > begin)) return emptyText();
    const ValueSpan& from = spans[static_cast<size_t>(begin)];
    const ValueSpan& to = spans[static_cast<size_t>(end) - 1];
    Text out;
    out.append(t, from.start, to.next - from.start);
    if (to.next == to.start + to.length) out.append(u"\r");
    return Value::text(std::move(out));
}

Value fnValueCount(Args& a) {
    return Value::number(static_cast<double>(splitValues(a.units(0)).size()));
}

// GetValue ( list ; n ): the nth value without its return.
Value fnGetValue(Args& a) {
    const Text& t = a.text(0);
    const std::vector<ValueSpan> spans = splitValues(t.units());
    const double n = clampCount(a.number(1));
    if (!(n >= 1 && n <= static_cast<double>(spans.size()))) return emptyText();
    const ValueSpan& v = spans[static_cast<size_t>(n) - 1];
    Text out;
    out.setSlice(t, v.start, v.length);
    return Value::text(std::move(out));
}

Value fnLeftValues(Args& a) { return valueRange(a.text(0), 0, clampCount(a.number(1))); }

Value fnRightValues(Args& a) {
    const double count = clampCount(a.number(1));
    const double total = static_cast<double>(splitValues(a.units(0)).size());
    return valueRange(a.text(0), total - count, count);
}

Value fnMiddleValues(Args& a) {
    const double count = clampCount(a.number(2));
    if (count <= 0) return emptyText();
    return valueRange(a.text(0), clampCount(a.number(1)) - 1, count);
}

// FilterValues ( list ; wanted ): the values of list found in wanted (ignoring case), in the
// order of list, each ending with a return.
Value fnFilterValues(Args& a) {
    const std::u16string_view wantedUnits = a.units(1);
    std::unordered_set<std::u16string> wanted;
    for (const ValueSpan& v : splitValues(wantedUnits)) {
        wanted.insert(toLower(wantedUnits.substr(v.start, v.length)));
    }
    const Text& t = a.text(0);
    Text out;
    for (const ValueSpan& v : splitValues(t.units())) {
        if (!wanted.contains(toLower(t.units().substr(v.start, v.length)))) continue;
        out.append(t, v.start, v.length);
        out.append(u"\r");
    }
    return Value::text(std::move(out));
}

// List ( a ; b ; ... ): the non-empty arguments, one per line.
Value fnList(Args& a) {
    Text out;
    for (size_t i = 0; i < a.size(); ++i) {
        const Text& t = a.text(i);
        if (t.empty()) continue;
        if (static_cast<uint64_t>(out.size()) + t.size() + 1 > kMaxTextUnits) raise(kGenericError);
        if (!out.empty()) out.append(u"\r");
        out.append(t);
    }
    return Value::text(std::move(out));
}

// How SortValues and UniqueValues compare: the data type the values are read as (1 text,
// 2 number, 3 date, 4 time, 5 timestamp; negative sorts descending) and the locale's collation
// for text.
class ValueOrder {
public:
    // nullopt for a locale the functions do not know. A data type other than 1 to 5 (or -1 to
    // -5) sorts as text, ascending.
    static std::optional<ValueOrder> of(Args& a) {
        ValueOrder order;
        if (a.has(1) && !a.emptyNumber(1)) {
            const double type = std::trunc(a.number(1));
            if (type != 0 && std::fabs(type) <= 5) {
                order.type_ = static_cast<int>(std::fabs(type));
                order.descending_ = type < 0;
            }
        }
        const std::u16string locale = a.has(2) ? toLower(a.units(2)) : std::u16string();
        const char* icuName = localeName(locale);
        if (icuName == nullptr) return std::nullopt;
        if (std::string_view(icuName) == kCodePointOrder) return order;
        UErrorCode status = U_ZERO_ERROR;
        order.collator_.reset(icu::Collator::createInstance(icu::Locale(icuName), status));
        if (U_FAILURE(status) || !order.collator_) return std::nullopt;
        return order;
    }

    struct Key {
        std::u16string text;
        std::optional<Number> number;  // for types 2 to 5, when the value reads as one
    };

    Key keyOf(std::u16string_view value) const {
        Key k{std::u16string(value), std::nullopt};
        if (type_ == 1) return k;
        // The data types 2 to 5 are the host's own type codes. Dates read as days, times and
        // timestamps as seconds: exact, and one kind per sort.
        const Value typed = Value::text(std::u16string(value)).as(static_cast<Type>(type_));
        if (!typed.isEmpty()) k.number = typed.asNumber();
        return k;
    }

    // Values that read as the data type come first, in its order; the others follow as text.
    int compare(const Key& a, const Key& b, icu::Collator::ECollationStrength strength) const {
        if (a.number && b.number) return compareNumbers(*a.number, *b.number);
        if (a.number || b.number) return a.number ? -1 : 1;
        if (!collator_) {
            const int32_t r =
                u_strCompare(a.text.data(), static_cast<int32_t>(a.text.size()), b.text.data(),
                             static_cast<int32_t>(b.text.size()), true);
            return (r > 0) - (r < 0);
        }
        collator_->setStrength(strength);
        UErrorCode status = U_ZERO_ERROR;
        const UCollationResult r =
            collator_->compare(a.text.data(), static_cast<int32_t>(a.text.size()), b.text.data(),
                               static_cast<int32_t>(b.text.size()), status);
        return r == UCOL_LESS ? -1 : r == UCOL_GREATER;
    }

    bool descending() const { return descending_; }

    // Equal for values UniqueValues counts as one: the same number, or the same text but for
    // case (in code point order, Unicode_Raw, the very same text).
    std::string identity(std::u16string_view value) const {
        const Key k = keyOf(value);
        if (k.number) {
            std::string key("n");
            key += toUtf8(formatNumber(*k.number));  // one form per number
            return key;
        }
        if (!collator_) {
            std::string key("r");
            key += toUtf8(k.text);
            return key;
        }
        collator_->setStrength(icu::Collator::SECONDARY);
        const int32_t length = static_cast<int32_t>(k.text.size());
        std::string key(64, '\0');
        for (;;) {
            const int32_t needed =
                collator_->getSortKey(k.text.data(), length, reinterpret_cast<uint8_t*>(key.data()),
                                      static_cast<int32_t>(key.size()));
            if (needed <= static_cast<int32_t>(key.size())) {
                key.resize(static_cast<size_t>(std::max(needed, 0)));
                return "t" + key;
            }
            key.resize(static_cast<size_t>(needed));
        }
    }

private:
    // Unicode_Raw: no collator, code points compared.
    static constexpr std::string_view kCodePointOrder = "raw";

    // The ICU locale for each of FileMaker's sort order names (none given: English).
    static const char* localeName(std::u16string_view lower) {
        static constexpr std::pair<std::u16string_view, const char*> kLocales[] = {
            {u"", "en"},
            {u"arabic", "ar"},
            {u"bengali", "bn"},
            {u"bulgarian", "bg"},
            {u"catalan", "ca"},
            {u"catalog", "en"},
            {u"chinese", "zh"},
            {u"chinese_stroke", "zh@collation=stroke"},
            {u"croatian", "hr"},
            {u"czech", "cs"},
            {u"danish", "da"},
            {u"dutch", "nl"},
            {u"english", "en"},
            {u"estonian", "et"},
            {u"finnish", "fi"},
            {u"finnish_custom", "fi"},
            {u"french", "fr"},
            {u"german", "de"},
            {u"german_dictionary", "de"},
            {u"greek", "el"},
            {u"greek_mixed", "el"},
            {u"gujarati", "gu"},
            {u"hebrew", "he"},
            {u"hindi", "hi"},
            {u"hungarian", "hu"},
            {u"icelandic", "is"},
            {u"italian", "it"},
            {u"japanese", "ja"},
            {u"kannada", "kn"},
            {u"korean", "ko"},
            {u"latvian", "lv"},
            {u"lithuanian", "lt"},
            {u"malayalam", "ml"},
            {u"marathi", "mr"},
            {u"norwegian", "nb"},
            {u"panjabi", "pa"},
            {u"persian", "fa"},
            {u"polish", "pl"},
            {u"portuguese", "pt"},
            {u"romanian", "ro"},
            {u"russian", "ru"},
            {u"serbian", "sr"},
            {u"slovak", "sk"},
            {u"slovenian", "sl"},
            {u"spanish", "es"},
            {u"spanish_traditional", "es@collation=traditional"},
            {u"swedish", "sv"},
            {u"swedish_custom", "sv"},
            {u"tamil", "ta"},
            {u"telugu", "te"},
            {u"thai", "th"},
            {u"turkish", "tr"},
            {u"ukrainian", "uk"},
            {u"unicode_raw", kCodePointOrder.data()},
            {u"unicode_standard", "root"},
            {u"vietnamese", "vi"},
        };
        for (const auto& [name, icu] : kLocales) {
            if (name == lower) return icu;
        }
        return nullptr;
    }

    int type_ = 1;
    bool descending_ = false;
    std::unique_ptr<icu::Collator> collator_;
};

// The values of a list, each as its own text.
std::vector<Text> valuesOf(const Text& t) {
    std::vector<Text> values;
    for (const ValueSpan& v : splitValues(t.units())) {
        Text value;
        value.setSlice(t, v.start, v.length);
        values.push_back(std::move(value));
    }
    return values;
}

Value joinedWithReturns(const std::vector<Text>& values) {
    Text out;
    for (const Text& v : values) {
        if (static_cast<uint64_t>(out.size()) + v.size() + 1 > kMaxTextUnits) raise(kGenericError);
        out.append(v);
        out.append(u"\r");
    }
    return Value::text(std::move(out));
}

// SortValues ( values { ; datatype ; locale } ): each value ends with a return; equal values
// keep their order.
Value fnSortValues(Args& a) {
    std::optional<ValueOrder> order = ValueOrder::of(a);
    if (!order) return questionMark();
    std::vector<Text> values = valuesOf(a.text(0));
    std::vector<std::pair<ValueOrder::Key, size_t>> keys;
    keys.reserve(values.size());
    for (size_t i = 0; i < values.size(); ++i)
        keys.emplace_back(order->keyOf(values[i].units()), i);
    std::stable_sort(keys.begin(), keys.end(), [&](const auto& x, const auto& y) {
        const int c = order->compare(x.first, y.first, icu::Collator::TERTIARY);
        return order->descending() ? c > 0 : c < 0;
    });
    std::vector<Text> sorted;
    sorted.reserve(values.size());
    for (const auto& key : keys) sorted.push_back(std::move(values[key.second]));
    return joinedWithReturns(sorted);
}

// UniqueValues ( values { ; datatype ; locale } ): the first of each set of equal values (text
// ignoring case), in their order, each ending with a return.
Value fnUniqueValues(Args& a) {
    std::optional<ValueOrder> order = ValueOrder::of(a);
    if (!order) return questionMark();
    std::vector<Text> unique;
    std::unordered_set<std::string> seen;
    for (Text& v : valuesOf(a.text(0))) {
        if (!seen.insert(order->identity(v.units())).second) continue;
        unique.push_back(std::move(v));
    }
    return joinedWithReturns(unique);
}

constexpr Builtin kFunctions[] = {
    {u"valuecount", 1, 1, fnValueCount},
    {u"getvalue", 2, 2, fnGetValue},
    {u"leftvalues", 2, 2, fnLeftValues},
    {u"rightvalues", 2, 2, fnRightValues},
    {u"middlevalues", 3, 3, fnMiddleValues},
    {u"filtervalues", 2, 2, fnFilterValues},
    {u"list", 1, -1, fnList},
    {u"sortvalues", 1, 3, fnSortValues},
    {u"uniquevalues", 1, 3, fnUniqueValues},
};

}  // namespace

std::span<const Builtin> valueListFunctions() { return kFunctions; }

}  // namespace sim::calc
