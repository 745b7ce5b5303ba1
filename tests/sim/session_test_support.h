// Shared helpers for the session tests: host objects made the way a plug-in makes them, and a
// fake plug-in function table registered through the host's C interface.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/fmx.h"
#include "sim/core/encoding.h"
#include "sim/core/handles.h"
#include "sim/session/session.h"

namespace session_test {

inline fmx::TextUniquePtr makeText(std::u16string_view s) {
    fmx::TextUniquePtr t;
    sim::textOf(*t).assign(std::u16string(s));
    return t;
}

inline short registerFunction(short id, std::u16string_view name, short minArgs, short maxArgs,
                              fmx::ExtPluginType f) {
    fmx::QuadCharUniquePtr plugin('T', 'E', 'S', 'T');
    auto fname = makeText(name);
    auto prototype = makeText(std::u16string(name) + u"( x )");
    return fmx::ExprEnv::RegisterExternalFunction(*plugin, id, *fname, *prototype, minArgs, maxArgs,
                                                  0xFF01, f);
}

inline short unregisterFunction(short id) {
    fmx::QuadCharUniquePtr plugin('T', 'E', 'S', 'T');
    return fmx::ExprEnv::UnRegisterExternalFunction(*plugin, id);
}

inline sim::SessionOptions noPlugin() {
    sim::SessionOptions o;
    o.fileName = "Demo";
    return o;
}

}  // namespace session_test
