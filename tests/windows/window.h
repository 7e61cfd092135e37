// A window of this program that notes the key messages it is given.
#pragma once

#include <functional>
#include <vector>

#include "platform/platform.h"

namespace windows_tests {

struct KeyMessage {
  UINT message;
  WPARAM key;
  friend bool operator==(const KeyMessage&, const KeyMessage&) = default;
};

class KeyWindow {
 public:
  KeyWindow();
  ~KeyWindow();
  KeyWindow(const KeyWindow&) = delete;
  KeyWindow& operator=(const KeyWindow&) = delete;

  HWND Handle() const {
    return window_;
  }
  // Serves messages until so many key messages came, or for too long.
  std::vector<KeyMessage> Receive(std::size_t count);

 private:
  HWND window_;
};

// Serves this thread's messages until the condition holds; false when it takes too long.
bool ServeUntil(const std::function<bool()>& condition);

}  // namespace windows_tests
