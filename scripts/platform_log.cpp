#include "scripts/platform_log.h"

#include <cstdio>

void logToStandardError(std::string_view line) {
    // One write per entry, so that lines logged from different threads do not interleave.
    std::string entry(line);
    entry += '\n';
    std::fwrite(entry.data(), 1, entry.size(), stderr);
}

std::string delayLine(double seconds) {
    char buffer[512];
    std::snprintf(buffer, sizeof buffer, "Delay: %f", seconds);
    return buffer;
}

std::string scriptErrorLine(int error) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "Script call ended with error: %i", error);
    return buffer;
}
