// The inline-documentation switch: a process-wide setting, off at load, changed and reported by
// Ravelin_Set and Ravelin_Get.
#pragma once

void turnOnInlineDoc();
void turnOffInlineDoc();
bool isInlineDocOn();
// "on" or "off".
const char* getHumanReadableState();
