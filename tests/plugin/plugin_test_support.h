// Shared pieces of the plug-in tests: a host session without a plug-in, in which the plug-in's
// own objects (linked into the test) run against an environment of the current file.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "host/fmx.h"
#include "sim/abi/faults.h"
#include "sim/core/handles.h"
#include "sim/session/env.h"
#include "sim/session/session.h"

namespace plugin_test {

inline fmx::TextUniquePtr makeText(std::u16string_view s) {
    fmx::TextUniquePtr t;
    t->AssignUnicodeWithLength(reinterpret_cast<const fmx::uint16*>(s.data()),
                               static_cast<fmx::uint32>(s.size()));
    return t;
}

inline std::u16string unitsOf(const fmx::Text& t) { return sim::textOf(t).unitsCopy(); }

// A running host with the file "Demo" and a calculation environment in it.
class HostTest : public ::testing::Test {
protected:
    ~HostTest() override { sim::faults::clear(); }

    const fmx::ExprEnv& env() const { return env_.handleRef(); }
    // A value of the current file's calculation, as the shell shows it.
    sim::EvalResult eval(std::string_view calculation) { return session_.eval(calculation); }
    std::string variable(std::string_view name) { return eval(name).text; }

    sim::Session session_{sim::SessionOptions{}};
    sim::Env env_;
};

// A running host with the built plug-in loaded, as fmsim runs it.
class LoadedPluginTest : public ::testing::Test {
protected:
    sim::EvalResult eval(std::string_view calculation) { return session_.eval(calculation); }

    sim::Session session_{withPlugin()};
    sim::Env env_;

private:
    static sim::SessionOptions withPlugin() {
        sim::SessionOptions o;
        o.pluginPath = RAVELIN_PLUGIN_PATH;
        return o;
    }
};

}  // namespace plugin_test
