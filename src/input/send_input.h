// Synthesized input.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <span>

#include "platform/platform.h"

namespace korvane {

INPUT MouseButton(DWORD flags, POINT point);

// Sends all records in one call and returns how many were inserted. `records` press in one order and release in the
// reverse one. When the system stopped in between, what was pressed and not released is released, so that no key or
// button stays down.
std::size_t SendAll(std::span<INPUT> records);

// Presses the keys in order and releases them in reverse order, in one call: modifiers, then the main key. The number
// of records inserted of the two for each key.
std::size_t SendKeys(std::span<const WORD> keys);

// Whether all of them were inserted.
bool SendShortcut(std::initializer_list<WORD> keys);

}  // namespace korvane
