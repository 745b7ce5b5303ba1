// Started scripts and calculations: the queue the start-script callback fills, and the runs the
// host makes of it after each calculation and at idle time.
#include <utility>

#include "sim/core/text.h"
#include "sim/session/host.h"
#include "sim/session/host_context.h"

namespace sim {

namespace {

bool sameName(std::u16string_view a, std::u16string_view b) {
    return a.size() == b.size() && toLower(a) == toLower(b);
}

}  // namespace

short Host::startScript(std::u16string_view file, std::u16string_view script,
                        std::u16string parameter) {
    std::lock_guard lock(mutex_);
    auto f = findFileLocked(file.empty() ? std::u16string_view(current_) : file);
    if (!f) return kFileMissing;
    for (const auto& [name, calc] : f->scripts) {
        if (sameName(name, script)) {
            queue_.push_back({f->name, name, std::move(parameter)});
            return 0;
        }
    }
    return kScriptMissing;
}

std::size_t Host::queuedScripts() const {
    std::lock_guard lock(mutex_);
    return queue_.size();
}

std::optional<ScriptRequest> Host::takeQueuedScript() {
    std::lock_guard lock(mutex_);
    if (queue_.empty()) return std::nullopt;
    ScriptRequest next = std::move(queue_.front());
    queue_.pop_front();
    return next;
}

std::size_t Host::runQueuedScripts() {
    std::size_t runs = 0;
    while (runs < kMaxRunsPerDrain) {
        std::optional<ScriptRequest> next = takeQueuedScript();
        if (!next) break;
        runScript(*next);
        ++runs;
    }
    return runs;
}

ScriptRun Host::runScript(const ScriptRequest& request) {
    ScriptRun run{request, {}, 0};
    std::u16string calculation;
    {
        std::lock_guard lock(mutex_);
        auto f = findFileLocked(request.file);
        if (!f) {
            run.error = kFileMissing;  // closed since the script was started
            return run;
        }
        run.error = kScriptMissing;
        for (const auto& [name, calc] : f->scripts) {
            if (sameName(name, request.script)) {
                calculation = calc;
                run.error = 0;
            }
        }
        if (run.error) return run;
    }
    Env env;
    env.file = request.file;
    env.scriptName = request.script;
    env.scriptParameter = Value::text(request.parameter);
    env.locals = std::make_shared<Variables>();
    calc::Result result = evaluate(calculation, env);
    setScriptResult(request.file, result.value);
    run.result = std::move(result.value);
    run.error = result.error;

    std::function<void(const ScriptRun&)> observer;
    {
        std::lock_guard lock(mutex_);
        observer = observer_;
    }
    if (observer) observer(run);
    return run;
}

void Host::setScriptObserver(std::function<void(const ScriptRun&)> observer) {
    std::lock_guard lock(mutex_);
    observer_ = std::move(observer);
}

calc::Result Host::evaluate(std::u16string_view expression, const Env& env) {
    HostContext context(*this, env);
    return calc::evaluate(expression, context);
}

calc::Result Host::evaluateTopLevel(std::u16string_view expression, std::u16string_view file,
                                    std::shared_ptr<EvalNotes> notes) {
    Env env;
    env.notes = std::move(notes);
    env.file = canonicalFileName(file.empty() ? currentFile() : std::u16string(file));
    if (env.file.empty()) return {Value{}, kFileMissing};
    calc::Result result = evaluate(expression, env);
    runQueuedScripts();
    return result;
}

}  // namespace sim
