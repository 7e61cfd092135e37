#include "input/send_input.h"

#include <algorithm>
#include <array>

namespace korvane {
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

// Of the records, the first `inserted` came through: what is down is released by as many of the last ones.
void ReleaseWhatIsDown(std::span<INPUT> records, std::size_t inserted) {
  std::span<INPUT> releases = records.last(std::min(inserted, records.size() - inserted));
  // A key that stays down spoils everything the user types next, so a refusal is not taken at once.
  constexpr int kRefusals = 3;
  for (int refused = 0; !releases.empty() && refused < kRefusals;) {
    const UINT accepted = SendInput(static_cast<UINT>(releases.size()), releases.data(), sizeof(INPUT));
    releases = releases.subspan(std::min<std::size_t>(accepted, releases.size()));
    refused += accepted == 0 ? 1 : 0;
  }
}

}  // namespace

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
    ReleaseWhatIsDown(records, inserted);
  }
  return inserted;
}

std::size_t SendKeys(std::span<const WORD> keys) {
  std::array<INPUT, kMaxRecords> records;
  std::size_t count = 0;
  for (const WORD key : keys) {
    records[count++] = Key(key, 0);
  }
  for (std::size_t i = keys.size(); i > 0; --i) {
    records[count++] = Key(keys[i - 1], KEYEVENTF_KEYUP);
  }
  return SendAll({records.data(), count});
}

bool SendShortcut(std::initializer_list<WORD> keys) {
  return SendKeys({keys.begin(), keys.size()}) == keys.size() * 2;
}

}  // namespace korvane
