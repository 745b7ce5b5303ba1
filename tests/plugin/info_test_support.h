// Calling plug-in functions the way the host calls them: through the function pointer, with an
// argument vector, a fresh result and the environment of a calculation in a given file. Works
// for the functions the loaded Ravelin.fmx registered and for those linked into the tests.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/fmx.h"
#include "sim/core/handles.h"
#include "sim/session/env.h"
#include "sim/session/session.h"

namespace info_test {

struct Answer {
    fmx::errcode code = 0;
    sim::Value result;
};

inline Answer call(fmx::ExtPluginType function, const std::vector<sim::Value>& args,
                   std::u16string file = {}) {
    sim::Env env;
    env.file = std::move(file);
    sim::DataVectHandle params = sim::makeDataVect(args);
    sim::DataHandle out = sim::makeData();
    sim::CallEnvScope scope(env);
    const fmx::errcode code = function(0, env.handleRef(), *params, *out);
    return {code, sim::valueOf(*out)};
}

// A function of the loaded plug-in, by name; fails the test when it is not registered.
inline Answer callLoaded(sim::Session& session, std::u16string_view name,
                         const std::vector<sim::Value>& args, std::u16string file = {}) {
    const std::optional<sim::RegisteredFunction> f = session.host().findFunction(name);
    if (!f) {
        ADD_FAILURE() << "not registered";
        return {};
    }
    return call(f->function, args, std::move(file));
}

inline sim::SessionOptions withPlugin(std::string current = "Demo",
                                      std::vector<std::string> others = {}) {
    sim::SessionOptions o;
    o.pluginPath = RAVELIN_PLUGIN_PATH;
    o.fileName = std::move(current);
    o.otherFiles = std::move(others);
    return o;
}

inline sim::Value text(std::u16string s) { return sim::Value::text(std::move(s)); }

}  // namespace info_test
