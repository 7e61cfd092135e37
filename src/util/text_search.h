// A search that stays linear on any text.
#pragma once

#include "platform/wide_text.h"

namespace korvane {

// Whether `part` occurs in `text`; an empty part always does. Takes time linear in both and no memory: fields of other
// programs can be large and repetitive, and a poll must not become slow on them.
bool Contains(WideView text, WideView part);

}  // namespace korvane
