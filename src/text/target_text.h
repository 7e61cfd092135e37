// Reading the text that a captured target shows.
#pragma once

#include "korvane/korvane.h"
#include "platform/owners.h"
#include "platform/wide_text.h"

namespace korvane {

// The first non-empty text among the target's text properties. Holds no string when there is none, with the reason
// logged.
Variant ReadTargetText(const TargetRecord* target, HWND window);

}  // namespace korvane
