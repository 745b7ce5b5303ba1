// Ravelin_Version( { versionFormat } ). No exception frame: a failing host call reaches the
// host, and the last error is never touched.
#include <array>
#include <cstdio>
#include <string>

#include "fmlib/convert.h"
#include "fmlib/text_utils.h"
#include "frame/strings.h"
#include "info/functions.h"

namespace {

const char* gVersionTypes[] = {"short", "long", "platform", "autoupdate"};
enum VersionFormat { kShort = 0, kLong = 1, kPlatform = 2, kAutoUpdate = 3 };

// The build number exists only in the auto-update form.
constexpr int kVersionFields[] = {3, 0, 3, 18};
constexpr std::size_t kNameUnits = 256;

void assignPluginNameAndVersion(fmx::Text& text) {
    std::array<fmx::unichar16, kNameUnits> name{};
    ReadString(name.data(), kNameUnits, kPluginName);
    text.AssignUnicode(name.data());
    text.AppendText(*fmx::TextUniquePtr(std::string(" ") + kPluginVersion), 0, fmx::kSize_End);
}

std::string autoUpdateNumber() {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%02d%02d%02d%02d", kVersionFields[0], kVersionFields[1],
                  kVersionFields[2], kVersionFields[3]);
    return digits;
}

int requestedFormat(const rvl::Arguments& args) {
    if (args.count() == 0) return kShort;
    return fmlib::FindFMTextInArray(args.text(0), gVersionTypes, std::size(gVersionTypes));
}

}  // namespace

fmx::errcode body::Ravelin_Version(const fmx::ExprEnv&, const rvl::Arguments& args,
                                   fmx::Data& result) {
    fmx::TextUniquePtr text;
    switch (requestedFormat(args)) {
        case kLong:
            assignPluginNameAndVersion(*text);
            break;
        case kPlatform:
            text->Assign("iOS", fmx::kEncoding_Native);
            break;
        case kAutoUpdate:
            text->Assign(autoUpdateNumber(), fmx::kEncoding_Native);
            break;
        default:  // "short", and any word it does not know
            text->Assign(kPluginVersion, fmx::kEncoding_Native);
            break;
    }
    fmlib::SetResultText(result, *text);
    return 0;
}
