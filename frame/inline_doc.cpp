#include "frame/inline_doc.h"

#include <atomic>

namespace {
std::atomic<bool> gInlineDocOn{false};
}

void turnOnInlineDoc() { gInlineDocOn = true; }
void turnOffInlineDoc() { gInlineDocOn = false; }
bool isInlineDocOn() { return gInlineDocOn; }
const char* getHumanReadableState() { return isInlineDocOn() ? "on" : "off"; }
