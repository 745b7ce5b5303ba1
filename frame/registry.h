// Registering the plug-in's functions with the host.
//
// FileMaker Server calls into the plug-in from several threads, and Ravelin_Set registers the
// whole table again from inside a calculation. Every pass over the host's table (initialise,
// shutdown, re-registration) therefore holds one lock, shown by a RegistrationLock argument:
// passes never interleave, so a pass's roll-back can only undo what that same pass registered.
#pragma once

#include <span>

#include "fmlib/mutex.h"
#include "frame/boundary.h"
#include "host/fmx.h"

struct FunctionRow {
    short id;
    const char* prototype;  // the name is the prototype up to its first "("
    short minArgs;          // the counts the host enforces before it calls
    short maxArgs;          // -1: no upper limit
    fmx::uint32 flags;
    rvl::Frame frame;
    rvl::Answer answer;
    fmx::ExtPluginType function;  // the body behind the declared frame (rvl::Enter)
};

// Held for every pass over the host's table.
extern fmlib::Mutex gRegistrationMutex;

// Holds gRegistrationMutex while it lives.
class SCOPED_CAPABILITY RegistrationLock {
public:
    RegistrationLock() ACQUIRE(gRegistrationMutex);
    ~RegistrationLock() RELEASE();
    RegistrationLock(const RegistrationLock&) = delete;
    RegistrationLock& operator=(const RegistrationLock&) = delete;
};

// The identifier every registration and unregistration passes: "RVLX".
fmx::QuadCharUniquePtr pluginId();

// Registers `table` in order; on the first refusal unregisters what this pass registered, in
// reverse order, and answers false. The table is kept for RegisterFunctionsAgain.
bool RegisterExternalFunctions(const RegistrationLock&, std::span<const FunctionRow> table)
    REQUIRES(gRegistrationMutex);
// Unregisters ids 25 down to 1, ignoring the host's answers.
void UnRegisterExternalFunctions(const RegistrationLock&) REQUIRES(gRegistrationMutex);

// Unregisters every id and registers the kept table again, in one pass under the lock; what the
// host answers is not looked at. A host failure (an exception) ends neither pass: the pass goes
// on, an id whose unregistration failed stays registered as it was, and the first failure is
// thrown once the pass is done, so one failing host call costs at most one function. Does
// nothing while the plug-in is not initialised, so that a call racing with shutdown cannot
// register functions again after it.
void RegisterFunctionsAgain() EXCLUDES(gRegistrationMutex);

// The host's error code; 0 is success. Name and prototype come from Do_GetString(id + 100, ...).
fmx::errcode RegisterExternalFunction(std::span<const FunctionRow> table, const FunctionRow& row);
fmx::errcode UnRegisterExternalFunction(short id);

// Fills `text` with the prototype of the row whose string id (function id + 100) is given, or
// with its name alone; "ERROR" for an id of no row.
void Do_GetString(std::span<const FunctionRow> table, unsigned stringId, fmx::Text& text,
                  bool nameOnly);
