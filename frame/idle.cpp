#include "frame/idle.h"

// Stands in until the script scheduler is linked in; its own definition replaces this one.
__attribute__((weak)) void performScheduledScripts() {}
