#include "wine_automation/visit.h"

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "wine_automation/locked.h"

namespace wine_automation {

// Memory that other processes open by its name.
struct Section {
  std::uint64_t number = 0;
  HANDLE handle = nullptr;
  void* memory = nullptr;

  Section() = default;
  Section(const Section&) = delete;
  Section& operator=(const Section&) = delete;
  ~Section() {
    if (memory != nullptr) {
      UnmapViewOfFile(memory);
    }
    if (handle != nullptr) {
      CloseHandle(handle);
    }
  }
};

namespace {

constexpr LRESULT kVisited = 0x4b56;
constexpr UINT kVisitMilliseconds = 1000;

// At the beginning of a section.
struct Call {
  // From the beginning of this library, which may lie elsewhere in the other process.
  std::uintptr_t function;
};
constexpr std::size_t kCallBytes = 64;

std::wstring NameOf(std::uint64_t number) {
  return L"korvane-wine-automation-" + std::to_wstring(number);
}

HMODULE ThisModule() {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCWSTR>(&ThisModule), &module);
  return module;
}

std::uintptr_t Start() {
  return reinterpret_cast<std::uintptr_t>(ThisModule());
}

UINT VisitMessage() {
  static const UINT message = RegisterWindowMessageW(L"korvane-wine-automation-visit");
  return message;
}

// ---- On the side that asks ----

SRWLOCK sparesLock = SRWLOCK_INIT;
std::unique_ptr<Section> spare;
std::uint64_t lastNumber = 0;

std::unique_ptr<Section> NewSection() {
  auto section = std::make_unique<Section>();
  {
    const Locked locked(sparesLock);
    if (spare != nullptr) {
      return std::move(spare);
    }
    section->number = (static_cast<std::uint64_t>(GetCurrentProcessId()) << 32) | ++lastNumber;
  }
  section->handle = CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, kCallBytes + kSheetBytes,
                                       NameOf(section->number).c_str());
  if (section->handle != nullptr) {
    section->memory = MapViewOfFile(section->handle, FILE_MAP_WRITE, 0, 0, 0);
  }
  return section;
}

void KeepForNext(std::unique_ptr<Section> section) {
  const Locked locked(sparesLock);
  spare.swap(section);
}

class Hook {
 public:
  Hook(HOOKPROC procedure, DWORD thread) : hook_(SetWindowsHookExW(WH_CALLWNDPROC, procedure, ThisModule(), thread)) {}
  ~Hook() {
    if (hook_ != nullptr) {
      UnhookWindowsHookEx(hook_);
    }
  }
  Hook(const Hook&) = delete;
  Hook& operator=(const Hook&) = delete;

  bool IsSet() const {
    return hook_ != nullptr;
  }

 private:
  const HHOOK hook_;
};

// ---- In the process of the window ----

SRWLOCK openedLock = SRWLOCK_INIT;
// The one that was asked in last, for as long as nobody asks in another.
std::shared_ptr<const Section> opened;

std::shared_ptr<const Section> Open(std::uint64_t number) {
  const Locked locked(openedLock);
  if (opened == nullptr || opened->number != number) {
    const auto section = std::make_shared<Section>();
    section->number = number;
    section->handle = OpenFileMappingW(FILE_MAP_WRITE, FALSE, NameOf(number).c_str());
    if (section->handle == nullptr) {
      return nullptr;
    }
    section->memory = MapViewOfFile(section->handle, FILE_MAP_WRITE, 0, 0, 0);
    if (section->memory == nullptr) {
      return nullptr;
    }
    opened = section;
  }
  return opened;
}

// What has been numbered here must keep its number: the library stays for the life of the process.
void Stay() {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                     reinterpret_cast<LPCWSTR>(&ThisModule), &module);
}

void RunIn(void* memory) {
  const auto function = reinterpret_cast<void (*)(void*)>(Start() + static_cast<Call*>(memory)->function);
  function(static_cast<char*>(memory) + kCallBytes);
}

LRESULT CALLBACK Visited(int code, WPARAM wParam, LPARAM lParam) noexcept {
  const auto& message = *reinterpret_cast<const CWPSTRUCT*>(lParam);
  if (code == HC_ACTION && message.message == VisitMessage()) {
    try {
      Stay();
      if (const auto section = Open(message.wParam); section != nullptr) {
        RunIn(section->memory);
        ReplyMessage(kVisited);
      }
    } catch (...) {
      // Memory ran out here: the visitor learns that nobody answered.
    }
  }
  return CallNextHookEx(nullptr, code, wParam, lParam);
}

}  // namespace

Visit::Visit() : section_(NewSection().release()) {}

Visit::~Visit() {
  std::unique_ptr<Section> section(section_);
  if (Memory() != nullptr) {
    KeepForNext(std::move(section));
  }
}

void* Visit::Memory() const {
  return section_ == nullptr || section_->memory == nullptr ? nullptr
                                                            : static_cast<char*>(section_->memory) + kCallBytes;
}

bool Visit::Run(HWND window, void (*function)(void* memory)) {
  DWORD process = 0;
  const DWORD thread = GetWindowThreadProcessId(window, &process);
  if (thread == 0) {
    return false;
  }
  if (thread == GetCurrentThreadId()) {
    function(Memory());
    return true;
  }
  static_cast<Call*>(section_->memory)->function = reinterpret_cast<std::uintptr_t>(function) - Start();
  const Hook hook(Visited, thread);
  DWORD_PTR answer = 0;
  if (hook.IsSet() && SendMessageTimeoutW(window, VisitMessage(), section_->number, 0, SMTO_ABORTIFHUNG,
                                          kVisitMilliseconds, &answer) != 0) {
    return static_cast<LRESULT>(answer) == kVisited;
  }
  // It may answer later: nothing else may stand there then.
  delete std::exchange(section_, nullptr);
  return false;
}

void FreeVisits() {
  const Locked locked(sparesLock);
  spare.reset();
}

}  // namespace wine_automation
