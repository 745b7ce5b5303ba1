// The function table changing while calculations run: changed by a calculation's own arguments,
// and registered, unregistered and called from several threads at once (also run under the
// thread sanitizer). A caller reaches the function as it is registered at the call, or gets
// 1208; never a stale entry, a torn one or a crash.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "session_test_support.h"
#include "sim/calc/errors.h"
#include "sim/session/env.h"

using namespace session_test;

namespace {

constexpr short kIds = 4;  // Fake_F1 .. Fake_F4
constexpr short kDropId = 20;
constexpr short kMoveId = 21;
constexpr short kReregisterId = 22;
constexpr short kMovedBy = 10;

std::u16string nameOf(short id) { return u"Fake_F" + sim::fromUtf8(std::to_string(id)); }

// Answers the id it was registered with, so a call that reached the wrong entry shows.
fmx::errcode answerId(short id, const fmx::ExprEnv&, const fmx::DataVect&, fmx::Data& result) {
    sim::setValue(result, sim::Value::number(id));
    return 0;
}

short registerAnswer(short id, std::u16string_view name) {
    return registerFunction(id, name, 0, 1, answerId);
}

short argumentId(const fmx::DataVect& args) {
    return static_cast<short>(sim::valuesOf(args).at(0).asNumber().toDouble());
}

// Fake_Drop ( id ): unregisters id.
fmx::errcode drop(short, const fmx::ExprEnv&, const fmx::DataVect& args, fmx::Data& result) {
    sim::setValue(result, sim::Value::number(unregisterFunction(argumentId(args))));
    return 0;
}

// Fake_Move ( id ): registers id's name again under id + kMovedBy.
fmx::errcode move(short, const fmx::ExprEnv&, const fmx::DataVect& args, fmx::Data& result) {
    const short id = argumentId(args);
    unregisterFunction(id);
    sim::setValue(result, sim::Value::number(registerAnswer(id + kMovedBy, nameOf(id))));
    return 0;
}

// Fake_Reregister: takes every Fake_Fn away and registers it again from inside a call, as a
// plug-in that changes its function descriptions does.
fmx::errcode reregister(short, const fmx::ExprEnv&, const fmx::DataVect&, fmx::Data& result) {
    for (short id = 1; id <= kIds; ++id) unregisterFunction(id);
    for (short id = 1; id <= kIds; ++id) registerAnswer(id, nameOf(id));
    sim::setValue(result, sim::Value::number(0));
    return 0;
}

class RegistrationTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(registerFunction(kDropId, u"Fake_Drop", 1, 1, drop), 0);
        ASSERT_EQ(registerFunction(kMoveId, u"Fake_Move", 1, 1, move), 0);
        ASSERT_EQ(registerFunction(kReregisterId, u"Fake_Reregister", 0, 0, reregister), 0);
    }

    sim::Session session{noPlugin()};
};

TEST_F(RegistrationTest, ArgumentsThatChangeTheTableDecideTheCall) {
    struct Case {
        const char* calc;
        short error;
        const char* text;
    };
    const Case cases[] = {
        {"Fake_F1 ( Fake_Drop ( 1 ) )", sim::calc::kOperatorMissing, ""},
        {"Fake_Drop ( 1 ) + Fake_F1", sim::calc::kOperatorMissing, ""},
        {"Fake_F1 ( Fake_Move ( 1 ) )", 0, "11"},
        {"Fake_F1 ( Fake_Reregister )", 0, "1"},
        {"Fake_F1 ( Fake_Drop ( 2 ) )", 0, "1"},
    };
    for (const Case& c : cases) {
        for (short id = 1; id <= kIds; ++id) {
            unregisterFunction(id);
            unregisterFunction(id + kMovedBy);
            ASSERT_EQ(registerAnswer(id, nameOf(id)), 0);
        }
        const sim::EvalResult r = session.eval(c.calc);
        EXPECT_EQ(r.error, c.error) << c.calc;
        EXPECT_EQ(r.text, c.text) << c.calc;
    }
}

TEST_F(RegistrationTest, RegisterUnregisterAndCallFromSeveralThreads) {
    constexpr int kRounds = 300;
    constexpr int kCallers = 3;
    for (short id = 1; id <= kIds; ++id) ASSERT_EQ(registerAnswer(id, nameOf(id)), 0);

    std::atomic<int> wrong{0};
    auto registrar = [&] {
        for (int round = 0; round < kRounds; ++round) {
            const auto id = static_cast<short>(1 + round % kIds);
            unregisterFunction(id);
            registerAnswer(id, nameOf(id));
        }
    };
    // Callers run in environments of their own; one of them re-registers from inside a call.
    auto caller = [&](int thread) {
        sim::Env env;
        env.file = u"Demo";
        env.locals = std::make_shared<sim::Variables>();
        for (int round = 0; round < kRounds; ++round) {
            const int id = 1 + (round + thread) % kIds;
            const std::string calc = thread == 0 && round % 3 == 0
                                         ? "Fake_Reregister + " + std::to_string(id)
                                         : "Fake_F" + std::to_string(id) + " ( 1 )";
            const sim::EvalResult r = session.eval(calc, env);
            const bool ok = r.error == 0 ? r.text == std::to_string(id)
                                         : r.error == sim::calc::kOperatorMissing;
            if (!ok) ++wrong;
        }
    };
    std::vector<std::thread> threads;
    threads.emplace_back(registrar);
    threads.emplace_back(registrar);
    for (int t = 0; t < kCallers; ++t) threads.emplace_back(caller, t);
    for (std::thread& t : threads) t.join();

    EXPECT_EQ(wrong.load(), 0);
    // The table is whole: every entry is found by its name, and each function answers.
    for (const sim::RegisteredFunction& f : session.host().functions()) {
        const auto found = session.host().findFunction(f.name);
        ASSERT_TRUE(found) << sim::toUtf8(f.name);
        EXPECT_EQ(found->id, f.id);
    }
    for (short id = 1; id <= kIds; ++id) {
        unregisterFunction(id);
        ASSERT_EQ(registerAnswer(id, nameOf(id)), 0);
        EXPECT_EQ(session.eval("Fake_F" + std::to_string(id)).text, std::to_string(id));
    }
}

}  // namespace
