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

constexpr unsigned kShift = 1;
constexpr unsigned kControl = 2;
constexpr unsigned kAlt = 4;

// The keys of the US layout that are no letters, with their character without and with Shift.
struct LayoutKey {
  WORD virtualKey;
  WCHAR plain;
  WCHAR shifted;
};
constexpr LayoutKey kKeys[] = {
    {0x08, u'\b', u'\b'}, {0x09, u'\t', u'\t'}, {0x0D, u'\r', u'\r'}, {0x1B, u'\x1B', u'\x1B'}, {0x20, u' ', u' '},
    {0xBA, u';', u':'},   {0xBB, u'=', u'+'},   {0xBC, u',', u'<'},   {0xBD, u'-', u'_'},       {0xBE, u'.', u'>'},
    {0xBF, u'/', u'?'},   {0xC0, u'`', u'~'},   {0xDB, u'[', u'{'},   {0xDC, u'\\', u'|'},      {0xDD, u']', u'}'},
    {0xDE, u'\'', u'"'},  {0x30, u'0', u')'},   {0x31, u'1', u'!'},   {0x32, u'2', u'@'},       {0x33, u'3', u'#'},
    {0x34, u'4', u'$'},   {0x35, u'5', u'%'},   {0x36, u'6', u'^'},   {0x37, u'7', u'&'},       {0x38, u'8', u'*'},
    {0x39, u'9', u'('},
};

SHORT Combination(unsigned virtualKey, unsigned modifiers) {
  return static_cast<SHORT>(modifiers << 8 | virtualKey);
}

// What VkKeyScanW answers.
SHORT KeyFor(const State& state, WCHAR character) {
  if (const auto scripted = state.keyOverrides.find(character); scripted != state.keyOverrides.end()) {
    return scripted->second;
  }
  if (character >= u'a' && character <= u'z') {
    return Combination(character - u'a' + 'A', 0);
  }
  if (character >= u'A' && character <= u'Z') {
    return Combination(character, kShift);
  }
  for (const LayoutKey& key : kKeys) {
    if (key.plain == character || key.shifted == character) {
      return Combination(key.virtualKey, key.plain == character ? 0 : kShift);
    }
  }
  if (character == u'\n') {
    return Combination(0x0D, kControl);
  }
  if (character >= 1 && character <= 26) {
    return Combination(character - 1u + 'A', kControl);
  }
  return -1;
}

WCHAR CharacterOfLayout(WORD virtualKey, unsigned modifiers) {
  const bool isLetter = virtualKey >= 'A' && virtualKey <= 'Z';
  if (modifiers == kControl) {
    return static_cast<WCHAR>(isLetter ? virtualKey - 'A' + 1 : 0);
  }
  if (modifiers > kShift) {
    return 0;
  }
  if (isLetter) {
    return static_cast<WCHAR>(modifiers == kShift ? virtualKey : virtualKey - 'A' + 'a');
  }
  const auto* const key = std::find_if(std::begin(kKeys), std::end(kKeys),
                                       [&](const LayoutKey& each) { return each.virtualKey == virtualKey; });
  return key == std::end(kKeys) ? WCHAR{0} : modifiers == kShift ? key->shifted : key->plain;
}

void ReceiveKey(State& state, HWND window, UINT message, WPARAM key) {
  if (!state.tracing) {
    return;
  }
  state.keyMessages.push_back({window, message, key});
  const char* const name = message == kKeyDown         ? "WM_KEYDOWN"
                           : message == kKeyUp         ? "WM_KEYUP"
                           : message == kSystemKeyDown ? "WM_SYSKEYDOWN"
                           : message == kSystemKeyUp   ? "WM_SYSKEYUP"
                                                       : "WM_CHAR";
  state.Note(name, "key=", static_cast<std::int64_t>(key));
}

}  // namespace

unsigned State::Modifiers() const {
  return (keyDown[VK_SHIFT] ? kShift : 0) | (keyDown[VK_CONTROL] ? kControl : 0) | (keyDown[VK_MENU] ? kAlt : 0);
}

