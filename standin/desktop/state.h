// The state of the desktop, the mutex that guards it, and the functions that the files of this folder share.
#pragma once

#include <condition_variable>
#include <mutex>

#include "standin/desktop/model.h"
#include "standin/uia/tree.h"

namespace standin {

// A recursive mutex that a thread can release completely, however often it has locked it, and lock as often again.
class ModelMutex {
 public:
  void lock() {
    mutex_.lock();
    ++depth_;
  }
  void unlock() {
    --depth_;
    mutex_.unlock();
  }

  class Whole {
   public:
    explicit Whole(ModelMutex& mutex) : mutex_(mutex) {}
    void unlock() {
      depth_ = mutex_.depth_;
      for (int i = 0; i < depth_; ++i) {
        mutex_.unlock();
      }
    }
    void lock() {
      for (int i = 0; i < depth_; ++i) {
        mutex_.lock();
      }
    }

   private:
    ModelMutex& mutex_;
    int depth_ = 0;
  };

 private:
  std::recursive_mutex mutex_;
  int depth_ = 0;
};

// The mutex is never held while a thread sleeps, waits, or runs code of the script or the library.
struct State final : Model, uia::Tree {
  // ---- The abstract tree over the model ----
  uia::Node Root() override;
  bool Exists(uia::Node node) override;
  uia::Node Parent(uia::Node node) override;
  std::vector<uia::Node> Children(uia::Node node) override;
  uia::Node At(POINT point) override;
  uia::Node OfWindow(HWND window) override;
  HWND WindowOf(uia::Node node) override;
  uia::PropertyValue Property(uia::Node node, PROPERTYID property) override;
  HRESULT Rectangle(uia::Node node, RECT* rect) override;
  HRESULT ClickablePoint(uia::Node node, POINT* point, BOOL* gotClickable) override;
  HRESULT Enter(const char* method) override;
  void Leave() override;
  void Made(const void* object, const char* interfaceName) override;
  void Destroyed(const void* object) override;
  BSTR NewString(uia::TextView text) override;

  // ---- Clock (clock.cpp) ----
  Nanoseconds Now() const;
  // Until `ready` or the deadline; true when ready.
  bool Wait(Nanoseconds deadline, const std::function<bool()>& ready, const char* what);
  void PassTurn(const Thread& from);
  void MoveClock(Nanoseconds duration);
  void Schedule(Nanoseconds at, std::function<void()> run);
  void RunDueActions();

  // ---- Threads (threads.cpp) ----
  Thread& Self();
  std::shared_ptr<Thread> FindThread(DWORD id);
  bool IsThread(DWORD id);  // also one of another process
  HANDLE StartThread(LPTHREAD_START_ROUTINE start, LPVOID parameter, DWORD* id);
  void ForgetThreadsThatAreOver();
  [[noreturn]] void EndSelf();
  // Waits for the end of all threads that CreateThread made; false when one does not end by itself.
  bool JoinThreads();
  void TerminateThreads();

  // ---- Windows (windows.cpp, focus.cpp) ----
  Node* Find(Element element);
  Node* FindWindow(HWND window);
  Node& MakeWindow(const WindowSpec& described, DWORD process, DWORD thread);
  DWORD MakeProcess(TextView path);
  Element HitTest(Element within, POINT point, bool windowsOnly);
  HWND TopLevelOf(HWND window);
  void Raise(HWND topLevel);
  void Activate(HWND window);
  void GiveFocus(HWND window);
  void Remove(Element element);

  // ---- Input (edit_control.cpp, keyboard.cpp, mouse.cpp, messages.cpp) ----
  void ReplaceSelection(Node& edit, TextView text);
  void TypeInto(Node& edit, WORD virtualKey);
  void Edited(Node& edit);
  unsigned Modifiers() const;  // those that are down, as VkKeyScanW numbers them
  WCHAR CharacterOf(WORD virtualKey,
                    unsigned modifiers) const;  // 0 when the key types none
  void Key(WORD virtualKey, bool down, bool synthesized);
  void MouseButton(bool down, bool synthesized);
  bool HooksSwallow(UINT message);

