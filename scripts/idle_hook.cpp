// The frame's safe idle hook, served by the plug-in's scheduler.
#include "frame/idle.h"
#include "scripts/host_script.h"
#include "scripts/ravelin.h"

void performScheduledScripts() {
    Ravelin::instance().performScheduledScripts(startScheduledScript);
}
