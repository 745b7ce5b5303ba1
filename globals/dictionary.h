// The store behind Ravelin_SetGlobal and Ravelin_GetGlobal: named host values, each either
// global or bound ("local") to the file whose calculation stored it.
//
// Keys are the exact UTF-16 units of the key text (no trimming, case folding or normalisation)
// and both maps order them by unsigned 16-bit units. Every key of the local-key map also has a
// value; a value without a local entry is global.
//
// FileMaker Server calls plug-in functions from several threads at once, so every operation
// takes rvl::gRecursiveMutex for its whole length. Calculations are evaluated in the host before
// the lock is taken, never under it. Operations ending in an underscore take a key already made;
// the iterator one expects its caller to hold the lock.
#pragma once

#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>

#include "fmlib/mutex.h"
#include "globals/value.h"
#include "host/fmx.h"

namespace rvl {

// Serialises every operation on the store (globals/store.h).
extern fmlib::RecursiveMutex gRecursiveMutex;

using KeyString = std::u16string;
// A key's units where they already are, for lookups that need no copy of their own.
using KeyView = std::u16string_view;

// The units of a key text, read from the host at once; keys of usual length need no allocation.
class KeyUnits {
public:
    explicit KeyUnits(const fmx::Text& key);
    KeyUnits(const KeyUnits&) = delete;
    KeyUnits& operator=(const KeyUnits&) = delete;

    KeyView view() const { return {data_, size_}; }
    bool empty() const { return size_ == 0; }

private:
    static constexpr std::size_t kInline = 32;
    char16_t inline_[kInline];
    std::u16string large_;
    char16_t* data_ = inline_;
    std::size_t size_ = 0;
};

class Dictionary {
public:
    // Ordered by unsigned 16-bit units; std::less<> lets a KeyView look a key up without a copy.
    using ValueMap = std::map<KeyString, std::shared_ptr<Value>, std::less<>>;
    using LocalKeyMap = std::map<KeyString, std::u16string, std::less<>>;  // key -> file name

    Dictionary() = default;
    Dictionary(const Dictionary&) = delete;
    Dictionary& operator=(const Dictionary&) = delete;

    // Copies the stored value into `out`; an unknown key leaves `out` as it is.
    void loadValueForKey(const fmx::Text& key, fmx::Data& out) const;
    void loadValueForKey(KeyView key, fmx::Data& out) const;

    // Stores `value` as a global: a file binding the key had is dropped. `valueType` is the
    // value's native type, when the caller has read it already.
    void storeValueForKey(const fmx::Text& key, const fmx::Data& value);
    void storeValueForKey(KeyView key, const fmx::Data& value, fmx::int32 valueType);
    // Overwrites an existing value in place (the same object stays in the map) or inserts one.
    void storeValueForKey_(KeyView key, const fmx::Data& value);
    // Stores `value` and binds the key to the calling file ("Get( FileName )" in `env`). A key
    // that is bound already keeps its first file; when the file name cannot be evaluated the
    // value stays unbound, that is global.
    void storeLocalValueForKey(const fmx::ExprEnv& env, const fmx::Text& key,
                               const fmx::Data& value);
    void storeLocalValueForKey(const fmx::ExprEnv& env, KeyView key, const fmx::Data& value,
                               fmx::int32 valueType);

    // Removes value and binding; a missing key is no error.
    void removeKeyValue(const fmx::Text& key);
    void removeKeyValue(KeyView key);
    void removeKeyValue_(KeyView key);
    void removeLocalKey_(KeyView key);
    // Erases one binding; answers the entry after it. The caller holds gRecursiveMutex.
    LocalKeyMap::iterator removeLocalKeyByIterator_(LocalKeyMap::iterator entry)
        REQUIRES(gRecursiveMutex);

    // Drops every bound key (value and binding) whose file is not among "DatabaseNames" in
    // `env`, matching whole names exactly. Changes nothing when that calculation fails.
    void cleanLocalKeys(const fmx::ExprEnv& env);
    // Empties both maps.
    void clean();

    // Read-only views for diagnostics and tests.
    bool contains_(KeyView key) const;
    // The file a key is bound to; empty when the key is global or unknown.
    std::u16string boundFile_(KeyView key) const;
    std::size_t size() const;

private:
    void storeLocked(KeyView key, const fmx::Data& value, fmx::int32 valueType)
        REQUIRES(gRecursiveMutex);
    void eraseValueLocked(KeyView key) REQUIRES(gRecursiveMutex);
    void eraseLocalKeyLocked(KeyView key) REQUIRES(gRecursiveMutex);

    // Declared in this order so that destruction drops the bindings before the values.
    ValueMap values_ GUARDED_BY(gRecursiveMutex);
    LocalKeyMap localKeys_ GUARDED_BY(gRecursiveMutex);
};

// Writes a key as UTF-8 (unpaired surrogates as '?').
std::ostream& operator<<(std::ostream& out, const KeyString& key);

}  // namespace rvl
