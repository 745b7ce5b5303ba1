// fmsim's standard output holds its results and nothing else: whatever a plug-in writes to
// standard output or error goes to fmsim's standard error, the --log file, or nowhere (--quiet).
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "tests/plugin/shell_support.h"

namespace {

std::string temporaryPath(const std::string& name) {
    return (std::filesystem::temp_directory_path() / (name + "." + std::to_string(getpid())))
        .string();
}

std::string contentsOf(const std::string& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// What the noisy plug-in writes, at initialise, idle calls and in Noisy_Print.
bool hasNoise(const std::string& text, const std::string& when) {
    for (const char* way : {"noise:printf:", "noise:stderr:", "noise:cout:"}) {
        if (text.find(std::string(way) + when) == std::string::npos) return false;
    }
    return text.find("noise:write") != std::string::npos;
}

enum class NoiseTo { StandardError, Log, Nowhere };

struct OutputCase {
    const char* name;
    const char* options;
    const char* input;  // piped to standard input; nullptr: none
    std::string results;
    NoiseTo noise;
};

TEST(FmsimOutput, PluginOutputNeverMixesWithResults) {
    const std::string err = temporaryPath("fmsim_noise_err");
    const std::string log = temporaryPath("fmsim_noise_log");
    const std::string json1 = R"({"type": "Text", "text": "r", "error": 0})";
    const OutputCase cases[] = {
        {"plain", "-e 'Noisy_Print & \"r\"' -e 2", nullptr, "r\n2\n", NoiseTo::StandardError},
        {"json", "--json -e 'Noisy_Print & \"r\"'", nullptr, json1 + "\n", NoiseTo::StandardError},
        {"log", "--log LOG -e 'Noisy_Print & \"r\"'", nullptr, "r\n", NoiseTo::Log},
        {"json and log", "--json --log LOG -e 'Noisy_Print & \"r\"'", nullptr, json1 + "\n",
         NoiseTo::Log},
        {"quiet", "--quiet -e 'Noisy_Print & \"r\"'", nullptr, "r\n", NoiseTo::Nowhere},
        {"piped", "--json", "Noisy_Print & \"r\"\n.files\n",
         json1 + "\n{\"files\": [{\"name\": \"Demo\", \"current\": true}]}\n",
         NoiseTo::StandardError},
        {"threads", "--threads 3 -t 'Noisy_Print & \"r\"'", nullptr, "Noisy_Print & \"r\"\tr x3\n",
         NoiseTo::StandardError},
        {"idle", "--idle 0.1 -e 'Noisy_Print & \"r\"'", nullptr, "r\n", NoiseTo::StandardError},
    };
    for (const OutputCase& c : cases) {
        SCOPED_TRACE(c.name);
        std::filesystem::remove(log);
        std::string options = c.options;
        if (const auto at = options.find("LOG"); at != std::string::npos) {
            options.replace(at, 3, log);
        }
        std::string command = std::string(FMSIM_PATH) + " --plugin " + NOISY_PLUGIN_PATH + " " +
                              options + " 2>" + err;
        if (c.input != nullptr) command = "printf '%s' " + shellQuoted(c.input) + " | " + command;
        const ShellRun run = runShell(command);
        EXPECT_EQ(run.exitCode, 0);
        EXPECT_EQ(run.output, c.results);
        const std::string errors = contentsOf(err);
        const std::string logged = contentsOf(log);
        const std::string& noise = c.noise == NoiseTo::Log ? logged : errors;
        if (c.noise == NoiseTo::Nowhere) {
            EXPECT_EQ(errors + logged, "");
        } else {
            EXPECT_TRUE(hasNoise(noise, "init")) << noise;
            EXPECT_TRUE(hasNoise(noise, "function") || c.input != nullptr) << noise;
            EXPECT_EQ((c.noise == NoiseTo::Log ? errors : logged), "");
        }
        if (std::string(c.name) == "idle") {
            EXPECT_TRUE(hasNoise(errors, "idle")) << errors;
        }
    }
    std::filesystem::remove(err);
    std::filesystem::remove(log);
}

// The plug-in's own traces (Ravelin_GetAsHTML reports merged fragments on standard output) stay
// off the JSON lines, and fmsim's messages still reach standard error beside a log.
TEST(FmsimOutput, RavelinTracesStayOffTheJsonLines) {
    const std::string html =
        "Ravelin_GetAsHTML ( TextStyleAdd ( \"a\" ; Bold ) & \"b\" ; \"\" ; \"\" ; \"\" )";
    const ShellRun run = runShell(std::string(FMSIM_PATH) + " --json --quiet -e " +
                                  shellQuoted(html) + " -e '\"x¶y\"'");
    std::istringstream lines(run.output);
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        EXPECT_TRUE(line.starts_with("{\"type\": \"Text\"")) << line;
        EXPECT_TRUE(line.ends_with("}")) << line;
    }
    EXPECT_EQ(count, 2) << run.output;
    const ShellRun traced =
        runShell(std::string(FMSIM_PATH) + " -e " + shellQuoted(html) + " 2>&1 >/dev/null");
    EXPECT_NE(traced.output.find("Merging 2 fragments"), std::string::npos) << traced.output;
    const std::string log = temporaryPath("fmsim_trace_log");
    const ShellRun messages = runShell(std::string(FMSIM_PATH) + " --log " + log + " -e " +
                                       shellQuoted(html) + " -e 'Nothing ( 1 )' 2>&1 >/dev/null");
    EXPECT_EQ(messages.output, "fmsim: error 1208 at character 1: no function named Nothing\n");
    EXPECT_NE(contentsOf(log).find("Merging 2 fragments"), std::string::npos);
    std::filesystem::remove(log);
}

}  // namespace
