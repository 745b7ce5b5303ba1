// The substitute host's state, one per process: the open files (their "$$" variables, scripts
// and databases), the registered plug-in functions, the queue of started scripts, and the test
// controls. Everything is guarded by one mutex that is never held while plug-in code runs, since
// plug-in functions call back into the host re-entrantly and from several threads at once.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "host/fmx_types.h"
#include "sim/calc/context.h"
#include "sim/core/value.h"
#include "sim/session/database.h"
#include "sim/session/env.h"
#include "sim/session/variables.h"

namespace sim {

// Error codes the host answers with (FileMaker's where it has one).
constexpr short kFileMissing = 100;         // "File is missing"
constexpr short kScriptMissing = 104;       // "Script is missing"
constexpr short kGenericCalcError = 1200;   // an exception escaped a plug-in function
constexpr short kAlreadyRegistered = 1210;  // "Plug-in function ... has already been registered"
constexpr short kInvalidGetFunction = 1215;
constexpr short kFunctionMissing = 1224;    // unregistering an id that is not registered
constexpr short kRefusedRegistration = -1;  // the refuse-id test control, or a bad request
// A plug-in function failing with one of these hands its result text to
// Get ( LastExternalErrorDetail ).
constexpr short kFirstPluginErrorResult = 1552;
constexpr short kLastPluginErrorResult = 1559;

struct RegisteredFunction {
    short id = 0;
    std::u16string name;
    std::u16string prototype;
    std::u16string description;
    short minArgs = 0;
    short maxArgs = -1;
    uint32_t flags = 0;
    fmx::ExtPluginType function = nullptr;
};

struct ScriptRequest {
    std::u16string file;
    std::u16string script;
    std::u16string parameter;
};

struct ScriptRun {
    ScriptRequest request;
    Value result;
    short error = 0;
};

class Host {
public:
    // A script that keeps starting scripts stops being served after this many runs in one
    // drain of the queue; the rest waits for the next calculation or idle call.
    static constexpr std::size_t kMaxRunsPerDrain = 1000;

    static Host& instance();

    // Closes every file and forgets functions, queued scripts, refusals, the clock, the
    // observer and the application version.
    void reset();

    // --- Files ---------------------------------------------------------------------------
    // Opens a file with its own database (in memory for an empty path). The first file opened
    // becomes the current one. Throws DatabaseError for a bad path and std::invalid_argument
    // for an empty name or a file that is already open.
    void openFile(std::u16string_view name, const std::string& dbPath = {}, bool createDb = false);
    bool closeFile(std::u16string_view name);
    bool setCurrentFile(std::u16string_view name);  // false when no such file is open
    std::u16string currentFile() const;
    bool isOpen(std::u16string_view name) const;
    // The current file first, then the others in the order they were opened.
    std::vector<std::u16string> databaseNames() const;
    uint64_t fileId(std::u16string_view name) const;  // 0 when not open
    // Adds (or replaces) a script of an open file. Throws std::invalid_argument otherwise.
    void addScript(std::u16string_view file, std::u16string_view name,
                   std::u16string_view calculation);
    // Script names in the order they were added; nullopt when the file is not open.
    std::optional<std::vector<std::u16string>> scriptNames(std::u16string_view file) const;
    std::shared_ptr<Database> database(std::u16string_view file) const;
    // What Get ( LastExternalErrorDetail ) shows in a file; ignored for a file not open.
    void setExternalErrorDetail(std::u16string_view file, std::u16string detail);
    // The same with an empty detail; no call at all while no open file has a detail.
    void clearExternalErrorDetail(std::u16string_view file) {
        if (filesWithDetail_.load() != 0) setExternalErrorDetail(file, std::u16string());
    }
    std::u16string externalErrorDetail(std::u16string_view file) const;
    // What Get ( ScriptResult ) shows in a file: the result of its last script run.
    void setScriptResult(std::u16string_view file, Value result);
    Value scriptResult(std::u16string_view file) const;
    // "$$" variables of a file, and the "$" variables of calculations outside scripts. Both are
    // null when the file is not open.
    std::shared_ptr<Variables> fileGlobals(std::u16string_view file) const;
    std::shared_ptr<Variables> fileLocals(std::u16string_view file) const;
    // The open file's own spelling of `name` (names match ignoring case); empty when not open.
    std::u16string canonicalFileName(std::u16string_view name) const;

    // --- Records --------------------------------------------------------------------------
    // Makes record `rowid` of `table` (a table of the file's database) the table's current
    // record, and the table the file's current table. Returns what is wrong (no such table or
    // record), empty when done.
    std::string setCurrentRecord(std::u16string_view file, std::u16string_view table,
                                 int64_t rowid);
    struct RecordChoice {
        std::u16string table;
        int64_t rowid = 0;
        bool current = false;  // the current table's
    };
    // The records chosen in a file, in the order their tables were first given one.
    std::vector<RecordChoice> currentRecords(std::u16string_view file) const;
    // A field of the current record of `table` (empty: the current table): the record chosen
    // for it, else its first. An empty value when the table has no record or `repetition` is
    // beyond 1; nullopt when there is no such table or field.
    std::optional<Value> fieldValue(std::u16string_view file, std::u16string_view table,
                                    std::u16string_view field, int repetition) const;
    bool hasCurrentTableField(std::u16string_view file, std::u16string_view field) const;
    calc::Context::RecordPlace recordPlace(std::u16string_view file) const;

