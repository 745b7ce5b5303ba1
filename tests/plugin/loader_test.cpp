// The built plug-in loaded through the substitute host's loader, as FileMaker loads it.
#include <gtest/gtest.h>

#include "sim/session/session.h"

namespace {

TEST(Loader, LoadsInitialisesAndShutsDownTheBuiltPlugin) {
    sim::SessionOptions options;
    options.pluginPath = RAVELIN_PLUGIN_PATH;
    sim::Session session(options);
    ASSERT_EQ(session.initResult(), 57);
    EXPECT_EQ(session.plugin()->lastEscape(), "");
    EXPECT_EQ(session.host().functions().size(), 24u);

    const sim::StringAnswer options131 = session.getString(kFMXT_OptionsStr, 64);
    EXPECT_EQ(options131.text(), u"RVLX1YnYYnn");
    EXPECT_EQ(options131.unitsWritten(), 12u);
    EXPECT_FALSE(options131.overflowed);

    const sim::EvalResult version = session.eval("Ravelin_Version");
    EXPECT_EQ(version.error, 0);
    EXPECT_EQ(version.type, "Text");
    EXPECT_EQ(version.text, "3.0.3");

    for (FMX_IdleLevel kind : {kFMXT_UserIdle, kFMXT_UserNotIdle, kFMXT_ScriptPaused,
                               kFMXT_ScriptRunning, kFMXT_Unsafe}) {
        session.idle(kind);
    }
    session.preferences();
    session.shutdown();
    EXPECT_TRUE(session.host().functions().empty());
}

}  // namespace
