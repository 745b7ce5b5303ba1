// Ravelin_GetGlobal( key ): a stored value with its own type, or an empty result.
#include "frame/answers.h"
#include "globals/functions.h"
#include "globals/store.h"

void body::Ravelin_GetGlobal(const fmx::ExprEnv& env, const rvl::Arguments& args,
                             fmx::Data& result) {
    if (args.count() == 0) return rvl::AnswerBadParameters("Key must be specified", env, result);
    // A missing or empty key is no error: the result stays empty and the last error as it
    // was. Reading never looks at the file a key is bound to.
    const rvl::KeyUnits key(args.text(0));
    if (!key.empty()) rvl::globalDictionary.loadValueForKey(key.view(), result);
}