  // ---- Clipboard and memory (clipboard.cpp, memory.cpp) ----
  bool ClipboardIsFree() const;
  void PutOnClipboard(TextView text);
  std::optional<Text> TextOnClipboard() const;
  HGLOBAL Allocate(SIZE_T size);
  LPVOID AllocateForTask(SIZE_T size);

  // ---- Kernel objects (files.cpp) ----
  HANDLE MakeHandle(KernelObject object);
  void Close(const KernelObject& object);

  // ---- Gate (call_gate.cpp) ----
  bool FailsByName(const CallSite& site) const;

  // ---- Ledger and trace (ledger.cpp) ----
  void Give(const void* thing, const char* kind);
  bool Take(const void* thing,
            std::string_view kind);  // false, and a misuse, when it was not given
  void Misuse(std::string what);
  template <class... Parts>
  void Note(const char* call, const Parts&... parts);

  void Reset();

  mutable ModelMutex mutex;
  std::condition_variable_any changed;

  // A reset does not start these again, so that a handle from before it never equals a new one.
  DWORD nextThread = 100;
  DWORD nextProcess = 4000;
  Element nextElement = 0x900000;
  std::uintptr_t nextWindow = 0x10010;
  std::uint64_t nextZ = 1;
  std::uintptr_t nextHandle = 0x200;
  std::uintptr_t nextHook = 0x5000;
  std::uintptr_t nextGlobal = 0x70000000;
  std::map<Text, UINT, std::less<>> formats;
  std::string ownLocalAppData;  // a temporary folder
};

inline State& TheState() {
  return TheDesktop().Internals();
}

void ResetCallCounts();
void SetLastError(DWORD code);

// ---- One platform call under way ----

// Counts the call, decides whether it fails, and holds the mutex until it ends.
class Call {
 public:
  enum class Can { Fail, OnlyCount };
  explicit Call(CallSite& site, Can can = Can::Fail);
  ~Call();
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  // Whether the gate makes it fail; then it must do nothing else.
  bool Fails() const {
    return fails_;
  }
  HRESULT Failure() const;
  State* operator->() const {
    return &state_;
  }
  State& operator*() const {
    return state_;
  }

 private:
  State& state_;
  CallSite& site_;
  bool fails_ = false;
};

// At the top of a platform function: declares `call`.
#define STANDIN_CALL(function)         \
  static CallSite callSite(#function); \
  const Call call(callSite)
// The same for a function that has no way to fail.
#define STANDIN_COUNTED_CALL(function) \
  static CallSite callSite(#function); \
  const Call call(callSite, Call::Can::OnlyCount)

// Releases the mutex, which the caller holds, while the desktop calls other code: a script's, which counts as part of
// the platform call that is running, or the library's, which does not.
class CallOut {
 public:
  enum class To { Script, Library };
  CallOut(State& state, To to);
  ~CallOut();
  CallOut(const CallOut&) = delete;
  CallOut& operator=(const CallOut&) = delete;

 private:
  ModelMutex::Whole whole_;
  int callDepth_;
};

// ---- Small helpers ----

inline Nanoseconds FromMilliseconds(double milliseconds) {
  return static_cast<Nanoseconds>(milliseconds * 1e6);
}

inline Element ElementFor(HWND window) {
  return reinterpret_cast<Element>(window);
}

inline HWND WindowFor(Element element) {
  return reinterpret_cast<HWND>(element);
}

inline void AppendPart(std::string& text, const char* part) {
  text += part;
}

inline void AppendPart(std::string& text, std::int64_t part) {
  text += std::to_string(part);
}

template <class... Parts>
void State::Note(const char* call, const Parts&... parts) {
  constexpr std::size_t kMostEntries = 1'000'000;
  if (!tracing || trace.size() >= kMostEntries) {
    return;
  }
  TraceEntry& entry = trace.emplace_back(TraceEntry{call, {}});
  (AppendPart(entry.detail, parts), ...);
}

}  // namespace standin
