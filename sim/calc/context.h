// What the calculation engine needs from the host around it: the calling file, its variables,
// the open files and their scripts, the clock, and the registered plug-in functions.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/fmx_types.h"
#include "sim/core/system_facts.h"
#include "sim/core/value.h"

namespace sim::calc {

struct ExternalFunction {
    std::u16string name;
    short id = 0;
    short minArgs = 0;
    short maxArgs = -1;  // -1: no upper limit
    fmx::ExtPluginType function = nullptr;
};

class Context {
public:
    virtual ~Context() = default;

    virtual std::u16string fileName() = 0;
    // `name` includes its "$" or "$$" prefix; `repetition` is 1 unless written as name[n].
    // An unset variable reads as the invalid (empty) value.
    virtual Value variable(std::u16string_view name, int repetition) = 0;
    virtual void setVariable(std::u16string_view name, int repetition, Value v) = 0;
    virtual Value scriptParameter() = 0;
    virtual std::vector<std::u16string> databaseNames() = 0;
    // Script names of an open file (empty name: the calling file); nullopt when no such file.
    virtual std::optional<std::vector<std::u16string>> scriptNames(std::u16string_view file) = 0;
    virtual DateTime now() = 0;  // local time
    // Milliseconds since 1/1/0001 00:00 UTC.
    virtual double utcMilliseconds();
    virtual std::u16string applicationVersion() { return {}; }
    // The running script's name; empty outside scripts.
    virtual std::u16string scriptName() { return {}; }
    // The result text of the last plug-in call in this file that failed with one of the
    // plug-in error results 1552-1559; empty after any other call.
    virtual std::u16string lastExternalErrorDetail() { return {}; }
    // The result of the last script that finished in this file; empty before any.
    virtual Value scriptResult() { return {}; }
    // The machine and its user (Get ( UserName ), Get ( TemporaryPath ), ...); by default read
    // from the operating system once per process.
    virtual const SystemFacts& systemFacts();
    // Like executeSql, telling why a query failed.
    virtual std::optional<std::u16string> executeSqlExplained(std::u16string_view query,
                                                              const std::vector<Value>& arguments,
                                                              std::u16string_view fieldSeparator,
                                                              std::u16string_view rowSeparator,
                                                              std::u16string& failure) {
        failure.clear();
        return executeSql(query, arguments, fieldSeparator, rowSeparator);
    }
    // Runs a query (SELECT only) on the calling file's database with `arguments` bound to its "?"
    // markers in order, joining the text forms of the result's fields with the separators; nullopt
    // when the query fails.
    virtual std::optional<std::u16string> executeSql(std::u16string_view query,
                                                     const std::vector<Value>& arguments,
                                                     std::u16string_view fieldSeparator,
                                                     std::u16string_view rowSeparator) = 0;
    // Registered plug-in function by name, ignoring case; nullptr when none.
    virtual const ExternalFunction* findFunction(std::u16string_view name) = 0;
    // The same for a name already lower-cased (toLower), as the parser keeps it: a host that
    // keys its functions by lower-cased name then finds them without mapping case per call.
    virtual const ExternalFunction* findFunctionLowered(std::u16string_view lowered) {
        return findFunction(lowered);
    }
    // Whether the user asked to stop the running calculation (Ctrl-C in the shell).
    virtual bool interrupted() { return false; }
    // A field of the current record of `table` (empty: the current table); nullopt when the
    // table or the field does not exist. `repetition` counts from 1.
    virtual std::optional<Value> field(std::u16string_view table, std::u16string_view field,
                                       int repetition) {
        (void)table, (void)field, (void)repetition;
        return std::nullopt;
    }
    // Whether a bare name is a field of the current table (read as one when it is nothing else).
    virtual bool isCurrentTableField(std::u16string_view field) {
        (void)field;
        return false;
    }
    struct RecordPlace {
        double number = 0;  // the current record's place in the found set, from 1; 0 for none
        double found = 0;   // records in the found set (all of the current table's)
        double id = 0;      // the current record's id (its rowid)
    };
    virtual RecordPlace recordPlace() { return {}; }
    // Calls a plug-in function; returns its error code (an escaping exception is reported as
    // a calculation error by the host, never propagated).
    virtual short callFunction(const ExternalFunction& f, const std::vector<Value>& args,
                               Value& result) = 0;
    // A plug-in call in steps, so that a host can keep each argument where its function
    // interface reads it as soon as it is computed: openCall starts a call's argument list (the
    // calls made while its arguments are evaluated open their own, inside it), addArgument
    // appends to the innermost open list, callOpened calls `f` with that list, and closeCall
    // drops it, whether or not the call was made. This default keeps the lists itself and calls
    // callFunction.
    virtual void openCall();
    virtual void addArgument(Value&& v);
    virtual size_t openArgumentCount();
    virtual short callOpened(const ExternalFunction& f, Value& result);
    virtual void closeCall() noexcept;

private:
    // The lists of the calls open now, innermost last, each kept for the next call at its depth.
    std::vector<std::unique_ptr<std::vector<Value>>> openCalls_;
    size_t openDepth_ = 0;
};

// Keeps a plug-in call's argument list open in `context` while the call is prepared and made.
class OpenCall {
public:
    explicit OpenCall(Context& context) : context_(context) { context.openCall(); }
    ~OpenCall() { context_.closeCall(); }
    OpenCall(const OpenCall&) = delete;
    OpenCall& operator=(const OpenCall&) = delete;

private:
    Context& context_;
};

struct Result {
    Value value;
    short error = 0;
    // A syntax error's UTF-16 offset into the calculation (-1 for other errors), and what the
    // engine can tell beyond the code.
    int offset = -1;
    std::u16string hint{};
};

// Evaluates a calculation. Never throws for bad input: syntax and evaluation errors come back
// as FileMaker's calculation error codes.
Result evaluate(std::u16string_view expression, Context& context);

}  // namespace sim::calc
