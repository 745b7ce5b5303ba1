// The entry procedure the host calls for every lifecycle event (the only exported symbol).
#pragma once

#include "host/fmx_types.h"

extern "C" __attribute__((visibility("default"))) void FMExternCallProc(FMX_ExternCallPtr pb);
