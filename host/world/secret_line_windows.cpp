#include <windows.h>

#include <iostream>

#include "host/base/failure.h"
#include "host/base/text.h"
#include "host/world/secret_line.h"

namespace host::world {

namespace {

// Every key as it is, Ctrl+C too.
class Keys {
 public:
  Keys(HANDLE input, DWORD mode) : input_(input), mode_(mode) {
    SetConsoleMode(input_, mode_ & ~static_cast<DWORD>(ENABLE_PROCESSED_INPUT));
  }
  Keys(const Keys&) = delete;
  Keys& operator=(const Keys&) = delete;
  ~Keys() {
    SetConsoleMode(input_, mode_);
    std::cerr << "\n" << std::flush;
  }

  // The next character; 0: there will be none.
  WCHAR Next() const {
    INPUT_RECORD record{};
    DWORD count = 0;
    while (ReadConsoleInputW(input_, &record, 1, &count)) {
      const KEY_EVENT_RECORD& key = record.Event.KeyEvent;
      if (record.EventType == KEY_EVENT && key.bKeyDown && key.uChar.UnicodeChar != 0) {
        return key.uChar.UnicodeChar;
      }
    }
    return 0;
  }

 private:
  HANDLE input_;
  DWORD mode_;
};

}  // namespace

std::optional<std::string> AskForSecret(const std::string& question) {
  const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
  DWORD mode = 0;
  if (!GetConsoleMode(input, &mode)) {
    return std::nullopt;
  }
  std::cerr << question << std::flush;
  const Keys keys(input, mode);
  WideText line;
  constexpr WCHAR kInterrupt = 3;
  for (WCHAR next = keys.Next(); next != TEXT('\r') && next != TEXT('\n'); next = keys.Next()) {
    if (next == 0 || next == kInterrupt) {
      throw Failure(ExitCode::Cancelled, "nothing was typed; nothing was done");
    }
    if (next != TEXT('\b')) {
      line += next;
    } else if (!line.empty()) {
      line.pop_back();
    }
  }
  return Utf8(line);
}

}  // namespace host::world
