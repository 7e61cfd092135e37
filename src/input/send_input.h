// Synthesized input.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <span>

#include "platform/platform.h"

INPUT KeyPress(WORD virtualKey);
INPUT KeyRelease(WORD virtualKey);
INPUT MouseButton(DWORD flags, POINT point);

// Sends all records in one call and returns how many were inserted. When the system stopped in between, what was
// pressed and not released is released, so that no key or button stays down.
std::size_t SendAll(std::span<INPUT> records);

// Presses the keys in order and releases them in reverse order, in one call: modifiers, then the main key. The number
// of records inserted of the two for each key.
std::size_t SendKeys(std::initializer_list<WORD> keys);

// Whether all of them were inserted.
bool SendShortcut(std::initializer_list<WORD> keys);
