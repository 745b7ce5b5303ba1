#include "sim/session/session.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <thread>

#include "sim/calc/errors.h"
#include "sim/core/encoding.h"

namespace sim {

namespace {

std::atomic<bool> gSessionRunning{false};

ScriptRunRecord recordOf(const ScriptRun& run) {
    return {toUtf8(run.request.script), toUtf8(run.request.file), toUtf8(run.request.parameter),
            run.error, errorMessage(run.error)};
}

bool isReturn(char16_t c) { return c == u'\r' || c == u'\n' || c == u'\u2028' || c == u'\u2029'; }

// The character (counting a pair of surrogates once), line and column of a UTF-16 offset.
void placeOffset(std::u16string_view calc, int offset, EvalResult& out) {
    const auto end = std::min<std::size_t>(static_cast<std::size_t>(offset), calc.size());
    int position = 1, line = 1, column = 1;
    for (std::size_t i = 0; i < end; ++i) {
        if (calc[i] >= 0xDC00 && calc[i] <= 0xDFFF && i > 0 && calc[i - 1] >= 0xD800 &&
            calc[i - 1] <= 0xDBFF) {
            continue;
        }
        ++position;
        ++column;
        if (isReturn(calc[i]) &&
            !(calc[i] == u'\r' && i + 1 < calc.size() && calc[i + 1] == u'\n')) {
            ++line;
            column = 1;
        }
    }
    out.position = position;
    out.line = line;
    out.column = column;
}

// The shell's form of a result. Only the host's own failures (memory) throw: plug-in exceptions
// are caught at the call.
template <typename Evaluate>
EvalResult resultOf(std::u16string_view calc, Evaluate&& evaluate) {
    EvalResult out;
    auto notes = std::make_shared<EvalNotes>();
    try {
        calc::Result r = evaluate(notes);
        out.value = std::move(r.value);
        out.error = r.error;
        if (r.offset >= 0) placeOffset(calc, r.offset, out);
        out.detail = toUtf8(r.hint);
    } catch (...) {
        out.value = Value{};
        out.error = kGenericCalcError;
    }
    if (std::string sql = notes->sql(); !sql.empty()) {
        out.detail = out.detail.empty() ? std::move(sql) : out.detail + "; " + sql;
    }
    out.message = errorMessage(out.error);
    out.type = typeName(out.value.type());
    out.text = toUtf8(out.value.textForm().units());
    return out;
}

}  // namespace

std::string errorMessage(short code) { return std::string(calc::errorText(code)); }

std::string typeName(Type t) {
    switch (t) {
        case Type::Text:
            return "Text";
        case Type::Number:
            return "Number";
        case Type::Date:
            return "Date";
        case Type::Time:
            return "Time";
        case Type::Timestamp:
            return "Timestamp";
        case Type::Binary:
            return "Container";
        case Type::Boolean:
            return "Boolean";
        default:
            return "";
    }
}

Session::Session(SessionOptions options) : host_(Host::instance()), options_(std::move(options)) {
    if (gSessionRunning.exchange(true)) throw SessionError("another session is running");
    try {
        host_.reset();
        const std::u16string file = fromUtf8(options_.fileName);
        try {
            host_.openFile(file, options_.dbPath, options_.createDb);
        } catch (const DatabaseError& e) {
            throw SessionError(e.what());
        } catch (const std::invalid_argument& e) {
            throw SessionError("cannot open file " + options_.fileName + ": " + e.what());
        }
        try {
            if (!options_.seedSql.empty()) host_.database(file)->runScript(options_.seedSql);
        } catch (const DatabaseError& e) {
            throw SessionError(options_.seedName + ", " + e.what());
        }
        for (const auto& [table, rowid] : options_.records) {
            const std::string wrong = host_.setCurrentRecord(file, fromUtf8(table), rowid);
            if (!wrong.empty())
                throw SessionError("--record " + table + "=" + std::to_string(rowid) + ": " +
                                   wrong);
        }
        for (const std::string& other : options_.otherFiles) {
            try {
                host_.openFile(fromUtf8(other));
            } catch (const std::invalid_argument& e) {
                throw SessionError("cannot open file " + other + ": " + e.what());
            }
        }
        for (const auto& [name, calc] : options_.scripts) {
            host_.addScript(file, fromUtf8(name), fromUtf8(calc));
        }
        for (short id : options_.refusedIds) host_.refuseRegistration(id);
        host_.setScriptObserver([this](const ScriptRun& run) { recordRun(run); });
        if (!options_.pluginPath.empty()) {
            try {
                plugin_ = std::make_unique<Plugin>(options_.pluginPath);
            } catch (const PluginError& e) {
                throw SessionError(e.what());
            }
            initResult_ = plugin_->initialise(options_.hostVersion, host_.applicationVersion());
        }
    } catch (...) {
        plugin_.reset();
        host_.reset();
        gSessionRunning = false;
        throw;
    }
}

Session::~Session() {
    // A plug-in that refused to start gets no shutdown, as with a real host.
    if (plugin_ && initResult_ > 0) shutdown();
    // No pointer into the plug-in's code may outlive it.
    host_.unregisterAll();
    plugin_.reset();
    host_.reset();
    gSessionRunning = false;
}

void Session::recordRun(const ScriptRun& run) {
    ScriptRunRecord record = recordOf(run);
    {
        std::lock_guard lock(runsMutex_);
        runs_.push_back(record);
    }
    if (options_.onScriptRun) options_.onScriptRun(record);
}

EvalResult Session::eval(std::string_view calcUtf8) { return eval(calcUtf8, std::string_view()); }

EvalResult Session::eval(std::string_view calcUtf8, std::string_view file) {
    const std::u16string calc = fromUtf8(calcUtf8);
    return resultOf(calc, [&](std::shared_ptr<EvalNotes> notes) {
        return host_.evaluateTopLevel(calc, fromUtf8(file), std::move(notes));
    });
}

EvalResult Session::eval(std::string_view calcUtf8, const Env& env) {
    const std::u16string calc = fromUtf8(calcUtf8);
    return resultOf(calc, [&](std::shared_ptr<EvalNotes> notes) {
        Env listened(env);
        listened.notes = std::move(notes);
        calc::Result r = host_.evaluate(calc, listened);
        host_.runQueuedScripts();
        return r;
    });
}

void Session::idle(FMX_IdleLevel kind) {
    if (plugin_) plugin_->idle(kind);
    host_.runQueuedScripts();
}

void Session::idleFor(std::chrono::milliseconds duration, std::chrono::milliseconds interval) {
    const auto deadline = std::chrono::steady_clock::now() + duration;
    for (;;) {
        idle(kFMXT_UserIdle);
        const auto now = std::chrono::steady_clock::now();
        if (now >= deadline || host_.interrupted()) break;
        std::this_thread::sleep_for(
            std::min<std::chrono::steady_clock::duration>(interval, deadline - now));
    }
}

std::size_t Session::runQueuedScripts() { return host_.runQueuedScripts(); }

std::vector<ScriptRunRecord> Session::scriptRuns() const {
    std::lock_guard lock(runsMutex_);
    return runs_;
}

void Session::clearScriptRuns() {
    std::lock_guard lock(runsMutex_);
    runs_.clear();
}

StringAnswer Session::getString(FMX_Strings id, uint32_t bufferUnits) {
    if (!plugin_) return {};
    return plugin_->getString(id, bufferUnits);
}

void Session::preferences() {
    if (plugin_) plugin_->preferences();
}

void Session::shutdown() {
    if (!plugin_ || shutDown_) return;
    shutDown_ = true;
    plugin_->shutdown();
}

}  // namespace sim
