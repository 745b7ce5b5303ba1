// Running calculations against the fake context, with UTF-8 in and out for readable tables.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <string_view>

#include "sim/calc/context.h"
#include "sim/core/encoding.h"
#include "tests/sim/fake_context.h"

namespace calc_test {

struct Outcome {
    std::string text;
    short error;
    sim::Type type;
};

inline Outcome run(sim::calc::Context& context, std::string_view calculation) {
    const sim::calc::Result r = sim::calc::evaluate(sim::fromUtf8(calculation), context);
    return {sim::toUtf8(r.value.asText().units()), r.error, r.value.type()};
}

struct Case {
    const char* calculation;
    const char* expected;
};

// Each calculation, in a fresh fake context, gives its text without an error.
inline void expectAll(std::initializer_list<Case> cases) {
    sim::fake::FakeContext context;
    for (const Case& c : cases) {
        const Outcome out = run(context, c.calculation);
        EXPECT_EQ(out.error, 0) << c.calculation;
        EXPECT_EQ(out.text, c.expected) << c.calculation;
    }
}

struct ErrorCase {
    const char* calculation;
    short error;
};

}  // namespace calc_test
