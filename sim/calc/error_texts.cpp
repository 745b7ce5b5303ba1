#include <utility>

#include "sim/calc/errors.h"

namespace sim::calc {

std::string_view errorText(short code) {
    static constexpr std::pair<short, std::string_view> kTexts[] = {
        {1, "User canceled action"},
        {100, "File is missing"},
        {102, "Field is missing"},
        {104, "Script is missing"},
        {1200, "Generic calculation error"},
        {1201, "Too few parameters in the function"},
        {1202, "Too many parameters in the function"},
        {1203, "Unexpected end of calculation"},
        {1204, "Number, text constant, field name, or \"(\" expected"},
        {1205, "Comment is not terminated with \"*/\""},
        {1206, "Text constant must end with a quotation mark"},
        {1207, "Unbalanced parenthesis"},
        {1208, "Operator missing, function not found, or \"(\" not expected"},
        {1209, "Name (such as field name or layout name) is missing"},
        {1210, "Plug-in function or script step has already been registered"},
        {1211, "List usage is not allowed in this function"},
        {1212, "An operator (for example, +, -, *) is expected here"},
        {1213, "This variable has already been defined in the Let function"},
        {1214, "A function parameter contains an expression where a field is required"},
        {1215, "This parameter is an invalid Get function parameter"},
        {1216, "Only summary fields are allowed as first argument in GetSummary"},
        {1217, "Break field is invalid"},
        {1218, "Cannot evaluate the number"},
        {1219, "A field cannot be used in its own formula"},
        {1220, "Field type must be normal or calculated"},
        {1221, "Data type must be number, date, time, or timestamp"},
        {1222, "Calculation cannot be stored"},
        {1223, "Function referred to is not yet implemented"},
        {1224, "Function referred to does not exist"},
        {1225, "Function referred to is not supported in this context"},
        {8310, "Error in SQL query syntax"},
    };
    for (const auto& [known, text] : kTexts) {
        if (known == code) return text;
    }
    return {};
}

}  // namespace sim::calc
