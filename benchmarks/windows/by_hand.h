// A step of a replay without the library: the same platform calls, without logs, checks and records.
#pragma once

#include <memory>
#include <string>

#include <windows.h>

namespace bench {

class ByHand {
 public:
  ByHand();
  ~ByHand();
  ByHand(const ByHand&) = delete;
  ByHand& operator=(const ByHand&) = delete;

  // Everything that a record holds of the element at the point; its AutomationId is kept for the rest.
  bool Capture(POINT point);
  bool SetClipboard(const std::wstring& text);
  // Finds the captured element in the window, clicks it, pastes, and polls until the text shows.
  bool Paste(HWND window, const std::wstring& text);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace bench
