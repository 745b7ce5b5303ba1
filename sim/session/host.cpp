#include "sim/session/host.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <stdexcept>

#include "sim/core/text.h"

namespace sim {

namespace {

constexpr int64_t kUnixEpochSeconds = 62135596800;  // 0001-01-01 to 1970-01-01
constexpr char16_t kDefaultApplicationVersion[] = u"Server 22.0.1 (fmsim)";

bool isAscii(std::u16string_view s) {
    return std::all_of(s.begin(), s.end(), [](char16_t c) { return c < 0x80; });
}

char16_t asciiLower(char16_t c) { return c >= u'A' && c <= u'Z' ? c + (u'a' - u'A') : c; }

// Names compare as toLower maps them. Plain ASCII is mapped here, since every calculation and
// every plug-in call compares file names; other characters go through toLower, which also maps
// some of them onto ASCII (KELVIN SIGN to "k").
bool sameName(std::u16string_view a, std::u16string_view b) {
    if (a.size() != b.size()) return false;
    if (a == b) return true;
    if (isAscii(a) && isAscii(b)) {
        return std::equal(a.begin(), a.end(), b.begin(),
                          [](char16_t x, char16_t y) { return asciiLower(x) == asciiLower(y); });
    }
    return toLower(a) == toLower(b);
}

// FileMaker names a file without its extension (Get ( FileName ), DatabaseNames), and so
// "Demo.fmp12" and "Demo" are the same file here.
std::u16string_view withoutExtension(std::u16string_view name) {
    constexpr std::u16string_view kExtension = u".fmp12";
    if (name.size() > kExtension.size() &&
        sameName(name.substr(name.size() - kExtension.size()), kExtension)) {
        name.remove_suffix(kExtension.size());
    }
    return name;
}

}  // namespace

DateTime systemNow() {
    const std::time_t t = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm local{};
    localtime_r(&t, &local);
    const int64_t seconds = static_cast<int64_t>(t) + local.tm_gmtoff + kUnixEpochSeconds;
    return DateTime{seconds * 1000000};
}

Host::Host() = default;

Host& Host::instance() {
    static Host host;
    return host;
}

void Host::reset() {
    std::lock_guard lock(mutex_);
    files_.clear();
    filesWithDetail_ = 0;
    current_.clear();
    nextFileId_ = 1;
    functions_.clear();
    byName_.clear();
    functionsVersion_.fetch_add(1, std::memory_order_release);
    refused_.clear();
    queue_.clear();
    observer_ = nullptr;
    clock_ = nullptr;
    applicationVersion_.clear();
    interrupt_ = false;
}

// --- Files ---------------------------------------------------------------------------------

std::shared_ptr<Host::File> Host::findFileLocked(std::u16string_view name) const {
    name = withoutExtension(name);
    for (const auto& f : files_) {
        if (sameName(f->name, name)) return f;
    }
    return nullptr;
}

void Host::openFile(std::u16string_view name, const std::string& dbPath, bool createDb) {
    name = withoutExtension(name);
    if (name.empty()) throw std::invalid_argument("a file needs a name");
    {
        std::lock_guard lock(mutex_);
        if (findFileLocked(name)) throw std::invalid_argument("file is already open");
    }
    // Opening a database file may take a while; do it outside the lock.
    auto file = std::make_shared<File>();
    file->name = std::u16string(name);
    file->db = std::make_shared<Database>(dbPath, createDb);
    std::lock_guard lock(mutex_);
    if (findFileLocked(name)) throw std::invalid_argument("file is already open");
    file->id = nextFileId_++;
    files_.push_back(file);
    if (current_.empty()) current_ = file->name;
}

bool Host::closeFile(std::u16string_view name) {
    std::lock_guard lock(mutex_);
    name = withoutExtension(name);
    auto it = std::find_if(files_.begin(), files_.end(),
                           [&](const auto& f) { return sameName(f->name, name); });
    if (it == files_.end()) return false;
    const bool wasCurrent = sameName((*it)->name, current_);
    if (!(*it)->externalErrorDetail.empty()) --filesWithDetail_;
    files_.erase(it);
    if (wasCurrent) current_ = files_.empty() ? std::u16string() : files_.front()->name;
    return true;
}

bool Host::setCurrentFile(std::u16string_view name) {
    std::lock_guard lock(mutex_);
    auto f = findFileLocked(name);
    if (!f) return false;
    current_ = f->name;
    return true;
}

std::u16string Host::currentFile() const {
    std::lock_guard lock(mutex_);
    return current_;
}

bool Host::isOpen(std::u16string_view name) const {
    std::lock_guard lock(mutex_);
    return findFileLocked(name) != nullptr;
}

std::vector<std::u16string> Host::databaseNames() const {
    std::lock_guard lock(mutex_);
    std::vector<std::u16string> names;
    names.reserve(files_.size());
    if (!current_.empty()) names.push_back(current_);
    for (const auto& f : files_) {
        if (f->name != current_) names.push_back(f->name);
    }
    return names;
}

uint64_t Host::fileId(std::u16string_view name) const {
    std::lock_guard lock(mutex_);
    auto f = findFileLocked(name);
    return f ? f->id : 0;
}

std::u16string Host::canonicalFileName(std::u16string_view name) const {
    std::lock_guard lock(mutex_);
    auto f = findFileLocked(name);
    return f ? f->name : std::u16string();
}

void Host::addScript(std::u16string_view file, std::u16string_view name,
                     std::u16string_view calculation) {
    if (name.empty()) throw std::invalid_argument("a script needs a name");
    std::lock_guard lock(mutex_);
    auto f = findFileLocked(file);
    if (!f) throw std::invalid_argument("no such open file");
    for (auto& [scriptName, calc] : f->scripts) {
        if (sameName(scriptName, name)) {
            calc = std::u16string(calculation);
            return;
        }
    }
    f->scripts.emplace_back(std::u16string(name), std::u16string(calculation));
}

std::optional<std::vector<std::u16string>> Host::scriptNames(std::u16string_view file) const {
    std::lock_guard lock(mutex_);
    auto f = findFileLocked(file.empty() ? std::u16string_view(current_) : file);
    if (!f) return std::nullopt;
    std::vector<std::u16string> names;
    names.reserve(f->scripts.size());
    for (const auto& script : f->scripts) names.push_back(script.first);
    return names;
}

void Host::setScriptResult(std::u16string_view file, Value result) {
    std::lock_guard lock(mutex_);
    if (auto f = findFileLocked(file)) f->scriptResult = std::move(result);
}

Value Host::scriptResult(std::u16string_view file) const {
    std::lock_guard lock(mutex_);
    auto f = findFileLocked(file);
    return f ? f->scriptResult : Value{};
}

void Host::setExternalErrorDetail(std::u16string_view file, std::u16string detail) {
    if (detail.empty() && filesWithDetail_.load() == 0) return;  // nothing to clear anywhere
    std::lock_guard lock(mutex_);
    const auto f = findFileLocked(file);
    if (!f) return;
    if (f->externalErrorDetail.empty() != detail.empty()) {
        if (detail.empty()) {
            --filesWithDetail_;
        } else {
            ++filesWithDetail_;
        }
    }
    f->externalErrorDetail = std::move(detail);
}

std::u16string Host::externalErrorDetail(std::u16string_view file) const {
    std::lock_guard lock(mutex_);
    auto f = findFileLocked(file);
    return f ? f->externalErrorDetail : std::u16string();
}

std::shared_ptr<Database> Host::database(std::u16string_view file) const {
    std::lock_guard lock(mutex_);
    auto f = findFileLocked(file);
    return f ? f->db : nullptr;
}

std::shared_ptr<Variables> Host::fileGlobals(std::u16string_view file) const {
    std::lock_guard lock(mutex_);
    auto f = findFileLocked(file);
    return f ? f->globals : nullptr;
}

std::shared_ptr<Variables> Host::fileLocals(std::u16string_view file) const {
    std::lock_guard lock(mutex_);
    auto f = findFileLocked(file);
    return f ? f->locals : nullptr;
}

// --- Plug-in functions -------------------------------------------------------------------

short Host::registerFunction(RegisteredFunction f) {
    if (f.function == nullptr || f.name.empty()) return kRefusedRegistration;
    std::lock_guard lock(mutex_);
    if (refused_.count(f.id)) return kRefusedRegistration;
    std::u16string key = toLower(f.name);
    if (functions_.count(f.id) || byName_.count(key)) return kAlreadyRegistered;
    byName_.emplace(std::move(key), f.id);
    functions_.emplace(f.id, std::move(f));
    functionsVersion_.fetch_add(1, std::memory_order_release);
    return 0;
}

short Host::unregisterFunction(short id) {
    std::lock_guard lock(mutex_);
    auto it = functions_.find(id);
    if (it == functions_.end()) return kFunctionMissing;
    byName_.erase(toLower(it->second.name));
    functions_.erase(it);
    functionsVersion_.fetch_add(1, std::memory_order_release);
    return 0;
}

void Host::unregisterAll() {
    std::lock_guard lock(mutex_);
    functions_.clear();
    byName_.clear();
    functionsVersion_.fetch_add(1, std::memory_order_release);
}

void Host::refuseRegistration(short id, bool refuse) {
    std::lock_guard lock(mutex_);
    if (refuse) {
        refused_.insert(id);
    } else {
        refused_.erase(id);
    }
}

std::optional<RegisteredFunction> Host::findFunction(std::u16string_view name) const {
    const std::u16string wanted = toLower(name);
    std::lock_guard lock(mutex_);
    auto byName = byName_.find(wanted);
    if (byName == byName_.end()) return std::nullopt;
    return functions_.at(byName->second);
}

bool Host::findFunctionLowered(std::u16string_view lowered, calc::ExternalFunction& entry) const {
    std::lock_guard lock(mutex_);
    auto byName = byName_.find(lowered);
    if (byName == byName_.end()) return false;
    const RegisteredFunction& f = functions_.at(byName->second);
    if (entry.name != f.name) entry.name = f.name;
    entry.id = f.id;
    entry.minArgs = f.minArgs;
    entry.maxArgs = f.maxArgs;
    entry.function = f.function;
    return true;
}

std::vector<RegisteredFunction> Host::functions() const {
    std::lock_guard lock(mutex_);
    std::vector<RegisteredFunction> all;
    all.reserve(functions_.size());
    for (const auto& entry : functions_) all.push_back(entry.second);
    return all;
}

// --- Clock and identity ------------------------------------------------------------------

DateTime Host::now() const {
    std::function<DateTime()> clock;
    {
        std::lock_guard lock(mutex_);
        clock = clock_;
    }
    return clock ? clock() : systemNow();
}

void Host::setClock(std::function<DateTime()> clock) {
    std::lock_guard lock(mutex_);
    clock_ = std::move(clock);
}

std::u16string Host::applicationVersion() const {
    std::lock_guard lock(mutex_);
    return applicationVersion_.empty() ? std::u16string(kDefaultApplicationVersion)
                                       : applicationVersion_;
}

void Host::setApplicationVersion(std::u16string version) {
    std::lock_guard lock(mutex_);
    applicationVersion_ = std::move(version);
}

}  // namespace sim
