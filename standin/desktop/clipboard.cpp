// The clipboard: who holds it open, and what lies on it in blocks that belong to the system.
#include <algorithm>
#include <cstring>

#include "standin/desktop/state.h"

namespace standin {

namespace {

constexpr UINT kFirstRegisteredFormat = 0xC000;

void Empty(State& state) {
  for (const ClipboardEntry& entry : state.clipboard) {
    state.globals.erase(entry.block);
  }
  state.clipboard.clear();
}

const GlobalMemory* FindBlock(const State& state, UINT format) {
  for (const ClipboardEntry& entry : state.clipboard) {
    if (entry.format == format) {
      return &state.globals.at(entry.block);
    }
  }
  return nullptr;
}

// The name under which the format was registered, "CF_UNICODETEXT", or an empty text.
std::string NameOf(const State& state, UINT format) {
  for (const auto& [name, registered] : state.formats) {
    if (registered == format) {
      return {name.begin(), name.end()};
    }
  }
  return format == CF_UNICODETEXT ? "CF_UNICODETEXT" : "";
}

// Blocks of the clipboard may not be used once it is closed. Closing it moves those whose bytes were handed out to
// other memory, so that a sanitizer reports a pointer that is still used.
void MoveBlocks(State& state) {
  for (const ClipboardEntry& entry : state.clipboard) {
    GlobalMemory& memory = state.globals.at(entry.block);
    if (std::exchange(memory.locks, 0) > 0) {
      state.Misuse("closed the clipboard with a locked block of it");
    }
    if (!std::exchange(memory.isHandedOut, false)) {
      continue;
    }
    auto moved = std::make_unique<std::uint8_t[]>(memory.size);
    std::memcpy(moved.get(), memory.bytes.get(), memory.size);
    memory.bytes = std::move(moved);
  }
}

}  // namespace

bool State::ClipboardIsFree() const {
  return clipboardThread == 0 && Now() >= clipboardHeldUntil;
}

void State::PutOnClipboard(TextView text) {
  Empty(*this);
  const HGLOBAL block = Allocate((text.size() + 1) * sizeof(WCHAR));
  GlobalMemory& memory = globals.at(block);
  memory.systemOwned = true;
  std::copy_n(Text(text).c_str(), text.size() + 1, reinterpret_cast<WCHAR*>(memory.bytes.get()));
  clipboard.push_back({CF_UNICODETEXT, block});
}

std::optional<Text> State::TextOnClipboard() const {
  const GlobalMemory* const memory = FindBlock(*this, CF_UNICODETEXT);
  if (memory == nullptr) {
    return std::nullopt;
  }
  const TextView whole(reinterpret_cast<const WCHAR*>(memory->bytes.get()), memory->size / sizeof(WCHAR));
  return Text(whole.substr(0, whole.find(u'\0')));
}

// ---- Scripting ----

void Clipboard::Hold(double milliseconds) {
  const std::lock_guard guard(state_->mutex);
  state_->clipboardHeldUntil = milliseconds < 0 ? kNever : state_->Now() + FromMilliseconds(milliseconds);
}

void Clipboard::Release() {
  const std::lock_guard guard(state_->mutex);
  state_->clipboardHeldUntil = 0;
}

void Clipboard::Set(TextView text) {
  const std::lock_guard guard(state_->mutex);
  state_->PutOnClipboard(text);
}

void Clipboard::Clear() {
  const std::lock_guard guard(state_->mutex);
  Empty(*state_);
}

std::optional<Text> Clipboard::Text() const {
  const std::lock_guard guard(state_->mutex);
  return state_->TextOnClipboard();
}

std::vector<std::uint8_t> Clipboard::Bytes(std::string_view formatName) const {
  const std::lock_guard guard(state_->mutex);
  for (const ClipboardEntry& entry : state_->clipboard) {
    if (NameOf(*state_, entry.format) == formatName) {
      const GlobalMemory& memory = state_->globals.at(entry.block);
      return {memory.bytes.get(), memory.bytes.get() + memory.size};
    }
  }
  return {};
}

std::vector<std::string> Clipboard::Formats() const {
  const std::lock_guard guard(state_->mutex);
  std::vector<std::string> names;
  for (const ClipboardEntry& entry : state_->clipboard) {
    names.push_back(NameOf(*state_, entry.format));
  }
  return names;
}

}  // namespace standin

using namespace standin;

// ---- Platform functions ----

namespace {

bool HoldsClipboard(State& state) {
  return state.clipboardThread == state.Self().id;
}

}  // namespace

extern "C" {

BOOL OpenClipboard(HWND /*owner*/) {
  STANDIN_CALL(OpenClipboard);
  if (call.Fails() || !call->ClipboardIsFree()) {
    return FALSE;
  }
  call->clipboardThread = call->Self().id;
  return TRUE;
}

BOOL CloseClipboard() {
  STANDIN_CALL(CloseClipboard);
  if (!HoldsClipboard(*call)) {
    call->Misuse("closed the clipboard without holding it");
    return FALSE;
  }
  call->clipboardThread = 0;
  MoveBlocks(*call);
  return !call.Fails();
}

BOOL EmptyClipboard() {
  STANDIN_CALL(EmptyClipboard);
  if (call.Fails() || !HoldsClipboard(*call)) {
    return FALSE;
  }
  Empty(*call);
  return TRUE;
}

HANDLE SetClipboardData(UINT format, HANDLE block) {
  STANDIN_CALL(SetClipboardData);
  const auto memory = call->globals.find(block);
  if (call.Fails() || !HoldsClipboard(*call) || memory == call->globals.end()) {
    return nullptr;
  }
  if (format == 0) {
    call->Misuse("gave the clipboard a block without a format");
    return nullptr;
  }
  if (memory->second.systemOwned || memory->second.locks > 0) {
    call->Misuse("gave the clipboard a block that is locked or not the caller's");
    return nullptr;
  }
  if (!memory->second.isMovable) {
    call->Misuse("gave the clipboard a block that is not movable");
  }
  std::erase_if(call->clipboard, [&](const ClipboardEntry& entry) {
    return entry.format == format && call->globals.erase(entry.block) > 0;
  });
  memory->second.systemOwned = true;
  call->clipboard.push_back({format, block});
  call->Note("SetClipboardData", "format=", format, " bytes=", static_cast<std::int64_t>(memory->second.size));
  return block;
}

HANDLE GetClipboardData(UINT format) {
  STANDIN_CALL(GetClipboardData);
  if (call.Fails() || !HoldsClipboard(*call)) {
    return nullptr;
  }
  for (const ClipboardEntry& entry : call->clipboard) {
    if (entry.format == format) {
      return entry.block;
    }
  }
  return nullptr;
}

UINT RegisterClipboardFormatW(const WCHAR* name) {
  STANDIN_CALL(RegisterClipboardFormatW);
  if (call.Fails()) {
    return 0;
  }
  const auto next = static_cast<UINT>(kFirstRegisteredFormat + call->formats.size());
  return call->formats.try_emplace(name, next).first->second;
}

}  // extern "C"
