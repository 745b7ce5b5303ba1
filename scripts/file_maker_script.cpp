#include "scripts/file_maker_script.h"

std::string describe(const std::vector<FileMakerScript>& scripts) {
    std::string out = "(\n";
    for (const FileMakerScript& s : scripts) {
        out += "    {script_name = \"" + s.script_name + "\"; file_name = \"" + s.file_name +
               "\"; script_parameters = \"" + s.script_parameters + "\";}\n";
    }
    out += ")";
    return out;
}
