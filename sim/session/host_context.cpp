#include "sim/session/host_context.h"

#include <cstring>
#include <exception>
#include <mutex>

#include "sim/core/encoding.h"
#include "sim/core/objects.h"
#include "sim/core/text.h"
#include "sim/session/host.h"

namespace sim {

namespace {

std::mutex gEscapesMutex;
FunctionEscapes gEscapes;  // guarded by gEscapesMutex

void noteEscape(const char* what) {
    const std::lock_guard lock(gEscapesMutex);
    ++gEscapes.count;
    gEscapes.last = what;
}

}  // namespace

FunctionEscapes functionEscapes() {
    const std::lock_guard lock(gEscapesMutex);
    return gEscapes;
}

void resetFunctionEscapes() {
    const std::lock_guard lock(gEscapesMutex);
    gEscapes = FunctionEscapes{};
}

HostContext::HostContext(Host& host, const Env& env) : host_(host), env_(env) {
    file_ = host.canonicalFileName(env.file.empty() ? host.currentFile() : env.file);
    if (file_.empty()) file_ = env.file;  // a closed file: its name stays, its variables are gone
    globals_ = host.fileGlobals(file_);
    locals_ = env.locals ? env.locals : host.fileLocals(file_);
}

std::u16string HostContext::fileName() { return file_; }

Variables* HostContext::variablesFor(std::u16string_view name) const {
    return name.starts_with(u"$$") ? globals_.get() : locals_.get();
}

Value HostContext::variable(std::u16string_view name, int repetition) {
    Variables* vars = variablesFor(name);
    return vars ? vars->get(name, repetition) : Value{};
}

void HostContext::setVariable(std::u16string_view name, int repetition, Value v) {
    if (Variables* vars = variablesFor(name)) vars->set(name, repetition, std::move(v));
}

Value HostContext::scriptParameter() { return env_.scriptParameter; }

std::vector<std::u16string> HostContext::databaseNames() { return host_.databaseNames(); }

std::optional<std::vector<std::u16string>> HostContext::scriptNames(std::u16string_view file) {
    return host_.scriptNames(file.empty() ? std::u16string_view(file_) : file);
}

DateTime HostContext::now() { return host_.now(); }

std::u16string HostContext::applicationVersion() { return host_.applicationVersion(); }

std::u16string HostContext::scriptName() { return env_.scriptName; }

std::u16string HostContext::lastExternalErrorDetail() { return host_.externalErrorDetail(file_); }

Value HostContext::scriptResult() { return host_.scriptResult(file_); }

std::optional<std::u16string> HostContext::executeSql(std::u16string_view query,
                                                      const std::vector<Value>& arguments,
                                                      std::u16string_view fieldSeparator,
                                                      std::u16string_view rowSeparator) {
    std::u16string failure;
    return executeSqlExplained(query, arguments, fieldSeparator, rowSeparator, failure);
}

std::optional<std::u16string> HostContext::executeSqlExplained(std::u16string_view query,
                                                               const std::vector<Value>& arguments,
                                                               std::u16string_view fieldSeparator,
                                                               std::u16string_view rowSeparator,
                                                               std::u16string& failure) {
    failure.clear();
    const std::shared_ptr<Database> db = host_.database(file_);
    if (!db) return std::nullopt;
    std::u16string joined;
    std::string message;
    if (db->queryText(query, arguments, fieldSeparator, rowSeparator, joined,
                      Database::Access::ReadOnly, &message) != 0) {
        failure = fromUtf8(message);
        if (env_.notes) env_.notes->sqlFailed(std::move(message));
        return std::nullopt;
    }
    return joined;
}

bool HostContext::interrupted() { return host_.interrupted(); }

std::optional<Value> HostContext::field(std::u16string_view table, std::u16string_view field,
                                        int repetition) {
    return host_.fieldValue(file_, table, field, repetition);
}

bool HostContext::isCurrentTableField(std::u16string_view field) {
    return host_.hasCurrentTableField(file_, field);
}

calc::Context::RecordPlace HostContext::recordPlace() { return host_.recordPlace(file_); }

// Asks the host again whenever its table has changed, so that a function unregistered meanwhile
// (by the calculation's own arguments or by another thread) is missing at its call, not called
// from a stale copy. The version is read before asking: a change racing the lookup leaves an
// older version, and so the next lookup asks again.
const calc::ExternalFunction* HostContext::findFunction(std::u16string_view name) {
    return findFunctionLowered(toLower(name));
}

const calc::ExternalFunction* HostContext::findFunctionLowered(std::u16string_view lowered) {
    const uint64_t version = host_.functionsVersion();
    auto known = found_.find(lowered);
    if (known == found_.end()) known = found_.try_emplace(std::u16string(lowered)).first;
    Found& found = known->second;
    if (found.version != version) {
        found.registered = host_.findFunctionLowered(lowered, found.entry);
        found.version = version;
    }
    return found.registered ? &found.entry : nullptr;
}

short HostContext::callFunction(const calc::ExternalFunction& f, const std::vector<Value>& args,
                                Value& result) {
    const calc::OpenCall call(*this);
    for (const Value& v : args) openParameters().items.emplace_back(v);
    return callOpened(f, result);
}

void HostContext::openCall() {
    if (parameters_.size() == openDepth_) parameters_.push_back(std::make_unique<DataVectObj>());
    ++openDepth_;
}

void HostContext::addArgument(Value&& v) { openParameters().items.emplace_back(std::move(v)); }

size_t HostContext::openArgumentCount() { return openParameters().items.size(); }

void HostContext::closeCall() noexcept { parameters_[--openDepth_]->items.clear(); }

// The plug-in only borrows the arguments and the result for the call: the result lives on this
// frame, the arguments in the open call's kept vector.
short HostContext::callOpened(const calc::ExternalFunction& f, Value& result) {
    if (f.function == nullptr) return kGenericCalcError;
    DataVectObj& params = openParameters();
    DataObj out;
    short error = 0;
    try {
        CallEnvScope scope(env_);
        error = f.function(f.id, env_.handleRef(), *handleOf(&params), *handleOf(&out));
    } catch (const std::exception& e) {
        noteEscape(e.what());
        result = Value{};
        return kGenericCalcError;
    } catch (...) {
        noteEscape("unknown exception");
        result = Value{};
        return kGenericCalcError;
    }
    result = std::move(out).release();
    if (error >= kFirstPluginErrorResult && error <= kLastPluginErrorResult) {
        host_.setExternalErrorDetail(file_, result.asText().unitsCopy());
    } else {
        host_.clearExternalErrorDetail(file_);
    }
    return error;
}

// FNV-1a over words of four units (the last one filled up with zeros), then the high half
// folded into the low one: a function name is hashed on every call made through the context.
std::size_t HostContext::NameHash::operator()(std::u16string_view name) const {
    constexpr uint64_t kPrime = 0x100000001B3;
    uint64_t h = 0xCBF29CE484222325 ^ name.size();
    size_t i = 0;
    for (; i + 4 <= name.size(); i += 4) {
        uint64_t word;
        std::memcpy(&word, name.data() + i, sizeof word);
        h = (h ^ word) * kPrime;
    }
    if (i < name.size()) {
        uint64_t rest = 0;
        for (; i < name.size(); ++i) rest = (rest << 16) | name[i];
        h = (h ^ rest) * kPrime;
    }
    return static_cast<std::size_t>(h ^ (h >> 32));
}

bool HostContext::SameName::operator()(std::u16string_view a, std::u16string_view b) const {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof a[0]) == 0;
}

}  // namespace sim
