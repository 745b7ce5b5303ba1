// A calculation context for engine tests: one current file, variables in maps, fixed scripts and
// clock, and plug-in functions given as lambdas.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "sim/calc/context.h"
#include "sim/core/text.h"

namespace sim::fake {

class FakeContext : public calc::Context {
public:
    using Body = std::function<short(const std::vector<Value>& args, Value& result)>;

    std::u16string file = u"Demo";
    Value parameter;
    std::vector<std::u16string> databases{u"Demo", u"Contacts"};
    std::map<std::u16string, std::vector<std::u16string>> scripts{
        {u"Demo", {u"Start", u"Send Mail"}}, {u"Contacts", {u"Import"}}};
    DateTime clock = DateTime::fromSeconds(63842304405.25);     // 1/31/2024 1:26:45.25 PM
    std::map<std::pair<std::u16string, int>, Value> variables;  // by lower-cased name
    int calls = 0;                                              // plug-in function calls

    void addFunction(std::u16string name, short minArgs, short maxArgs, Body body) {
        const auto id = static_cast<short>(functions_.size() + 1);
        functions_.push_back({{std::move(name), id, minArgs, maxArgs, nullptr}, std::move(body)});
    }

    Value get(std::u16string_view name, int repetition = 1) const {
        const auto it = variables.find({toLower(name), repetition});
        return it == variables.end() ? Value() : it->second;
    }

    std::u16string fileName() override { return file; }

    Value variable(std::u16string_view name, int repetition) override {
        return get(name, repetition);
    }

    void setVariable(std::u16string_view name, int repetition, Value v) override {
        const std::pair<std::u16string, int> key{toLower(name), repetition};
        if (v.isEmpty()) {
            variables.erase(key);
        } else {
            variables[key] = std::move(v);
        }
    }

    Value scriptParameter() override { return parameter; }
    std::vector<std::u16string> databaseNames() override { return databases; }

    std::optional<std::vector<std::u16string>> scriptNames(std::u16string_view name) override {
        const auto it = scripts.find(std::u16string(name.empty() ? file : name));
        if (it == scripts.end()) return std::nullopt;
        return it->second;
    }

    DateTime now() override { return clock; }

    // No database here: every query fails.
    std::optional<std::u16string> executeSql(std::u16string_view, const std::vector<Value>&,
                                             std::u16string_view, std::u16string_view) override {
        return std::nullopt;
    }

    const calc::ExternalFunction* findFunction(std::u16string_view name) override {
        for (const Function& f : functions_) {
            if (toLower(f.definition.name) == toLower(name)) return &f.definition;
        }
        return nullptr;
    }

    short callFunction(const calc::ExternalFunction& f, const std::vector<Value>& args,
                       Value& result) override {
        ++calls;
        return functions_.at(static_cast<size_t>(f.id - 1)).body(args, result);
    }

private:
    struct Function {
        calc::ExternalFunction definition;
        Body body;
    };
    std::vector<Function> functions_;
};

}  // namespace sim::fake
