// Loads a plug-in (.fmx) and talks to its entry procedure exactly as the host does: one
// parameter block per plug-in, kept for the plug-in's lifetime because the plug-in may hold on
// to it between calls to reach the host's callbacks.
#pragma once

#include <cstdint>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/fmx_abi.h"

namespace sim {

class PluginError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A string request's buffer after the plug-in answered. Units the plug-in did not write keep
// the value kUnwritten.
struct StringAnswer {
    static constexpr char16_t kUnwritten = 0xFFFF;  // a noncharacter: never real text
    std::u16string buffer;                          // the whole lent buffer, bufferUnits long
    bool overflowed = false;                        // the plug-in wrote past the size it was given
    // The text up to the first zero (or to the first unwritten unit).
    std::u16string text() const;
    // Units written, counted up to the last unit that changed.
    std::size_t unitsWritten() const;
};

class Plugin {
public:
    // What the host sends at initialise: the process kind of the scripting engine of
    // FileMaker Server, which is where this plug-in runs on Linux.
    static constexpr FMX_Application kApplicationKind = kFMXT_SASE;
    static constexpr short kDefaultHostVersion = 77;

    // dlopen (RTLD_NOW | RTLD_LOCAL) and find FMExternCallProc; throws PluginError.
    explicit Plugin(const std::string& path);
    // Unloads the library (send shutdown first).
    ~Plugin();
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    // Initialise: parm1 the process kind, parm2 the application version as UTF-16. Returns the
    // plug-in's result (57 for success).
    short initialise(short hostVersion, std::u16string applicationVersion);
    // Idle of the given kind (parm1), with the session id in parm2.
    void idle(FMX_IdleLevel kind);
    void preferences();
    void shutdown();
    // String request: parm1 the string id, parm2 the language id (0), parm3 the buffer size in
    // UTF-16 units, `result` the address of the host's buffer.
    StringAnswer getString(FMX_Strings id, uint32_t bufferUnits);
    // Any call, for tests: returns the result field afterwards.
    FMX_PtrType call(FMX_ExternCallSwitch kind, FMX_UChar parm1 = 0, FMX_PtrType parm2 = 0,
                     FMX_PtrType parm3 = 0, FMX_PtrType result = 0);

    // The entry procedure lets the host's failures through as exceptions; a host must not die
    // of them, so they are caught and described here ("" when the last call returned normally).
    std::string lastEscape() const;

    const std::string& path() const { return path_; }
    short hostVersion() const { return hostVersion_; }

private:
    std::string path_;
    void* library_ = nullptr;
    FMX_ExternCallProc entry_ = nullptr;
    mutable std::mutex callMutex_;  // one entry call at a time, as the host makes them
    FMX_ExternCallStruct block_{};
    short hostVersion_ = kDefaultHostVersion;
    std::u16string applicationVersion_;  // parm2 of initialise points here
    std::string lastEscape_;
};

}  // namespace sim
