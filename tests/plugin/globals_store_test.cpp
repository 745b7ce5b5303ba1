// The global store's file bindings, seen from inside: rvl::Dictionary and the SetGlobal function
// of the plug-in's objects linked into the tests, in a host with the files Contacts and Invoices.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "entry/function_table.h"
#include "globals/dictionary.h"
#include "globals/store.h"
#include "info_test_support.h"
#include "plugin_test_support.h"
#include "sim/abi/faults.h"
#include "sim/core/encoding.h"

namespace {

using info_test::text;
using plugin_test::makeText;

class Store : public ::testing::Test {
protected:
    Store() { rvl::globalDictionary.clean(); }
    ~Store() override {
        sim::faults::clear();
        rvl::globalDictionary.clean();
    }

    static sim::SessionOptions files() {
        sim::SessionOptions o;
        o.fileName = "Contacts";
        o.otherFiles = {"Invoices"};
        return o;
    }
    static sim::Env envIn(std::u16string file) {
        sim::Env env;
        env.file = std::move(file);
        return env;
    }
    // A handle the host never made: it names no live environment.
    static const fmx::ExprEnv& notAnEnv() {
        static const int never = 0;
        return *reinterpret_cast<const fmx::ExprEnv*>(&never);
    }
    // Stores `key` = `number` bound to the file `env`'s calculations run in.
    void storeLocal(rvl::Dictionary& d, const sim::Env& env, std::u16string_view key,
                    double number) {
        storeLocal(d, env.handleRef(), key, number);
    }
    void storeLocal(rvl::Dictionary& d, const fmx::ExprEnv& env, std::u16string_view key,
                    double number) {
        d.storeLocalValueForKey(env, *makeText(key), *sim::makeData(sim::Value::number(number)));
    }
    static std::string load(const rvl::Dictionary& d, std::u16string_view key) {
        sim::DataHandle out = sim::makeData();
        d.loadValueForKey(*makeText(key), *out);
        return sim::toUtf8(sim::valueOf(*out).asText().units());
    }
    void setGlobal(std::vector<sim::Value> args, std::u16string file) {
        EXPECT_EQ(info_test::call(Ravelin_SetGlobal, args, std::move(file)).code, 0);
    }

    sim::Session session_{files()};
    sim::Env contacts_ = envIn(u"Contacts");
    sim::Env invoices_ = envIn(u"Invoices");
};

TEST_F(Store, FirstFileKeepsTheKeyUntilAPlainStore) {
    rvl::Dictionary& d = rvl::globalDictionary;
    setGlobal({text(u"k"), sim::Value::number(1), text(u"dieonclose")}, u"Contacts");
    EXPECT_EQ(d.boundFile_(u"k"), u"Contacts");
    setGlobal({text(u"k"), sim::Value::number(2), text(u"DIEONCLOSE")}, u"Invoices");
    EXPECT_EQ(d.boundFile_(u"k"), u"Contacts");
    EXPECT_EQ(load(d, u"k"), "2");
    setGlobal({text(u"k"), sim::Value::number(3)}, u"Contacts");
    EXPECT_EQ(d.boundFile_(u"k"), u"");  // global now
    EXPECT_EQ(load(d, u"k"), "3");
    setGlobal({text(u"k"), sim::Value::number(4), text(u"DieOnClose")}, u"Invoices");
    EXPECT_EQ(d.boundFile_(u"k"), u"Invoices");
    setGlobal({text(u""), text(u"x")}, u"Contacts");  // the empty key drops bindings too
    EXPECT_EQ(d.size(), 0u);
    EXPECT_EQ(d.boundFile_(u"k"), u"");
}

TEST_F(Store, CleanLocalKeysKeepsOnlyWholeOpenFileNames) {
    rvl::Dictionary d;
    storeLocal(d, invoices_, u"kept", 1);
    storeLocal(d, contacts_, u"also kept", 2);
    storeLocal(d, envIn(u"Invoice"), u"prefix", 3);  // not open: Get( FileName ) names it still
    ASSERT_TRUE(session_.host().closeFile(u"Invoices"));
    storeLocal(d, envIn(u"invoices"), u"lower case", 4);
    session_.host().openFile(u"Invoices");
    d.storeValueForKey(*makeText(u"global"), *sim::makeData(sim::Value::number(5)));
    ASSERT_EQ(d.boundFile_(u"prefix"), u"Invoice");
    ASSERT_EQ(d.boundFile_(u"lower case"), u"invoices");

    d.cleanLocalKeys(contacts_.handleRef());
    EXPECT_EQ(load(d, u"kept"), "1");
    EXPECT_EQ(load(d, u"also kept"), "2");
    EXPECT_EQ(load(d, u"global"), "5");
    EXPECT_FALSE(d.contains_(u"prefix"));
    EXPECT_FALSE(d.contains_(u"lower case"));
    EXPECT_EQ(d.boundFile_(u"prefix"), u"");
    EXPECT_EQ(d.size(), 3u);
}

TEST_F(Store, FailingDatabaseNamesChangesNothing) {
    rvl::Dictionary d;
    ASSERT_TRUE(session_.host().closeFile(u"Invoices"));
    storeLocal(d, invoices_, u"closed", 1);
    d.cleanLocalKeys(notAnEnv());  // the host answers 1200 for an environment that is not live
    sim::faults::failFunction("FM_ExprEnv_Evaluate", 2);
    EXPECT_THROW(d.cleanLocalKeys(contacts_.handleRef()), std::exception);
    sim::faults::clear();
    EXPECT_EQ(d.boundFile_(u"closed"), u"Invoices");
    d.cleanLocalKeys(contacts_.handleRef());
    EXPECT_FALSE(d.contains_(u"closed"));
}

TEST_F(Store, UnknownFileNameLeavesTheValueGlobal) {
    rvl::Dictionary d;
    storeLocal(d, notAnEnv(), u"k", 1);
    EXPECT_EQ(load(d, u"k"), "1");
    EXPECT_EQ(d.boundFile_(u"k"), u"");

    // A host failure while asking for the name: the value is stored first all the same, and
    // the failure only matters to a key that is not bound yet.
    sim::faults::failFunction("FM_ExprEnv_Evaluate", 2);
    EXPECT_THROW(storeLocal(d, contacts_, u"new", 2), std::exception);
    sim::faults::clear();
    EXPECT_EQ(load(d, u"new"), "2");
    EXPECT_EQ(d.boundFile_(u"new"), u"");
    storeLocal(d, contacts_, u"bound", 3);
    sim::faults::failFunction("FM_ExprEnv_Evaluate", 2);
    EXPECT_NO_THROW(storeLocal(d, invoices_, u"bound", 4));
    sim::faults::clear();
    EXPECT_EQ(load(d, u"bound"), "4");
    EXPECT_EQ(d.boundFile_(u"bound"), u"Contacts");
}

}  // namespace
