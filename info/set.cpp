// Ravelin_Set( selector ; newValue ): the global store's clean-up interval and the
// inline-documentation switch.
#include <iterator>

#include "fmlib/convert.h"
#include "fmlib/text_utils.h"
#include "frame/answers.h"
#include "frame/inline_doc.h"
#include "frame/registry.h"
#include "globals/store.h"
#include "info/functions.h"

namespace {

const char* gSetSelectors[] = {"globalDieInterval", "inlineDocumentation"};
enum SetSelector { kGlobalDieInterval = 0, kInlineDocumentation = 1 };

// The value is read as at most 255 bytes of the host's native encoding.
constexpr std::size_t kSwitchValueBytes = 256;

void setCleanPeriod(const fmx::DataVect& args, fmx::Data& result) {
    rvl::gCleanPeriod = args.AtAsNumber(1).AsFloat();
    fmlib::FMData2FMData(args.At(1), result);
}

// Only "off", in lower case, turns the switch off; anything else turns it on. Either way the
// whole table is registered again (what the host answers is not looked at).
void setInlineDocumentation(const fmx::DataVect& args, fmx::Data& result) {
    if (fmlib::NativeBytesCut(args.AtAsText(1), kSwitchValueBytes) == "off") {
        turnOffInlineDoc();
    } else {
        turnOnInlineDoc();
    }
    RegisterFunctionsAgain();
    fmlib::SetResultText(result, getHumanReadableState());
}

}  // namespace

void body::Ravelin_Set(const fmx::ExprEnv& env, const rvl::Arguments& args, fmx::Data& result) {
    if (args.count() < 2) return rvl::AnswerBadParameters("Not enough parameters", env, result);
    switch (fmlib::FindFMTextInArray(args.text(0), gSetSelectors, std::size(gSetSelectors))) {
        case kGlobalDieInterval:
            setCleanPeriod(args.vect(), result);
            break;
        case kInlineDocumentation:
            setInlineDocumentation(args.vect(), result);
            break;
        default:
            rvl::AnswerBadParameters("Unrecognized selector", env, result);
            break;
    }
}
