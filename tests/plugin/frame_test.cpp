// The plug-in as a host sees it: the built Ravelin.fmx loaded into the substitute host, plus the
// frame's own pieces that a host cannot observe from outside.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "entry/function_table.h"
#include "entry/lifecycle.h"
#include "frame/answers.h"
#include "frame/boundary.h"
#include "frame/registry.h"
#include "plugin_test_support.h"
#include "sim/core/encoding.h"

namespace {

using plugin_test::HostTest;

sim::SessionOptions withPlugin(short hostVersion = 77, std::vector<short> refused = {}) {
    sim::SessionOptions o;
    o.pluginPath = RAVELIN_PLUGIN_PATH;
    o.hostVersion = hostVersion;
    o.refusedIds = std::move(refused);
    return o;
}

TEST(Entry, InitialiseAcceptsHostVersions50To255) {
    const struct {
        short version;
        short answer;
        std::size_t registered;
    } cases[] = {{49, -1, 0}, {50, 57, 24}, {77, 57, 24}, {255, 57, 24}, {256, -1, 0}};
    for (const auto& c : cases) {
        sim::Session session(withPlugin(c.version));
        EXPECT_EQ(session.initResult(), c.answer) << c.version;
        EXPECT_EQ(session.host().functions().size(), c.registered) << c.version;
    }
}

TEST(Entry, RefusedRegistrationRollsBackAndDeclines) {
    for (short refused : {1, 13, 25}) {
        sim::Session session(withPlugin(77, {refused}));
        EXPECT_EQ(session.initResult(), -2) << refused;
        EXPECT_TRUE(session.host().functions().empty()) << refused;
    }
}

TEST(Entry, RegistersTheTableAsItStands) {
    sim::Session session(withPlugin());
    const std::vector<sim::RegisteredFunction> registered = session.host().functions();
    const auto table = functionTable();
    ASSERT_EQ(registered.size(), table.size());
    for (std::size_t i = 0; i < table.size(); ++i) {
        const sim::RegisteredFunction& f = registered[i];
        const std::string prototype = table[i].prototype;
        EXPECT_EQ(f.id, table[i].id);
        EXPECT_EQ(sim::toUtf8(f.prototype), prototype);
        EXPECT_EQ(sim::toUtf8(f.name), prototype.substr(0, prototype.find('(')));
        EXPECT_EQ(f.minArgs, table[i].minArgs) << prototype;
        EXPECT_EQ(f.maxArgs, table[i].maxArgs) << prototype;
        EXPECT_EQ(f.flags, 0xFF01u);
    }
    EXPECT_EQ(registered.front().id, 1);
    EXPECT_EQ(registered.back().id, 25);
    EXPECT_FALSE(session.host().findFunction(u"Ravelin_16"));
    const auto timestamp = session.host().findFunction(u"Ravelin_GetTimestamp");
    ASSERT_TRUE(timestamp);
    EXPECT_EQ(timestamp->name, u"Ravelin_GetTimestamp");
    EXPECT_EQ(timestamp->prototype, u"Ravelin_GetTimestamp");
}

TEST(Entry, ShutdownUnregistersEverything) {
    sim::Session session(withPlugin());
    ASSERT_EQ(session.initResult(), 57);
    session.shutdown();
    EXPECT_TRUE(session.host().functions().empty());
    EXPECT_EQ(session.plugin()->lastEscape(), "");
}

TEST(Entry, StringRequests) {
    sim::Session session(withPlugin());
    const std::u16string description =
        u"Collection of useful and sometimes indispensable functions.\\n"
        u"Ravelin developers, 2024-2026\\nVersion 3.0.3";
    const struct {
        FMX_Strings id;
        std::u16string text;
        std::size_t unitsWritten;
    } cases[] = {
        {128, u"RVL Ravelin Plug-In", 20},
        {129, description, 1024},  // built in a scratch buffer of the lent size, copied whole
        {130, u"", 0},
        {131, u"RVLX1YnYYnn", 12},
        {132, u"", 0},
    };
    for (const auto& c : cases) {
        const sim::StringAnswer answer = session.getString(c.id, 1024);
        EXPECT_EQ(answer.text(), c.text) << int(c.id);
        EXPECT_EQ(answer.unitsWritten(), c.unitsWritten) << int(c.id);
        EXPECT_FALSE(answer.overflowed) << int(c.id);
    }
}

TEST(Entry, StringsNeverOverrunTheLentBuffer) {
    sim::Session session(withPlugin());
    for (FMX_Strings id : {128, 129, 131}) {
        const sim::StringAnswer answer = session.getString(id, 5);
        EXPECT_FALSE(answer.overflowed) << int(id);
        EXPECT_EQ(answer.buffer[4], 0) << int(id);
    }
}

TEST(Idle, OnlyInitialisedPlugInsServeIdleCalls) {
    const struct {
        bool initialised;
        FMX_IdleLevel kind;
        IdleHook hook;
    } cases[] = {
        {false, 0, IdleHook::kNone},    {false, 4, IdleHook::kNone},
        {true, 0, IdleHook::kSafe},     {true, 1, IdleHook::kSemiSafe},
        {true, 3, IdleHook::kSemiSafe}, {true, 4, IdleHook::kUnsafe},
        {true, 9, IdleHook::kSemiSafe},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(idleHookFor(c.initialised, c.kind), c.hook)
            << c.initialised << " " << int(c.kind);
    }
}

class DoGetString : public HostTest {};

TEST_F(DoGetString, NamesArePrototypesUpToTheParenthesis) {
    const struct {
        unsigned stringId;
        bool nameOnly;
        std::u16string text;
    } cases[] = {
        {101, false, u"Ravelin_Version( { versionFormat } )"},
        {101, true, u"Ravelin_Version"},
        {122, true, u"Ravelin_GetTimestamp"},
        {125, true, u"Ravelin_GetAsHTML"},
        {116, false, u"ERROR"},
        {1, true, u"ERROR"},
    };
    for (const auto& c : cases) {
        fmx::TextUniquePtr text;
        Do_GetString(functionTable(), c.stringId, *text, c.nameOnly);
        EXPECT_EQ(plugin_test::unitsOf(*text), c.text) << c.stringId;
    }
}

class Placeholder : public HostTest {};

TEST_F(Placeholder, AnswersNotImplementedYet) {
    fmx::DataUniquePtr result;
    EXPECT_EQ(rvl::AnswerNotImplemented(env(), *result), 0);
    EXPECT_EQ(sim::valueOf(*result).type(), sim::Type::Number);
    EXPECT_EQ(sim::valueOf(*result).asNumber().toDouble(), -4);
    EXPECT_EQ(variable("$$Ravelin_LastError"), "-4");
    EXPECT_EQ(variable("$$Ravelin_LastErrorMessage"), "Not implemented yet");
}

}  // namespace
