// Messages to windows. One that does not answer within a second counts as failed, so that one hung program cannot hang
// its observers.
#pragma once

#include <optional>

#include "standin/uia/tree.h"

namespace wine_automation {

namespace uia = standin::uia;

std::optional<LONG_PTR> Ask(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0);

// ---- For windows of the calling thread only: the system does not carry these structures to others ----

// Sends a message whose lParam points to `data`, which the window may change.
template <class Data>
std::optional<LONG_PTR> AskWith(HWND window, UINT message, WPARAM wParam, Data& data) {
  return Ask(window, message, wParam, reinterpret_cast<LPARAM>(&data));
}

// The text of an item that the common controls describe by a structure with a text buffer. The control may answer by
// pointing to a text of its own.
template <class Item>
std::optional<uia::Text> AskItemText(HWND window, UINT message, WPARAM wParam, Item item) {
  constexpr int kLongest = 1024;
  WCHAR buffer[kLongest] = {};
  item.pszText = buffer;
  item.cchTextMax = kLongest;
  const std::optional<LONG_PTR> answer = AskWith(window, message, wParam, item);
  if (!answer) {
    return std::nullopt;
  }
  return item.pszText == nullptr ? uia::Text() : uia::Text(item.pszText);
}

}  // namespace wine_automation
