// HTML outputs of the tests pass through an HTML5 parser (html5lib, run by tests/html/
// html5_check.py) and font names through a CSS parser as well (tinycss2, font_family_check.py);
// without the parsers the checks are skipped, except in CI.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace html_test {

// Runs one of the checkers of tests/html on files holding `contents`, in order.
inline void expectCheckerPasses(const char* checker, const std::vector<std::string>& contents) {
    namespace fs = std::filesystem;
    const fs::path dir = fs::temp_directory_path() /
                         ("ravelin_html5_" + std::to_string(::getpid()) + "_" +
                          ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::create_directories(dir);
    std::string command =
        std::string("/usr/bin/python3 " RAVELIN_SOURCE_DIR "/tests/html/") + checker;
    for (size_t i = 0; i < contents.size(); ++i) {
        const fs::path file = dir / std::to_string(i);
        std::ofstream(file, std::ios::binary) << contents[i];
        command += ' ';
        command += file.string();
    }
    command += " 2>&1";
    std::string report;
    int status = -1;
    if (FILE* pipe = ::popen(command.c_str(), "r")) {
        char buffer[512];
        while (std::fgets(buffer, sizeof buffer, pipe)) report += buffer;
        status = ::pclose(pipe);
    }
    fs::remove_all(dir);
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    // 77: a parser missing; 127: no python3 at all.
    if ((code == 77 || code == 127) && std::getenv("CI") == nullptr) {
        std::printf("HTML5 check skipped: %s", report.c_str());
        return;
    }
    EXPECT_EQ(code, 0) << report;
}

inline void expectValidHtml5(const std::vector<std::string>& outputs) {
    expectCheckerPasses("html5_check.py", outputs);
}

// Each output (one character in one font) parses into font-family declarations of that name only
// (font_family_check.py).
inline void expectFontFamilies(const std::vector<std::pair<std::string, std::string>>& outputs) {
    std::vector<std::string> contents;
    for (const auto& [html, name] : outputs) {
        contents.push_back(html);
        contents.push_back(name);
    }
    expectCheckerPasses("font_family_check.py", contents);
}

}  // namespace html_test
