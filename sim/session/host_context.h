// The calculation engine's view of the host for one evaluation in one environment.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "sim/calc/context.h"
#include "sim/core/objects.h"
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
    const calc::ExternalFunction* findFunctionLowered(std::u16string_view lowered) override;
    // The plug-in function runs with this context's environment; a thrown exception becomes
    // kGenericCalcError with an invalid result.
    short callFunction(const calc::ExternalFunction& f, const std::vector<Value>& args,
                       Value& result) override;
    // The arguments go straight into the host's argument vector of the call's depth.
    void openCall() override;
    void addArgument(Value&& v) override;
    size_t openArgumentCount() override;
    short callOpened(const calc::ExternalFunction& f, Value& result) override;
    void closeCall() noexcept override;

private:
    Variables* variablesFor(std::u16string_view name) const;

    Host& host_;
    const Env& env_;
    std::u16string file_;
    std::shared_ptr<Variables> globals_;
    std::shared_ptr<Variables> locals_;
    // The last answer for each lower-cased name asked for: the lookups return a pointer into
    // it, which stays valid while the host's table changes under other threads. An answer is
    // asked again once the host's table has changed since (Host::functionsVersion).
    struct Found {
        calc::ExternalFunction entry;
        bool registered = false;
        uint64_t version = UINT64_MAX;  // not asked yet
    };
    struct NameHash {
        using is_transparent = void;
        std::size_t operator()(std::u16string_view name) const;
    };
    struct SameName {
        using is_transparent = void;
        bool operator()(std::u16string_view a, std::u16string_view b) const;
    };
    std::unordered_map<std::u16string, Found, NameHash, SameName> found_;
    DataVectObj& openParameters() { return *parameters_[openDepth_ - 1]; }

    // The argument vectors handed to plug-in functions by the calls open now, innermost last,
    // each kept for the next call at its depth: a call allocates nothing for its arguments
    // once its vector has grown to them.
    std::vector<std::unique_ptr<DataVectObj>> parameters_;
    size_t openDepth_ = 0;
};

}  // namespace sim
