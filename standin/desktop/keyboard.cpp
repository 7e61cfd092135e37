// Keys, the keyboard layout, and the synthesized input of both keyboard and mouse.
#include <algorithm>

#include "standin/desktop/state.h"

namespace standin {

namespace {

constexpr UINT kKeyDown = 0x0100;
constexpr UINT kKeyUp = 0x0101;
constexpr UINT kCharacter = 0x0102;
constexpr UINT kSystemKeyDown = 0x0104;
constexpr UINT kSystemKeyUp = 0x0105;
constexpr SHORT kShift = 0x100;

// The keys of the US layout that are neither letters nor digits, with their character without and with Shift.
struct LayoutKey {
  WORD virtualKey;
  WCHAR plain;
  WCHAR shifted;
};
constexpr LayoutKey kKeys[] = {
    {0x20, u' ', u' '}, {0xBA, u';', u':'},  {0xBB, u'=', u'+'}, {0xBC, u',', u'<'}, {0xBD, u'-', u'_'},
    {0xBE, u'.', u'>'}, {0xBF, u'/', u'?'},  {0xC0, u'`', u'~'}, {0xDB, u'[', u'{'}, {0xDC, u'\\', u'|'},
    {0xDD, u']', u'}'}, {0xDE, u'\'', u'"'}, {0x30, u'0', u')'}, {0x31, u'1', u'!'}, {0x32, u'2', u'@'},
    {0x33, u'3', u'#'}, {0x34, u'4', u'$'},  {0x35, u'5', u'%'}, {0x36, u'6', u'^'}, {0x37, u'7', u'&'},
    {0x38, u'8', u'*'}, {0x39, u'9', u'('},
};

}  // namespace

SHORT Desktop::State::KeyFor(WCHAR character) const {
  if (const auto override = keyOverrides.find(character); override != keyOverrides.end()) {
    return override->second;
  }
  if (character >= u'a' && character <= u'z') {
    return static_cast<SHORT>(character - u'a' + 'A');
  }
  if (character >= u'A' && character <= u'Z') {
    return static_cast<SHORT>(character | kShift);
  }
  for (const LayoutKey& key : kKeys) {
    if (key.plain == character) {
      return static_cast<SHORT>(key.virtualKey);
    }
    if (key.shifted == character) {
      return static_cast<SHORT>(key.virtualKey | kShift);
    }
  }
  return -1;
}

Text Desktop::State::CharactersOf(WORD virtualKey) const {
  const bool shifted = keyDown[VK_SHIFT];
  if (virtualKey >= 'A' && virtualKey <= 'Z') {
    return Text(1, static_cast<WCHAR>(shifted ? virtualKey : virtualKey - 'A' + u'a'));
  }
  for (const LayoutKey& key : kKeys) {
    if (key.virtualKey == virtualKey) {
      return Text(1, shifted ? key.shifted : key.plain);
    }
  }
  return {};
}

void Desktop::State::Key(WORD virtualKey, bool down, bool synthesized) {
  const WORD index = virtualKey & 0xFF;
  keyDown[index] = down;
  if (synthesized) {
    synthesizedDown[index] = down;
  }
  const HWND receiver = focus != nullptr ? focus : foreground;
  if (receiver == nullptr || FindWindow(receiver) == nullptr) {
    return;
  }
  const bool system = (keyDown[VK_MENU] || index == VK_MENU) && !keyDown[VK_CONTROL];
  if (tracing) {
    keyMessages.push_back(
        {receiver, down ? (system ? kSystemKeyDown : kKeyDown) : (system ? kSystemKeyUp : kKeyUp), virtualKey});
  }
  if (!down || system) {
    return;
  }
  Node& node = *FindWindow(receiver);
  if (const Text typed = CharactersOf(virtualKey); !typed.empty() && !keyDown[VK_CONTROL] && tracing) {
    keyMessages.push_back({receiver, kCharacter, typed[0]});
  }
  if (node.window.behaviour == Behaviour::Edit) {
    TypeInto(node, virtualKey);
  }
}

// ---- Scripting ----

bool Desktop::IsDown(int virtualKey) const {
  const std::lock_guard guard(state_->mutex);
  return state_->keyDown[virtualKey & 0xFF];
}

void Desktop::PressKey(int virtualKey, bool down) {
  const std::lock_guard guard(state_->mutex);
  state_->Key(static_cast<WORD>(virtualKey), down, false);
}

void Desktop::HoldEscape(double after, double milliseconds) {
  After(after, [this] { PressKey(VK_ESCAPE, true); });
  After(after + milliseconds, [this] { PressKey(VK_ESCAPE, false); });
}

void Desktop::BlockInput(std::uint32_t insertedPerCall) {
  const std::lock_guard guard(state_->mutex);
  state_->insertedPerCall = insertedPerCall;
}

void Desktop::AcceptInput() {
  const std::lock_guard guard(state_->mutex);
  state_->insertedPerCall.reset();
}

std::vector<std::vector<INPUT>> Desktop::InputBatches() const {
  const std::lock_guard guard(state_->mutex);
  return state_->batches;
}

std::vector<INPUT> Desktop::SentInput() const {
  std::vector<INPUT> all;
  for (const auto& batch : InputBatches()) {
    all.insert(all.end(), batch.begin(), batch.end());
  }
  return all;
}

std::vector<KeyMessage> Desktop::KeyMessages() const {
  const std::lock_guard guard(state_->mutex);
  return state_->keyMessages;
}

void Desktop::SetKey(WCHAR character, SHORT key) {
  const std::lock_guard guard(state_->mutex);
  state_->keyOverrides[character] = key;
}

}  // namespace standin

using namespace standin;

// ---- Platform functions ----

extern "C" {

UINT SendInput(UINT count, INPUT* inputs, int size) {
  STANDIN_CALL(SendInput);
  if (call.Fails() || size != sizeof(INPUT)) {
    return 0;
  }
  const UINT inserted = std::min(count, call->insertedPerCall.value_or(count));
  if (call->tracing) {
    call->batches.emplace_back(inputs, inputs + count);
    call->Note("SendInput", "count=" + std::to_string(count) + " inserted=" + std::to_string(inserted));
  }
  for (UINT i = 0; i < inserted; ++i) {
    const INPUT& input = inputs[i];
    if (input.type == INPUT_KEYBOARD) {
      call->Key(input.ki.wVk, (input.ki.dwFlags & KEYEVENTF_KEYUP) == 0, true);
      continue;
    }
    if ((input.mi.dwFlags & MOUSEEVENTF_LEFTDOWN) != 0) {
      call->MouseButton(true, true);
    }
    if ((input.mi.dwFlags & MOUSEEVENTF_LEFTUP) != 0) {
      call->MouseButton(false, true);
    }
  }
  return inserted;
}

SHORT VkKeyScanW(WCHAR character) {
  STANDIN_CALL(VkKeyScanW);
  return call.Fails() ? SHORT{-1} : call->KeyFor(character);
}

SHORT GetAsyncKeyState(int virtualKey) {
  STANDIN_CALL(GetAsyncKeyState);
  return !call.Fails() && call->keyDown[virtualKey & 0xFF] ? static_cast<SHORT>(0x8000) : SHORT{0};
}

}  // extern "C"
