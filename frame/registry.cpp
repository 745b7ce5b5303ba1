#include "frame/registry.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <optional>
#include <vector>

#include "frame/plugin_state.h"

namespace {

constexpr unsigned kStringIdOffset = 100;
constexpr std::size_t kWorkUnits = 1024;
constexpr short kHighestId = 25;

// What the last pass registered.
std::span<const FunctionRow> gRegisteredTable GUARDED_BY(gRegistrationMutex);

const char* prototypeFor(std::span<const FunctionRow> table, unsigned stringId) {
    for (const FunctionRow& row : table) {
        if (static_cast<unsigned>(row.id) + kStringIdOffset == stringId) return row.prototype;
    }
    return "ERROR";
}

// The passes, with every host operation made through `call(operation)`.
template <class Call>
bool registerAll(std::span<const FunctionRow> table, Call call) {
    for (std::size_t i = 0; i < table.size(); ++i) {
        if (call([&] { return RegisterExternalFunction(table, table[i]); }) != 0) {
            while (i-- > 0) call([&] { return UnRegisterExternalFunction(table[i].id); });
            return false;
        }
    }
    return true;
}

const auto direct = [](auto operation) { return operation(); };

}  // namespace

fmlib::Mutex gRegistrationMutex;

RegistrationLock::RegistrationLock() { gRegistrationMutex.lock(); }

RegistrationLock::~RegistrationLock() { gRegistrationMutex.unlock(); }

fmx::QuadCharUniquePtr pluginId() { return fmx::QuadCharUniquePtr('R', 'V', 'L', 'X'); }

void Do_GetString(std::span<const FunctionRow> table, unsigned stringId, fmx::Text& text,
                  bool nameOnly) {
    const char* chosen = prototypeFor(table, stringId);
    // Zero-filled, so whatever is copied in stays terminated.
    std::array<fmx::unichar16, kWorkUnits> work{};
    const std::size_t length = std::min(std::strlen(chosen), kWorkUnits - 1);
    std::copy_n(reinterpret_cast<const unsigned char*>(chosen), length, work.begin());
    if (nameOnly) {
        // Without a "(" this lands on the terminator already there: the prototype is the name.
        *std::find(work.begin(), work.begin() + length, fmx::unichar16{'('}) = 0;
    }
    text.AssignUnicode(work.data());
}

fmx::errcode RegisterExternalFunction(std::span<const FunctionRow> table, const FunctionRow& row) {
    fmx::TextUniquePtr name;
    fmx::TextUniquePtr prototype;
    Do_GetString(table, row.id + kStringIdOffset, *name, true);
    Do_GetString(table, row.id + kStringIdOffset, *prototype, false);
    return fmx::ExprEnv::RegisterExternalFunction(
        *pluginId(), row.id, *name, *prototype, row.minArgs, row.maxArgs, row.flags, row.function);
}

fmx::errcode UnRegisterExternalFunction(short id) {
    return fmx::ExprEnv::UnRegisterExternalFunction(*pluginId(), id);
}

bool RegisterExternalFunctions(const RegistrationLock&, std::span<const FunctionRow> table) {
    gRegisteredTable = table;
    return registerAll(table, direct);
}

void UnRegisterExternalFunctions(const RegistrationLock&) {
    for (short id = kHighestId; id >= 1; --id) UnRegisterExternalFunction(id);
}

void RegisterFunctionsAgain() {
    const RegistrationLock lock;
    if (!gPlugInInitialized) return;
    // A host failure on one id stops neither pass: stopping would leave every id after it
    // unregistered while the plug-in runs on. An id whose unregistration failed keeps its
    // registration; the first failure is passed on at the end.
    std::exception_ptr failure;
    const auto tolerant = [&](auto operation) -> std::optional<fmx::errcode> {
        try {
            return operation();
        } catch (...) {
            if (!failure) failure = std::current_exception();
            return std::nullopt;
        }
    };
    std::vector<FunctionRow> again(gRegisteredTable.begin(), gRegisteredTable.end());
    for (short id = kHighestId; id >= 1; --id) {
        if (!tolerant([&] { return UnRegisterExternalFunction(id); })) {
            std::erase_if(again, [id](const FunctionRow& row) { return row.id == id; });
        }
    }
    registerAll(again, [&](auto operation) { return tolerant(operation).value_or(rvl::kNoError); });
    if (failure) std::rethrow_exception(failure);
}
