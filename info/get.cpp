// Ravelin_Get( selector { ; moreOptions } ): the last error, the time, sorted numbers and the
// inline-documentation switch. Successful selectors leave the last error as it was.
#include <iterator>

#include "fmlib/convert.h"
#include "fmlib/text_utils.h"
#include "frame/answers.h"
#include "frame/inline_doc.h"
#include "frame/last_error.h"
#include "info/functions.h"
#include "info/sort_numbers.h"

namespace {

const char* gGetSelectors[] = {"lastError", "lastErrorMessage", "timestamp",
                               "sort",      "stderr",           "inlineDocumentation"};
enum GetSelector {
    kLastError = 0,
    kLastErrorMessage,
    kTimestamp,
    kSort,
    kStderr,
    kInlineDocumentation
};

void setNow(fmx::Data& result) {
    fmx::DateTimeUniquePtr now;
    fmlib::SetDateTimeToNow(*now);
    result.SetAsTimeStamp(*now, fmx::kDTTimeStamp);
}

}  // namespace

void body::Ravelin_Get(const fmx::ExprEnv& env, const rvl::Arguments& args, fmx::Data& result) {
    if (args.count() == 0) return rvl::AnswerBadParameters("Not enough parameters", env, result);
    switch (fmlib::FindFMTextInArray(args.text(0), gGetSelectors, std::size(gGetSelectors))) {
        case kLastError:
            rvl::GetLastErrorCode(result, env);
            break;
        case kLastErrorMessage:
            rvl::GetLastErrorMessage(result, env);
            break;
        case kTimestamp:
            setNow(result);
            break;
        case kSort:
            // The list is the second argument; without one there is nothing to sort.
            if (args.count() < 2)
                return rvl::AnswerBadParameters("Not enough parameters", env, result);
            rvl::SortNumberInFMText(args.text(1), result);
            break;
        case kStderr:
            rvl::GetLastScriptStderr(result, env);
            break;
        case kInlineDocumentation:
            fmlib::SetResultText(result, getHumanReadableState());
            break;
        default:
            rvl::AnswerBadParameters("Unrecognized selector", env, result);
            break;
    }
}
