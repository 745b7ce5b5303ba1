// The calculation engine's view of the host for one evaluation in one environment.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "sim/calc/context.h"
#include "sim/session/env.h"

namespace sim {

class Host;

// What a plug-in's function let reach the host as an exception: how many since the last reset,
// process-wide, and the last one's text ("std::bad_alloc" for an out-of-memory failure).
// Kept for tests; the real host would stop the calculation the same way.
struct FunctionEscapes {
    uint64_t count = 0;
    std::string last;
};
FunctionEscapes functionEscapes();
void resetFunctionEscapes();

class HostContext final : public calc::Context {
public:
    HostContext(Host& host, const Env& env);

    std::u16string fileName() override;
    Value variable(std::u16string_view name, int repetition) override;
    void setVariable(std::u16string_view name, int repetition, Value v) override;
    Value scriptParameter() override;
    std::vector<std::u16string> databaseNames() override;
    std::optional<std::vector<std::u16string>> scriptNames(std::u16string_view file) override;
    DateTime now() override;
    std::u16string applicationVersion() override;
    std::u16string scriptName() override;
    std::u16string lastExternalErrorDetail() override;
    Value scriptResult() override;
    std::optional<std::u16string> executeSqlExplained(std::u16string_view query,
                                                      const std::vector<Value>& arguments,
                                                      std::u16string_view fieldSeparator,
                                                      std::u16string_view rowSeparator,
                                                      std::u16string& failure) override;
    std::optional<std::u16string> executeSql(std::u16string_view query,
                                             const std::vector<Value>& arguments,
                                             std::u16string_view fieldSeparator,
                                             std::u16string_view rowSeparator) override;
    bool interrupted() override;
    std::optional<Value> field(std::u16string_view table, std::u16string_view field,
                               int repetition) override;
    bool isCurrentTableField(std::u16string_view field) override;
    RecordPlace recordPlace() override;
    const calc::ExternalFunction* findFunction(std::u16string_view name) override;
    // The plug-in function runs with this context's environment; a thrown exception becomes
    // kGenericCalcError with an invalid result.
    short callFunction(const calc::ExternalFunction& f, const std::vector<Value>& args,
                       Value& result) override;

private:
    Variables* variablesFor(std::u16string_view name) const;

    Host& host_;
    const Env& env_;
    std::u16string file_;
    std::shared_ptr<Variables> globals_;
    std::shared_ptr<Variables> locals_;
    // The last answer for each name asked for: findFunction returns a pointer into it, which
    // stays valid while the host's table changes under other threads.
    std::map<std::u16string, calc::ExternalFunction, std::less<>> found_;
};

}  // namespace sim
