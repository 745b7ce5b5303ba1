// The function reference in docs/functions/ cannot drift from the code: every registered function
// has its page, the page's prototype is the registration's, and every example prints what the
// page shows when it is run through fmsim.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "entry/function_table.h"
#include "tests/plugin/shell_support.h"

namespace {

const std::filesystem::path kDocs = std::filesystem::path(RAVELIN_SOURCE_DIR) / "docs/functions";

std::string functionName(const char* prototype) {
    const std::string text = prototype;
    return text.substr(0, text.find('('));
}

std::vector<std::string> readLines(const std::filesystem::path& path) {
    std::ifstream in(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// The first line of the code block after the "## Prototype" heading.
std::string pagePrototype(const std::vector<std::string>& lines) {
    bool inSection = false;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines[i] == "## Prototype") inSection = true;
        if (inSection && lines[i].starts_with("```") && i + 1 < lines.size()) return lines[i + 1];
    }
    return "";
}

struct Example {
    std::string command;   // without its "$ " prompt
    std::string expected;  // the lines after it, each ended by a line feed
};

// Every "$ " line in a ```console block, with the output lines that follow it. A command line
// that ends in a backslash goes on on the next line.
std::vector<Example> pageExamples(const std::vector<std::string>& lines) {
    std::vector<Example> examples;
    bool inConsole = false;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string& line = lines[i];
        if (line.starts_with("```")) {
            inConsole = !inConsole && line == "```console";
            continue;
        }
        if (!inConsole) continue;
        if (line.starts_with("$ ")) {
            Example example{line.substr(2), ""};
            while (example.command.ends_with("\\") && i + 1 < lines.size())
                example.command += "\n" + lines[++i];
            examples.push_back(example);
        } else if (!examples.empty()) {
            examples.back().expected += line + "\n";
        }
    }
    return examples;
}

// Runs a command as a reader would type it, with fmsim standing for the built shell, in an empty
// folder; returns its standard output.
std::string runExample(const std::string& command, const std::filesystem::path& folder) {
    const std::string script = std::string("fmsim() { ") + FMSIM_PATH + " \"$@\"; }; cd " +
                               shellQuoted(folder.string()) + " && { " + command +
                               "; } 2>/dev/null";
    return runShell(script).output;
}

TEST(FunctionDocs, EveryRegisteredFunctionHasAPageWithItsPrototype) {
    const std::string index = readFile(kDocs / "README.md");
    for (const FunctionRow& row : functionTable()) {
        const std::string name = functionName(row.prototype);
        SCOPED_TRACE(name);
        const auto page = kDocs / (name + ".md");
        ASSERT_TRUE(std::filesystem::exists(page));
        const auto lines = readLines(page);
        EXPECT_EQ(lines.front(), "# " + name);
        EXPECT_EQ(pagePrototype(lines), row.prototype);
        EXPECT_NE(index.find("(" + name + ".md)"), std::string::npos) << "not in the index";
        EXPECT_FALSE(pageExamples(lines).empty()) << "no example";
    }
}

TEST(FunctionDocs, EveryExamplePrintsWhatItsPageShows) {
    const auto folder = std::filesystem::temp_directory_path() /
                        ("ravelin_function_docs_" + std::to_string(getpid()));
    for (const auto& entry : std::filesystem::directory_iterator(kDocs)) {
        if (entry.path().filename() == "README.md") continue;
        // A page's examples share one folder: a later one may use a file an earlier one made.
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder);
        for (const Example& example : pageExamples(readLines(entry.path()))) {
            EXPECT_EQ(runExample(example.command, folder), example.expected)
                << entry.path().filename() << ": $ " << example.command;
        }
    }
    std::filesystem::remove_all(folder);
}

}  // namespace
