#include "globals/dictionary.h"

#include <exception>
#include <optional>
#include <string>

#include "fmlib/convert.h"
#include "globals/store.h"

namespace rvl {

namespace {

using Lock = fmlib::ScopedLock<fmlib::RecursiveMutex>;

constexpr char16_t kReturn = u'\r';

// The open files' names, or nothing when the host reports an error.
std::optional<std::u16string> databaseNames(const fmx::ExprEnv& env) {
    fmx::DataUniquePtr value;
    if (env.Evaluate("DatabaseNames", *value) != 0) return std::nullopt;
    return FStringFromData(*value);
}

std::optional<std::u16string> fileName(const fmx::ExprEnv& env) {
    fmx::TextUniquePtr name;
    if (fmlib::EvaluateFileName(env, fmlib::kSpacedFileNameCalculation, *name) != 0) {
        return std::nullopt;
    }
    return FStringFromText(*name);
}

// What asking for the calling file's name gave: the name, nothing (the host reported an error),
// or the failure of a host call, kept to be raised only if the name turns out to be needed.
struct FileNameAnswer {
    std::optional<std::u16string> name;
    std::exception_ptr failure;
};

FileNameAnswer callingFileName(const fmx::ExprEnv& env) {
    try {
        return {fileName(env), nullptr};
    } catch (...) {
        return {std::nullopt, std::current_exception()};
    }
}

}  // namespace

KeyUnits::KeyUnits(const fmx::Text& key) : size_(key.GetSize()) {
    if (size_ > kInline) {
        large_.resize(size_);
        data_ = large_.data();
    }
    if (size_ > 0) {
        key.GetUnicode(reinterpret_cast<fmx::unichar16*>(data_), 0,
                       static_cast<fmx::uint32>(size_));
    }
}

void Dictionary::loadValueForKey(const fmx::Text& key, fmx::Data& out) const {
    loadValueForKey(KeyUnits(key).view(), out);
}

void Dictionary::loadValueForKey(KeyView key, fmx::Data& out) const {
    Lock lock(gRecursiveMutex);
    const auto found = values_.find(key);
    if (found != values_.end()) {
        const Value& value = *found->second;
        fmlib::FMData2FMData(value.data(), value.type(), out);
    }
}

void Dictionary::storeValueForKey(const fmx::Text& key, const fmx::Data& value) {
    const KeyUnits k(key);
    storeValueForKey(k.view(), value, value.GetNativeType());
}

void Dictionary::storeValueForKey(KeyView key, const fmx::Data& value, fmx::int32 valueType) {
    Lock lock(gRecursiveMutex);
    storeLocked(key, value, valueType);
    if (!localKeys_.empty()) eraseLocalKeyLocked(key);
}

void Dictionary::storeValueForKey_(KeyView key, const fmx::Data& value) {
    Lock lock(gRecursiveMutex);
    storeLocked(key, value, value.GetNativeType());
}

void Dictionary::storeLocked(KeyView key, const fmx::Data& value, fmx::int32 valueType) {
    const auto found = values_.find(key);
    if (found != values_.end()) {
        found->second->assign(value, valueType);
    } else {
        values_.emplace(KeyString(key), std::make_shared<Value>(value, valueType));
    }
}

void Dictionary::storeLocalValueForKey(const fmx::ExprEnv& env, const fmx::Text& key,
                                       const fmx::Data& value) {
    const KeyUnits k(key);
    storeLocalValueForKey(env, k.view(), value, value.GetNativeType());
}

void Dictionary::storeLocalValueForKey(const fmx::ExprEnv& env, KeyView key, const fmx::Data& value,
                                       fmx::int32 valueType) {
    // Asked before locking, so that no thread waits for the host's calculation engine while
    // holding the store. Only a key that is not bound yet uses the answer.
    const FileNameAnswer file = callingFileName(env);
    Lock lock(gRecursiveMutex);
    storeLocked(key, value, valueType);
    if (localKeys_.find(key) != localKeys_.end()) return;
    if (file.failure) std::rethrow_exception(file.failure);
    if (file.name) localKeys_.emplace(KeyString(key), *file.name);
}

void Dictionary::removeKeyValue(const fmx::Text& key) { removeKeyValue(KeyUnits(key).view()); }

void Dictionary::removeKeyValue(KeyView key) {
    Lock lock(gRecursiveMutex);
    eraseValueLocked(key);
    eraseLocalKeyLocked(key);
}

void Dictionary::removeKeyValue_(KeyView key) {
    Lock lock(gRecursiveMutex);
    eraseValueLocked(key);
}

void Dictionary::removeLocalKey_(KeyView key) {
    Lock lock(gRecursiveMutex);
    eraseLocalKeyLocked(key);
}

void Dictionary::eraseValueLocked(KeyView key) {
    const auto found = values_.find(key);
    if (found != values_.end()) values_.erase(found);
}

void Dictionary::eraseLocalKeyLocked(KeyView key) {
    if (localKeys_.empty()) return;
    const auto found = localKeys_.find(key);
    if (found != localKeys_.end()) localKeys_.erase(found);
}

Dictionary::LocalKeyMap::iterator Dictionary::removeLocalKeyByIterator_(
    LocalKeyMap::iterator entry) {
    return localKeys_.erase(entry);
}

void Dictionary::cleanLocalKeys(const fmx::ExprEnv& env) {
    const std::optional<std::u16string> names = databaseNames(env);
    if (!names) return;
    // Every open file's name then stands between two returns, so a needle of return, name,
    // return matches whole names only.
    const std::u16string haystack = kReturn + *names + kReturn;
    Lock lock(gRecursiveMutex);
    for (auto entry = localKeys_.begin(); entry != localKeys_.end();) {
        if (haystack.find(kReturn + entry->second + kReturn) != std::u16string::npos) {
            ++entry;
            continue;
        }
        eraseValueLocked(entry->first);
        entry = removeLocalKeyByIterator_(entry);
    }
}

void Dictionary::clean() {
    Lock lock(gRecursiveMutex);
    localKeys_.clear();
    values_.clear();
}

bool Dictionary::contains_(KeyView key) const {
    Lock lock(gRecursiveMutex);
    return values_.find(key) != values_.end();
}

std::u16string Dictionary::boundFile_(KeyView key) const {
    Lock lock(gRecursiveMutex);
    const auto found = localKeys_.find(key);
    return found == localKeys_.end() ? std::u16string() : found->second;
}

std::size_t Dictionary::size() const {
    Lock lock(gRecursiveMutex);
    return values_.size();
}

std::ostream& operator<<(std::ostream& out, const KeyString& key) {
    return out << fmlib::Utf8FromUtf16(key);
}

}  // namespace rvl
