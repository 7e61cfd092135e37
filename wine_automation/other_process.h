// Messages to a window of another process, with what they point to laid into that process. A window that does not
// answer within a second counts as failed, so that one hung program cannot hang its observers.
#pragma once

#include <cstddef>
#include <optional>

#include "standin/uia/tree.h"

namespace wine_automation {

namespace uia = standin::uia;

std::optional<LONG_PTR> Ask(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0);

// A block of memory in the process that a window belongs to. There is none in a 32-bit process, whose structures are
// laid out otherwise: every use of it then fails.
class OtherMemory {
 public:
  OtherMemory(HWND window, std::size_t size);
  ~OtherMemory();
  OtherMemory(const OtherMemory&) = delete;
  OtherMemory& operator=(const OtherMemory&) = delete;

  bool Write(const void* data, std::size_t size);
  bool Read(void* data, std::size_t size) const;
  // At most `longest` characters that stand at an address of the other process, up to the first NUL.
  std::optional<uia::Text> ReadText(const void* address, std::size_t longest) const;
  // The message's lParam is the block. A window that did not answer in time may still write there: the block is left.
  std::optional<LONG_PTR> Ask(UINT message, WPARAM wParam);
  void* At(std::size_t offset) const;

 private:
  HWND window_;
  HANDLE process_ = nullptr;
  void* block_ = nullptr;
};

// Sends a message whose lParam points to `data`, which comes back as the window left it.
template <class Data>
std::optional<LONG_PTR> AskWith(HWND window, UINT message, WPARAM wParam, Data& data) {
  OtherMemory memory(window, sizeof data);
  if (!memory.Write(&data, sizeof data)) {
    return std::nullopt;
  }
  const std::optional<LONG_PTR> answer = memory.Ask(message, wParam);
  return answer && memory.Read(&data, sizeof data) ? answer : std::nullopt;
}

// The text of an item that the common controls describe by a structure with a text buffer. The control may answer by
// pointing to a text of its own.
template <class Item>
std::optional<uia::Text> AskItemText(HWND window, UINT message, WPARAM wParam, Item item) {
  constexpr std::size_t kLongest = 1024;
  OtherMemory memory(window, sizeof item + kLongest * sizeof(WCHAR));
  item.pszText = static_cast<WCHAR*>(memory.At(sizeof item));
  item.cchTextMax = kLongest;
  if (!memory.Write(&item, sizeof item)) {
    return std::nullopt;
  }
  const std::optional<LONG_PTR> answer = memory.Ask(message, wParam);
  if (!answer || *answer == 0 || !memory.Read(&item, sizeof item)) {
    return std::nullopt;
  }
  return item.pszText == nullptr ? uia::Text() : memory.ReadText(item.pszText, kLongest);
}

}  // namespace wine_automation
