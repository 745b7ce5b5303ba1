// Filling a template: every calculation between "<<" and ">>" is evaluated in the caller's
// environment and replaces its whole span; the literal text around the spans keeps its styles.
#pragma once

#include "host/fmx.h"

// The merge of argument 1 into `result` (text with the result's own locale). The arguments must
// not be empty: that is a programming error and stops the process.
void PerformMergeText(const fmx::ExprEnv& env, const fmx::DataVect& dataVect, fmx::Data& result);
