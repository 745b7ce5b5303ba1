#include "entry/placeholders.h"

#include "frame/answers.h"

#define NOT_IMPLEMENTED_YET(name)                                                                \
    fmx::errcode name(short, const fmx::ExprEnv& env, const fmx::DataVect&, fmx::Data& result) { \
        return rvl::AnswerNotImplemented(env, result);                                           \
    }

NOT_IMPLEMENTED_YET(Ravelin_GetClientPublicIPAddress)
NOT_IMPLEMENTED_YET(Ravelin_GetNameForIP)
NOT_IMPLEMENTED_YET(Ravelin_GetIPforName)
NOT_IMPLEMENTED_YET(Ravelin_GetAsHTML)
