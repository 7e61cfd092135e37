#include "wine_automation/other_process.h"

#include <algorithm>

namespace wine_automation {
namespace {

constexpr UINT kAnswerMilliseconds = 1000;

HANDLE OpenProcessOf(HWND window) {
  DWORD id = 0;
  GetWindowThreadProcessId(window, &id);
  return OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE | PROCESS_QUERY_INFORMATION, FALSE, id);
}

bool Is32Bit(HANDLE process) {
  BOOL is32Bit = FALSE;
  return !IsWow64Process(process, &is32Bit) || is32Bit;
}

}  // namespace

std::optional<LONG_PTR> Ask(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  DWORD_PTR answer = 0;
  if (SendMessageTimeoutW(window, message, wParam, lParam, SMTO_ABORTIFHUNG, kAnswerMilliseconds, &answer) == 0) {
    return std::nullopt;
  }
  return static_cast<LONG_PTR>(answer);
}

OtherMemory::OtherMemory(HWND window, std::size_t size) : window_(window), process_(OpenProcessOf(window)) {
  if (process_ != nullptr && !Is32Bit(process_)) {
    block_ = VirtualAllocEx(process_, nullptr, size, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
  }
}

OtherMemory::~OtherMemory() {
  if (block_ != nullptr) {
    VirtualFreeEx(process_, block_, 0, MEM_RELEASE);
  }
  if (process_ != nullptr) {
    CloseHandle(process_);
  }
}

bool OtherMemory::Write(const void* data, std::size_t size) {
  return block_ != nullptr && WriteProcessMemory(process_, block_, data, size, nullptr);
}

bool OtherMemory::Read(void* data, std::size_t size) const {
  return block_ != nullptr && ReadProcessMemory(process_, block_, data, size, nullptr);
}

std::optional<uia::Text> OtherMemory::ReadText(const void* address, std::size_t longest) const {
  constexpr std::size_t kPage = 4096;
  uia::Text text(longest, L'\0');
  std::size_t length = 0;
  // Page by page: what follows the text's end need not be readable.
  while (length < longest) {
    const char* from = static_cast<const char*>(address) + length * sizeof(WCHAR);
    const std::size_t toPageEnd = kPage - reinterpret_cast<std::uintptr_t>(from) % kPage;
    const std::size_t count = std::min(std::max<std::size_t>(1, toPageEnd / sizeof(WCHAR)), longest - length);
    if (!ReadProcessMemory(process_, from, text.data() + length, count * sizeof(WCHAR), nullptr)) {
      return std::nullopt;
    }
    const std::size_t end = text.find(L'\0', length);
    length += count;
    if (end < length) {
      text.resize(end);
      return text;
    }
  }
  return text;
}

std::optional<LONG_PTR> OtherMemory::Ask(UINT message, WPARAM wParam) {
  if (block_ == nullptr) {
    return std::nullopt;
  }
  const std::optional<LONG_PTR> answer =
      wine_automation::Ask(window_, message, wParam, reinterpret_cast<LPARAM>(block_));
  if (!answer) {
    block_ = nullptr;
  }
  return answer;
}

void* OtherMemory::At(std::size_t offset) const {
  return static_cast<char*>(block_) + offset;
}

}  // namespace wine_automation
