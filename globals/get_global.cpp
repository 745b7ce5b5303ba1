// Ravelin_GetGlobal( key ): a stored value with its own type, or an empty result.
#include "fmlib/text_utils.h"
#include "frame/answers.h"
#include "globals/functions.h"
#include "globals/store.h"

void body::Ravelin_GetGlobal(const fmx::ExprEnv& env, const rvl::Arguments& args,
                             fmx::Data& result) {
    if (args.count() == 0) return rvl::AnswerBadParameters("Key must be specified", env, result);
    // A missing or empty key is no error: the result stays empty and the last error as it
    // was. Reading never looks at the file a key is bound to.
    const fmx::Text& key = args.text(0);
    if (!isEmpty(key)) rvl::globalDictionary.loadValueForKey(key, result);
}
