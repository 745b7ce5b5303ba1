// fmsim's command line.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "sim/session/session.h"

namespace fmsim {

class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// More threads than a server's script engine would run are a typing mistake, not a test.
constexpr int kMaxThreads = 1024;

struct Options {
    sim::SessionOptions session;  // pluginPath empty: the default beside the executable
    std::string seedPath;
    std::vector<std::string> calculations;  // -e, in order
    std::vector<std::string> concurrent;    // -t, in order
    int threads = 1;                        // --threads: how many run the -t calculations at once
    int repeat = 1;                         // --repeat: how often each thread runs them
    double idleSeconds = 0;
    bool json = false;
    bool help = false;
    bool version = false;
    std::string logPath;  // --log: where the plug-in's platform log goes (default: standard error)
    bool quiet = false;   // --quiet: the platform log is dropped
};

// The longest idle wait (--idle, .idle): a day.
constexpr double kMaxIdleSeconds = 86400;
// SECONDS of --idle and .idle: a number from 0 to kMaxIdleSeconds; nullopt otherwise.
std::optional<double> idleSeconds(const std::string& text);
// What is wrong with such a text: "needs a number of seconds (0 to 86400), not "TEXT"".
std::string idleSecondsWanted(const std::string& text);

// Throws UsageError with a one-line message.
Options parseArguments(const std::vector<std::string>& args);

extern const char* const kUsage;

// The option of kUsage closest to a mistyped one, or empty when none is close.
std::string closestOption(const std::string& typed);

}  // namespace fmsim