    // --- Interrupts ------------------------------------------------------------------------
    // The user's request to stop (Ctrl-C): running calculations fail with error 1 and idle
    // waits end until it is cleared. The flag may be set from a signal handler.
    std::atomic<bool>& interruptFlag() { return interrupt_; }
    bool interrupted() const { return interrupt_.load(std::memory_order_relaxed); }
    void clearInterrupt() { interrupt_.store(false); }

    // --- Plug-in functions ---------------------------------------------------------------
    short registerFunction(RegisteredFunction f);
    short unregisterFunction(short id);
    void unregisterAll();
    // Test control: registering `id` fails with kRefusedRegistration.
    void refuseRegistration(short id, bool refuse = true);
    std::optional<RegisteredFunction> findFunction(std::u16string_view name) const;
    // The same by a name already lower-cased (toLower), filling what a call needs into `entry`
    // (its name only when it differs, so that a repeated lookup allocates nothing); false, and
    // `entry` unchanged, when no such function is registered.
    bool findFunctionLowered(std::u16string_view lowered, calc::ExternalFunction& entry) const;
    // Changes with every change of the function table, so that a lookup remembered under an
    // equal number still holds.
    uint64_t functionsVersion() const { return functionsVersion_.load(std::memory_order_acquire); }
    std::vector<RegisteredFunction> functions() const;

    // --- Scripts -------------------------------------------------------------------------
    // The start-script request of a plug-in: checks that the file is open (kFileMissing) and
    // has the script (kScriptMissing, names match ignoring case), then queues the run. An empty
    // file name means the current file.
    short startScript(std::u16string_view file, std::u16string_view script,
                      std::u16string parameter);
    std::size_t queuedScripts() const;
    // Runs queued scripts in the order they were started, including those they start
    // themselves, up to kMaxRunsPerDrain. Returns how many ran.
    std::size_t runQueuedScripts();
    // Runs one script: its calculation in its file, with the parameter and fresh "$" variables.
    ScriptRun runScript(const ScriptRequest& request);
    void setScriptObserver(std::function<void(const ScriptRun&)> observer);

    // --- Calculations --------------------------------------------------------------------
    // Evaluates in `env` and leaves started scripts queued (a calculation inside another one).
    calc::Result evaluate(std::u16string_view expression, const Env& env);
    // A calculation of its own, outside any script, in `file` (empty: the current file); the
    // scripts it started run once it has finished. An unknown file gives kFileMissing.
    // `notes`, when given, collects what the host noticed for the user (SQLite's messages).
    calc::Result evaluateTopLevel(std::u16string_view expression, std::u16string_view file = {},
                                  std::shared_ptr<EvalNotes> notes = nullptr);

    // --- Clock and identity --------------------------------------------------------------
    DateTime now() const;                            // local time, whole seconds
    void setClock(std::function<DateTime()> clock);  // null: the system clock
    std::u16string applicationVersion() const;
    void setApplicationVersion(std::u16string version);
    static constexpr fmx::ptrtype kSessionId = 1;

private:
    Host();  // one per process: instance()

    struct File {
        std::u16string name;
        uint64_t id = 0;
        std::shared_ptr<Variables> globals = std::make_shared<Variables>();
        std::shared_ptr<Variables> locals = std::make_shared<Variables>();
        std::vector<std::pair<std::u16string, std::u16string>> scripts;  // name, calculation
        std::shared_ptr<Database> db;
        std::u16string externalErrorDetail;
        // The current record of each table given one, by lower-cased table name, and the
        // current table (the last given one).
        std::vector<RecordChoice> records;
        std::u16string currentTable;
        Value scriptResult;
    };
    // The table a field reference names, and the record to read: the chosen one or, with
    // rowid 0, the first.
    struct RecordTarget {
        std::shared_ptr<Database> db;
        std::u16string table;
        int64_t rowid = 0;
    };
    std::optional<RecordTarget> recordTarget(std::u16string_view file,
                                             std::u16string_view table) const;
    std::shared_ptr<File> findFileLocked(std::u16string_view name) const;
    std::optional<ScriptRequest> takeQueuedScript();

    mutable std::mutex mutex_;
    std::vector<std::shared_ptr<File>> files_;  // in opening order
    std::u16string current_;
    uint64_t nextFileId_ = 1;
    std::map<short, RegisteredFunction> functions_;
    std::map<std::u16string, short, std::less<>> byName_;  // lower-cased name to id
    std::atomic<uint64_t> functionsVersion_{0};            // raised under mutex_
    std::set<short> refused_;
    std::deque<ScriptRequest> queue_;
    std::function<void(const ScriptRun&)> observer_;
    std::function<DateTime()> clock_;
    std::u16string applicationVersion_;
    std::atomic<bool> interrupt_{false};
    // Open files whose externalErrorDetail is not empty, changed under mutex_: clearing the
    // detail after each successful plug-in call needs no lock while no file has one.
    std::atomic<size_t> filesWithDetail_{0};
};

// Local time now, in whole seconds, from the system clock.
DateTime systemNow();

}  // namespace sim
