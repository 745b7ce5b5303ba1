// Ravelin_SetGlobal( key ; value { ; moreOptions } ): stores, replaces or removes a value of the
// global store, or empties the store.
#include "fmlib/convert.h"
#include "frame/answers.h"
#include "globals/functions.h"
#include "globals/store.h"

namespace {

bool isEmptyText(const fmx::Data& value, fmx::int32 type) {
    return type == fmx::kDTText && value.GetAsText().GetSize() == 0;
}

// The option compared after the host's lower-casing: any mixture of case matches, nothing else.
bool isDieOnClose(const fmx::Text& option) {
    fmx::TextUniquePtr lowered;
    lowered->SetText(option, 0, fmx::kSize_End);
    lowered->Lowercase();
    return *lowered == *fmx::TextUniquePtr("dieonclose");
}

}  // namespace

void body::Ravelin_SetGlobal(const fmx::ExprEnv& env, const rvl::Arguments& args,
                             fmx::Data& result) {
    const fmx::uint32 count = args.count();
    if (count < 2) return rvl::AnswerBadParameters("Key and value must be specified", env, result);
    // The key's units are read once, for the emptiness test and the store alike.
    const rvl::KeyUnits key(args.text(0));
    const fmx::Data& value = args.value(1);
    // An empty key empties the whole store, local values of every file included.
    if (key.empty()) return rvl::globalDictionary.clean();
    const fmx::int32 type = value.GetNativeType();
    // Checked before the option, so that an empty value removes even with a bad option.
    if (isEmptyText(value, type)) return rvl::globalDictionary.removeKeyValue(key.view());
    if (count >= 3) {
        if (!isDieOnClose(args.text(2))) {
            return rvl::AnswerBadParameters("Unknown value of parameter moreOptions", env, result);
        }
        rvl::globalDictionary.storeLocalValueForKey(env, key.view(), value, type);
    } else {
        rvl::globalDictionary.storeValueForKey(key.view(), value, type);
    }
    fmlib::FMData2FMData(value, type, result);
}
