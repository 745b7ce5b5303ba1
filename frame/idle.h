// The one job the frame runs at safe idle: starting a script whose time has come.
//
// The frame carries a weak, empty definition of performScheduledScripts(). The script scheduler
// provides the real one simply by defining this function (include this header; no attribute);
// the linker then takes the scheduler's definition over the frame's.
#pragma once

void performScheduledScripts();
