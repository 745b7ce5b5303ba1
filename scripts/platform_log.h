// The platform log of this port: one line per entry on standard error.
#pragma once

#include <string>
#include <string_view>

void logToStandardError(std::string_view line);

// "Delay: %f"
std::string delayLine(double seconds);
// "Script call ended with error: %i"
std::string scriptErrorLine(int error);
