// Running commands as a user types them, for the tests that drive fmsim as a whole process.
#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <string>

struct ShellRun {
    int exitCode = -1;   // -1 when the command did not exit normally (a signal)
    std::string output;  // standard output, and whatever the script redirects into it
};

inline std::string shellQuoted(const std::string& text) {
    std::string quoted = "'";
    for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

// Runs `script` with bash, standard input empty unless the script redirects it.
inline ShellRun runShell(const std::string& script) {
    ShellRun run;
    FILE* pipe = popen(("bash -c " + shellQuoted(script) + " </dev/null").c_str(), "r");
    if (pipe == nullptr) return run;
    char buffer[4096];
    for (std::size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        run.output.append(buffer, n);
    const int status = pclose(pipe);
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}
