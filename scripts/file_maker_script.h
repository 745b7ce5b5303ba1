// One request to start a script later: what the timer hands to the idle side.
#pragma once

#include <string>
#include <vector>

// All three in UTF-8.
struct FileMakerScript {
    std::string script_name;
    std::string file_name;          // the file that asked, where the script runs
    std::string script_parameters;  // empty when none was given
    friend bool operator==(const FileMakerScript&, const FileMakerScript&) = default;
};

// The pending array as the log shows it: one record per line between parentheses.
std::string describe(const std::vector<FileMakerScript>& scripts);
