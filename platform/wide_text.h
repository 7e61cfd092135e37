// UTF-16 texts of hosts and platform, and bounded views of them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/platform.h"

namespace korvane {

using WideText = std::basic_string<WCHAR>;
using WideView = std::basic_string_view<WCHAR>;

// The text up to its terminator; empty for null.
WideView ViewOf(const WCHAR* text);

// The text in a fixed field: up to its terminator, or the whole field when it has none.
WideView ViewWithin(const WCHAR* field, std::size_t size);

template <std::size_t Size>
WideView ViewWithin(const WCHAR (&field)[Size]) {
  return ViewWithin(field, Size);
}

// Copies as much of `text` as fits before a terminator, and the terminator.
void CopyCut(WCHAR* field, std::size_t size, WideView text);

template <std::size_t Size>
void CopyCut(WCHAR (&field)[Size], WideView text) {
  CopyCut(field, Size, text);
}

}  // namespace korvane
