#include "input/send_input.h"

#include <algorithm>
#include <array>

namespace {

// The most records that one call of ours sends: three modifiers and a key, pressed and released.
constexpr std::size_t kMaxRecords = 8;

INPUT Key(WORD virtualKey, DWORD flags) {
  INPUT record{};
  record.type = INPUT_KEYBOARD;
  record.ki.wVk = virtualKey;
  record.ki.dwFlags = flags;
  return record;
}

// The release that belongs to a press; for a release, itself.
INPUT ReleaseOf(INPUT record) {
  if (record.type == INPUT_KEYBOARD) {
    record.ki.dwFlags |= KEYEVENTF_KEYUP;
  } else if ((record.mi.dwFlags & MOUSEEVENTF_LEFTDOWN) != 0) {
    record.mi.dwFlags ^= MOUSEEVENTF_LEFTDOWN | MOUSEEVENTF_LEFTUP;
  }
  return record;
}

bool IsSame(const INPUT& a, const INPUT& b) {
  return a.type == b.type && (a.type == INPUT_KEYBOARD ? a.ki.wVk == b.ki.wVk && a.ki.dwFlags == b.ki.dwFlags
                                                       : a.mi.dwFlags == b.mi.dwFlags);
}

// Records follow the pattern "all presses, then all releases", so a press among the inserted ones is open exactly when
// its release is not among them.
void ReleaseWhatIsDown(std::span<const INPUT> inserted) {
  std::array<INPUT, kMaxRecords> releases;
  std::size_t count = 0;
  for (auto press = inserted.rbegin(); press != inserted.rend(); ++press) {
    const INPUT release = ReleaseOf(*press);
    const bool isReleased =
        std::any_of(inserted.begin(), inserted.end(), [&](const INPUT& other) { return IsSame(other, release); });
    if (!isReleased && count < releases.size()) {
      releases[count++] = release;
    }
  }
  // A key that stays down spoils everything the user types next, so a refusal is not taken at once.
  constexpr int kRefusals = 3;
  std::size_t released = 0;
  for (int refused = 0; released < count && refused < kRefusals;) {
    const UINT accepted = SendInput(static_cast<UINT>(count - released), &releases[released], sizeof(INPUT));
    released += accepted;
    refused += accepted == 0 ? 1 : 0;
  }
}

}  // namespace

INPUT KeyPress(WORD virtualKey) {
  return Key(virtualKey, 0);
}

INPUT KeyRelease(WORD virtualKey) {
  return Key(virtualKey, KEYEVENTF_KEYUP);
}

INPUT MouseButton(DWORD flags, POINT point) {
  INPUT record{};
  record.type = INPUT_MOUSE;
  record.mi.dx = point.x;
  record.mi.dy = point.y;
  record.mi.dwFlags = flags;
  return record;
}

std::size_t SendAll(std::span<INPUT> records) {
  const std::size_t inserted = SendInput(static_cast<UINT>(records.size()), records.data(), sizeof(INPUT));
  if (inserted > 0 && inserted < records.size()) {
    ReleaseWhatIsDown(records.first(inserted));
  }
  return inserted;
}

std::size_t SendKeys(std::initializer_list<WORD> keys) {
  std::array<INPUT, kMaxRecords> records;
  std::size_t count = 0;
  for (const WORD key : keys) {
    records[count++] = KeyPress(key);
  }
  for (auto key = std::rbegin(keys); key != std::rend(keys); ++key) {
    records[count++] = KeyRelease(*key);
  }
  return SendAll({records.data(), count});
}

bool SendShortcut(std::initializer_list<WORD> keys) {
  return SendKeys(keys) == keys.size() * 2;
}
