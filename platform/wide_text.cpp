#include "platform/wide_text.h"

#include <algorithm>

namespace korvane {

WideView ViewOf(const WCHAR* text) {
  return text == nullptr ? WideView() : WideView(text);
}

WideView ViewWithin(const WCHAR* field, std::size_t size) {
  return {field, static_cast<std::size_t>(std::find(field, field + size, WCHAR{0}) - field)};
}

void CopyCut(WCHAR* field, std::size_t size, WideView text) {
  const std::size_t length = std::min(text.size(), size - 1);
  std::copy_n(text.data(), length, field);
  field[length] = 0;
}

}  // namespace korvane
