// The clipboard, its owners, and the global memory that it takes over.
#include <cstring>

#include "standin/desktop/state.h"

namespace standin {

namespace {

constexpr UINT kFirstRegisteredFormat = 0xC000;

std::vector<std::uint8_t> TextBytes(TextView text) {
  std::vector<std::uint8_t> bytes((text.size() + 1) * sizeof(WCHAR));
  std::memcpy(bytes.data(), text.data(), text.size() * sizeof(WCHAR));
  return bytes;
}

HGLOBAL Allocate(Desktop::State& state, SIZE_T size) {
  const auto block = reinterpret_cast<HGLOBAL>(state.nextGlobal += 16);
  auto& memory = state.globals[block];
  // Exactly as large as asked for, so that a sanitizer sees the first byte beyond.
  memory.bytes = std::make_unique<std::uint8_t[]>(size);
  memory.size = size;
  return block;
}

void Empty(Desktop::State& state) {
  for (const auto& entry : state.clipboard) {
    state.globals.erase(entry.block);
  }
  state.clipboard.clear();
}

}  // namespace

bool Desktop::State::ClipboardHeldByOther() const {
  return Now() < clipboardHeldUntil;
}

void Desktop::State::PutOnClipboard(UINT format, std::vector<std::uint8_t> bytes) {
  Empty(*this);
  const HGLOBAL block = Allocate(*this, bytes.size());
  std::memcpy(globals[block].bytes.get(), bytes.data(), bytes.size());
  globals[block].systemOwned = true;
  clipboard.push_back({format, block});
}

std::optional<Text> Desktop::State::TextOnClipboard() const {
  for (const ClipboardBlock& entry : clipboard) {
    if (entry.format == CF_UNICODETEXT) {
      return Text(reinterpret_cast<const WCHAR*>(globals.at(entry.block).bytes.get()));
    }
  }
  return std::nullopt;
}

// ---- Scripting ----

void Desktop::HoldClipboard(double milliseconds) {
  const std::lock_guard guard(state_->mutex);
  state_->clipboardHeldUntil = milliseconds < 0 ? kNever : state_->Now() + FromMilliseconds(milliseconds);
}

void Desktop::ReleaseClipboard() {
  const std::lock_guard guard(state_->mutex);
  state_->clipboardHeldUntil = 0;
}

void Desktop::SetClipboard(TextView text) {
  const std::lock_guard guard(state_->mutex);
  state_->PutOnClipboard(CF_UNICODETEXT, TextBytes(text));
}

void Desktop::ClearClipboard() {
  const std::lock_guard guard(state_->mutex);
  Empty(*state_);
}

std::optional<Text> Desktop::ClipboardText() const {
  const std::lock_guard guard(state_->mutex);
  return state_->TextOnClipboard();
}

std::vector<std::uint8_t> Desktop::ClipboardBytes(std::string_view formatName) const {
  const std::lock_guard guard(state_->mutex);
  const auto registered = state_->formats.find(Text(formatName.begin(), formatName.end()));
  const UINT format = registered == state_->formats.end() ? UINT{CF_UNICODETEXT} : registered->second;
  if (registered == state_->formats.end() && formatName != "CF_UNICODETEXT") {
    return {};
  }
  for (const auto& entry : state_->clipboard) {
    if (entry.format == format) {
      const auto& memory = state_->globals.at(entry.block);
      return {memory.bytes.get(), memory.bytes.get() + memory.size};
    }
  }
  return {};
}

std::vector<std::string> Desktop::ClipboardFormats() const {
  const std::lock_guard guard(state_->mutex);
  std::vector<std::string> names;
  for (const auto& entry : state_->clipboard) {
    std::string name = entry.format == CF_UNICODETEXT ? "CF_UNICODETEXT" : "";
    for (const auto& [registered, format] : state_->formats) {
      name = format == entry.format ? std::string(registered.begin(), registered.end()) : name;
    }
    names.push_back(std::move(name));
  }
  return names;
}

}  // namespace standin

using namespace standin;

// ---- Platform functions ----

extern "C" {

BOOL OpenClipboard(HWND /*owner*/) {
  STANDIN_CALL(OpenClipboard);
  if (call.Fails() || call->ClipboardHeldByOther() || call->clipboardThread != 0) {
    return FALSE;
  }
  call->clipboardThread = call->Self().id;
  return TRUE;
}

BOOL CloseClipboard() {
  STANDIN_CALL(CloseClipboard);
  if (call->clipboardThread != call->Self().id) {
    call->Misuse("closed the clipboard without holding it");
    return FALSE;
  }
  call->clipboardThread = 0;
  return !call.Fails();
}

BOOL EmptyClipboard() {
  STANDIN_CALL(EmptyClipboard);
  if (call.Fails() || call->clipboardThread != call->Self().id) {
    return FALSE;
  }
  Empty(call.State());
  return TRUE;
}

HANDLE SetClipboardData(UINT format, HANDLE block) {
  STANDIN_CALL(SetClipboardData);
  const auto memory = call->globals.find(block);
  if (call.Fails() || call->clipboardThread != call->Self().id || memory == call->globals.end()) {
    return nullptr;
  }
  memory->second.systemOwned = true;
  call->clipboard.push_back({format, block});
  return block;
}

HANDLE GetClipboardData(UINT format) {
  STANDIN_CALL(GetClipboardData);
  if (call.Fails() || call->clipboardThread != call->Self().id) {
    return nullptr;
  }
  for (const auto& entry : call->clipboard) {
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

HGLOBAL GlobalAlloc(UINT /*flags*/, SIZE_T size) {
  STANDIN_CALL(GlobalAlloc);
  return call.Fails() ? nullptr : Allocate(call.State(), size);
}

LPVOID GlobalLock(HGLOBAL block) {
  STANDIN_CALL(GlobalLock);
  const auto memory = call->globals.find(block);
  if (call.Fails() || memory == call->globals.end()) {
    return nullptr;
  }
  ++memory->second.locks;
  return memory->second.bytes.get();
}

BOOL GlobalUnlock(HGLOBAL block) {
  STANDIN_CALL(GlobalUnlock);
  const auto memory = call->globals.find(block);
  if (memory == call->globals.end() || memory->second.locks == 0) {
    call->Misuse("unlocked global memory that was not locked");
    return FALSE;
  }
  return --memory->second.locks > 0 || call.Fails();
}

HGLOBAL GlobalFree(HGLOBAL block) {
  STANDIN_CALL(GlobalFree);
  const auto memory = call->globals.find(block);
  if (memory == call->globals.end() || memory->second.systemOwned) {
    call->Misuse("freed global memory of another owner");
    return block;
  }
  call->globals.erase(memory);
  return call.Fails() ? block : nullptr;
}

}  // extern "C"
