// Ravelin_GetGlobal( key ): a stored value with its own type, or an empty result.
#include "fmlib/text_utils.h"
#include "frame/answers.h"
#include "frame/exception_frame.h"
#include "globals/functions.h"
#include "globals/store.h"

fmx::errcode Ravelin_GetGlobal(short, const fmx::ExprEnv& env, const fmx::DataVect& args,
                               fmx::Data& result) {
    return rvl::RunInExceptionFrame(env, result, [&] {
        if (args.Size() == 0) return rvl::AnswerBadParameters("Key must be specified", env, result);
        // A missing or empty key is no error: the result stays empty and the last error as it
        // was. Reading never looks at the file a key is bound to.
        const fmx::Text& key = args.AtAsText(0);
        if (!isEmpty(key)) rvl::globalDictionary.loadValueForKey(key, result);
    });
}
