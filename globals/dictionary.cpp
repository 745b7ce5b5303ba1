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

void Dictionary::loadValueForKey(const fmx::Text& key, fmx::Data& out) const {
    const KeyString k = FStringFromText(key);
    Lock lock(gRecursiveMutex);
    const auto found = values_.find(k);
    if (found != values_.end()) fmlib::FMData2FMData(found->second->data(), out);
}

void Dictionary::storeValueForKey(const fmx::Text& key, const fmx::Data& value) {
    const KeyString k = FStringFromText(key);
    Lock lock(gRecursiveMutex);
    storeValueForKey_(k, value);
    removeLocalKey_(k);
}

void Dictionary::storeValueForKey_(const KeyString& key, const fmx::Data& value) {
    Lock lock(gRecursiveMutex);
    const auto found = values_.find(key);
    if (found != values_.end()) {
        found->second->assign(value);
    } else {
        values_.emplace(key, std::make_shared<Value>(value));
    }
}

void Dictionary::storeLocalValueForKey(const fmx::ExprEnv& env, const fmx::Text& key,
                                       const fmx::Data& value) {
    const KeyString k = FStringFromText(key);
    // Asked before locking, so that no thread waits for the host's calculation engine while
    // holding the store. Only a key that is not bound yet uses the answer.
    const FileNameAnswer file = callingFileName(env);
    Lock lock(gRecursiveMutex);
    storeValueForKey_(k, value);
    if (localKeys_.contains(k)) return;
    if (file.failure) std::rethrow_exception(file.failure);
    if (file.name) localKeys_.emplace(k, *file.name);
}

void Dictionary::removeKeyValue(const fmx::Text& key) {
    const KeyString k = FStringFromText(key);
    Lock lock(gRecursiveMutex);
    removeKeyValue_(k);
    removeLocalKey_(k);
}

void Dictionary::removeKeyValue_(const KeyString& key) {
    Lock lock(gRecursiveMutex);
    values_.erase(key);
}

void Dictionary::removeLocalKey_(const KeyString& key) {
    Lock lock(gRecursiveMutex);
    localKeys_.erase(key);
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
        removeKeyValue_(entry->first);
        entry = removeLocalKeyByIterator_(entry);
    }
}

void Dictionary::clean() {
    Lock lock(gRecursiveMutex);
    localKeys_.clear();
    values_.clear();
}

bool Dictionary::contains_(const KeyString& key) const {
    Lock lock(gRecursiveMutex);
    return values_.contains(key);
}

std::u16string Dictionary::boundFile_(const KeyString& key) const {
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