WCHAR State::CharacterOf(WORD virtualKey, unsigned modifiers) const {
  for (const auto& [character, key] : keyOverrides) {
    if (key == Combination(virtualKey, modifiers)) {
      return character;
    }
  }
  return CharacterOfLayout(virtualKey, modifiers);
}

void State::Key(WORD virtualKey, bool down, bool synthesized) {
  keyDown[virtualKey & 0xFF] = down;
  if (synthesized) {
    synthesizedDown[virtualKey & 0xFF] = down;
  }
  const HWND receiver = focus != nullptr ? focus : foreground;
  Node* const node = FindWindow(receiver);
  if (node == nullptr) {
    return;
  }
  const unsigned modifiers = Modifiers() | (virtualKey == VK_MENU ? kAlt : 0);
  const bool isSystem = (modifiers & kAlt) != 0 && (modifiers & kControl) == 0;
  if (!down) {
    return ReceiveKey(*this, receiver, isSystem ? kSystemKeyUp : kKeyUp, virtualKey);
  }
  ReceiveKey(*this, receiver, isSystem ? kSystemKeyDown : kKeyDown, virtualKey);
  if (isSystem) {
    return;
  }
  if (const WCHAR typed = CharacterOf(virtualKey, modifiers); typed != 0) {
    ReceiveKey(*this, receiver, kCharacter, typed);
  }
  if (node->window.behaviour == Behaviour::Edit) {
    TypeInto(*node, virtualKey);
  }
}

// ---- Scripting ----

bool Input::IsDown(int virtualKey) const {
  const std::lock_guard guard(state_->mutex);
  return state_->keyDown[virtualKey & 0xFF];
}

void User::PressKey(int virtualKey, bool down) {
  const std::lock_guard guard(state_->mutex);
  state_->Key(static_cast<WORD>(virtualKey), down, false);
}

void User::HoldEscape(double after, double milliseconds) {
  Clock clock(*state_);
  clock.After(after, [user = *this]() mutable { user.PressKey(VK_ESCAPE, true); });
  clock.After(after + milliseconds, [user = *this]() mutable { user.PressKey(VK_ESCAPE, false); });
}

void Input::Block(std::uint32_t insertedPerCall) {
  const std::lock_guard guard(state_->mutex);
  state_->insertedPerCall = insertedPerCall;
}

void Input::Accept() {
  const std::lock_guard guard(state_->mutex);
  state_->insertedPerCall.reset();
}

std::vector<std::vector<INPUT>> Input::Batches() const {
  const std::lock_guard guard(state_->mutex);
  return state_->batches;
}

std::vector<INPUT> Input::Sent() const {
  const std::lock_guard guard(state_->mutex);
  std::vector<INPUT> all;
  for (const auto& batch : state_->batches) {
    all.insert(all.end(), batch.begin(), batch.end());
  }
  return all;
}

std::vector<KeyMessage> Input::KeyMessages() const {
  const std::lock_guard guard(state_->mutex);
  return state_->keyMessages;
}

void Input::SetKey(WCHAR character, SHORT key) {
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
  }
  call->Note("SendInput", "count=", count, " inserted=", inserted);
  for (const INPUT& input : std::vector(inputs, inputs + inserted)) {
    if (input.type == INPUT_KEYBOARD) {
      call->Key(input.ki.wVk, (input.ki.dwFlags & KEYEVENTF_KEYUP) == 0, true);
      continue;
    }
    // Without MOUSEEVENTF_MOVE, which is not answered here, the pointer stays where it is.
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
  return call.Fails() ? SHORT{-1} : KeyFor(*call, character);
}

SHORT GetAsyncKeyState(int virtualKey) {
  STANDIN_CALL(GetAsyncKeyState);
  return !call.Fails() && call->keyDown[virtualKey & 0xFF] ? static_cast<SHORT>(0x8000) : SHORT{0};
}

}  // extern "C"
