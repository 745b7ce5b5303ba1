// One run of the substitute host with a plug-in: the files it opens, the plug-in it loads and
// initialises, and the calculations, idle calls and script runs in between. This is the API the
// shell and the tests use. Only one Session may exist at a time (the host is one per process).
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sim/core/value.h"
#include "sim/session/host.h"
#include "sim/session/plugin.h"

namespace sim {

// A session that cannot start: the plug-in does not load, a database path is bad, a seed fails.
class SessionError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A script run as the shell reports it (UTF-8).
struct ScriptRunRecord {
    std::string script;
    std::string file;
    std::string parameter;
    short error = 0;        // the error of the script's calculation
    std::string message{};  // its text (errorMessage), empty without error
    // Runs are the same run when they name the same script, file and parameter.
    friend bool operator==(const ScriptRunRecord& a, const ScriptRunRecord& b) {
        return a.script == b.script && a.file == b.file && a.parameter == b.parameter;
    }
};

struct SessionOptions {
    std::string pluginPath;               // empty: no plug-in (tests register functions directly)
    std::string fileName = "Demo";        // the current file
    std::string dbPath;                   // its database; empty: in memory
    bool createDb = false;                // create dbPath when it does not exist
    std::string seedSql;                  // SQL run on the current file's database after opening
    std::string seedName = "seed";        // what a failure of the seed calls it (its file)
    std::vector<std::string> otherFiles;  // opened after it, in memory
    // Current records of the current file's tables (table, rowid), set after the seed ran; the
    // last one's table is the current table.
    std::vector<std::pair<std::string, int64_t>> records;
    std::vector<std::pair<std::string, std::string>> scripts;  // of the current file: name, calc
    short hostVersion = Plugin::kDefaultHostVersion;
    std::vector<short> refusedIds;  // registration of these ids is refused
    // Called for every script run, on the thread that ran it.
    std::function<void(const ScriptRunRecord&)> onScriptRun;
};

struct EvalResult {
    std::string type;  // "Text", "Number", "Date", "Time", "Timestamp", "Container", "Boolean", ""
    std::string text;  // UTF-8
    short error = 0;
    Value value;
    std::string message;  // FileMaker's text for the error (empty without error or text)
    // What the host can tell beyond the code: SQLite's message for a query that failed, the
    // name the calculation used that the host does not know. May be set without an error (a
    // failed ExecuteSQL gives "?").
    std::string detail;
    // Where a syntax error was found: the character (from 1) in the calculation, and its line
    // and character within the line; 0 when the error is not a syntax error.
    int position = 0;
    int line = 0;
    int column = 0;
};

// "Unexpected end of calculation" for 1203; empty for a code without a text.
std::string errorMessage(short code);

// The name the shell prints for a value's type ("" for an invalid value).
std::string typeName(Type t);

class Session {
public:
    // Resets the host, opens the files, adds the scripts, loads the plug-in and sends
    // initialise. Throws SessionError when something cannot start (a failed initialise is not
    // an error: see initResult()).
    explicit Session(SessionOptions options);
    // Shuts the plug-in down (unless done), unloads it and resets the host.
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // The plug-in's answer to initialise; 0 when no plug-in was loaded.
    short initResult() const { return initResult_; }
    bool hasPlugin() const { return plugin_ != nullptr; }

    // Evaluates a calculation outside any script in `file` (default: the current file), then
    // runs the scripts it started. Safe from several threads at once.
    EvalResult eval(std::string_view calcUtf8);
    EvalResult eval(std::string_view calcUtf8, std::string_view file);
    // The same in an environment the caller keeps, such as a thread's own: its file and its
    // "$" variables.
    EvalResult eval(std::string_view calcUtf8, const Env& env);

    // One idle call of `kind` to the plug-in, then the queued scripts run.
    void idle(FMX_IdleLevel kind);
    // Safe idle calls every `interval` for `duration`, running queued scripts after each; ends
    // early when the host is interrupted.
    void idleFor(std::chrono::milliseconds duration,
                 std::chrono::milliseconds interval = std::chrono::milliseconds(20));
    std::size_t runQueuedScripts();
    // Every script run so far, in order.
    std::vector<ScriptRunRecord> scriptRuns() const;
    void clearScriptRuns();

    StringAnswer getString(FMX_Strings id, uint32_t bufferUnits = 1024);
    void preferences();
    void shutdown();  // once; later calls do nothing

    // Direct access for test controls: refusals, files, the clock. Fault injection goes
    // through sim/faults.h.
    Host& host() { return host_; }
    Plugin* plugin() { return plugin_.get(); }

private:
    void recordRun(const ScriptRun& run);

    Host& host_;
    SessionOptions options_;
    std::unique_ptr<Plugin> plugin_;
    short initResult_ = 0;
    bool shutDown_ = false;
    mutable std::mutex runsMutex_;
    std::vector<ScriptRunRecord> runs_;
};

}  // namespace sim
