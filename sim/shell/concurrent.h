// fmsim's concurrent runs (-t, --threads, --repeat): calculations evaluated on several threads at
// once, as a server's script engine calls a plug-in, and the distinct results each one gave.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "sim/session/session.h"

namespace fmsim {

struct Outcome {
    std::string type;
    std::string text;
    short error = 0;
    uint64_t count = 0;
};

struct Tally {
    std::string calc;
    std::vector<Outcome> outcomes;  // most frequent first; equal counts by error, type, text
};

// Starts `threads` threads together; each evaluates `calcs` in order, `repeat` times, in an
// environment of its own (the current file, "$" variables of its own). One tally per calculation.
std::vector<Tally> runConcurrently(sim::Session& session, const std::vector<std::string>& calcs,
                                   int threads, int repeat);

// "? (error 1203: Unexpected end of calculation)": a failed calculation as fmsim prints it
// ("? (error N)" for a code without a text).
std::string errorShown(short code);

// The calculation, then a tab before each outcome: its text (or "? (error N)") and " xCOUNT".
// On a terminal returns inside a text are shown as line breaks.
std::string plainLine(const Tally& tally, bool terminal);
// {"calc": C, "results": [{"type": T, "text": S, "error": N, "count": K}, ...]}
std::string jsonLine(const Tally& tally);

}  // namespace fmsim
