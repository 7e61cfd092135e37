// The model behind the scripted desktop. Everything is guarded by one recursive mutex, which is never held while a
// thread sleeps or waits.
#pragma once

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <set>
#include <thread>
#include <unordered_map>
#include <utility>

#include "standin/desktop/desktop.h"
#include "standin/uia/tree.h"

namespace standin {

using Nanoseconds = std::int64_t;
inline constexpr Nanoseconds kNever = INT64_MAX;
inline constexpr double kNanosecondsPerMillisecond = 1e6;

// ---- Threads and clock ----

struct Thread {
  DWORD id = 0;
  std::thread runner;
  LPTHREAD_START_ROUTINE start = nullptr;
  LPVOID parameter = nullptr;
  bool ended = false;
  bool terminated = false;  // by TerminateThread; ends at its next wait
  int handles = 0;

  // While it waits: until the clock shows `wakeAt` or `ready` says so.
  bool waiting = false;
  Nanoseconds wakeAt = kNever;
  std::function<bool()> ready;
  std::string waitsFor;

  // Object model
  int comInitializations = 0;
  bool comMultithreaded = false;

  // Messages
  std::deque<MSG> messages;
  std::optional<int> quit;
  bool inGetMessage = false;
  std::set<DWORD> attachedTo;
};

struct ScheduledAction {
  Nanoseconds at;
  std::uint64_t order;
  std::function<void()> run;
};

// ---- Windows and elements ----

struct PropertyOverride {
  enum class Kind { String, NullString, Unsupported, Failure } kind;
  Text text;
  HRESULT result = S_OK;
};

struct Node {
  Element id = 0;
  Element parent = 0;
  std::vector<Element> children;
  bool isWindow = false;
  ElementSpec element;  // of one without a window
  WindowSpec window;
  RECT rect{};

  // Windows
  bool visible = true;
  bool minimized = false;
  std::uint64_t z = 0;
  DWORD process = 0;
  DWORD thread = 0;
  bool rectFails = false;
  bool refusesText = false;
  int presses = 0;
  int mouseDowns = 0;
  std::size_t selectionBegin = 0;
  std::size_t selectionEnd = 0;
  std::function<void()> onPress;
  std::function<void(HWND)> onEdited;
  std::map<Text, HANDLE> properties;

  // Elements
  std::map<PROPERTYID, PropertyOverride> overrides;
  std::optional<std::optional<POINT>> clickablePoint;
  bool elementRectFails = false;
  bool hiddenFromArrays = false;
  bool hiddenFromCache = false;
};

struct Process {
  Text path;
  DWORD uiThread = 0;
  bool canBeOpened = true;
};

struct Hook {
  HOOKPROC procedure;
  DWORD thread;
};

// ---- Calls ----

// One function as the gate knows it.
struct CallSite {
  explicit CallSite(const char* name);
  const char* name;
  std::uint64_t count = 0;
  bool crossProcess = false;
};

struct Faults {
  std::set<std::uint64_t> calls;  // by number of all calls
  std::uint64_t from = UINT64_MAX;
  std::map<std::string, std::set<std::uint64_t>, std::less<>> named;  // by number of that function's calls
  std::map<std::string, std::uint64_t, std::less<>> namedFrom;
  bool armed = false;
  std::uint64_t injected = 0;
};

struct CallAction {
  std::string name;
  std::uint64_t at;
  std::function<void()> run;
};

// A kernel object that a handle names.
struct KernelObject {
  enum class Kind { Thread, Event, File, Process } kind;
  std::shared_ptr<Thread> thread{};
  std::shared_ptr<bool> set{};  // of an event
  int file = -1;
  DWORD process = 0;
};

struct Desktop::State final : uia::Tree {
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

  // ---- Clock and threads (clock.cpp) ----
  Nanoseconds Now() const;
  Thread& Self();
  // Waits until `ready` or the deadline; true when ready. Called with the mutex held exactly once.
  bool Wait(Nanoseconds deadline, std::function<bool()> ready, const char* waitsFor);
  void MoveClock(Nanoseconds duration);
  void RunDueActions();
  void StartThread(const std::shared_ptr<Thread>& thread);
  void Schedule(Nanoseconds at, std::function<void()> run);

  // ---- Windows (windows.cpp) ----
  Node* Find(Element element);
  Node* FindWindow(HWND window);
  Node& MakeWindow(const WindowSpec& described, DWORD process, DWORD thread);
  Element HitTest(Element within, POINT point, bool windowsOnly);
  bool IsShown(const Node& node);
  HWND TopLevelOf(HWND window);
  void Activate(HWND window);
  void Remove(Element element);
  void Shift(Element element, LONG dx, LONG dy);

  // ---- Edits and keys (edit_control.cpp, keyboard.cpp, mouse.cpp) ----
  void ReplaceSelection(Node& edit, TextView text);
  void SetEditText(Node& edit, TextView text);
  void Edited(Node& edit);
  void Key(WORD virtualKey, bool down, bool synthesized);
  void TypeInto(Node& edit, WORD virtualKey);
  void MouseButton(bool down, bool synthesized);
  bool PassMouseHooks(UINT message);
  SHORT KeyFor(WCHAR character) const;
  Text CharactersOf(WORD virtualKey) const;

  // ---- Clipboard and memory (clipboard.cpp, memory.cpp) ----
  void PutOnClipboard(UINT format, std::vector<std::uint8_t> bytes);
  std::optional<Text> TextOnClipboard() const;
  bool ClipboardHeldByOther() const;

  // ---- Ledger ----
  void Give(const void* thing, std::string kind);
  bool Take(const void* thing, std::string_view kind);  // false, and a misuse, when it was not given
  void Misuse(std::string what);
  void Note(std::string call, std::string detail);

  void Clear();

  mutable std::recursive_mutex mutex;
  std::condition_variable_any changed;
  bool virtualTime = true;
  Nanoseconds clock = 0;
  Nanoseconds realStart = 0;
  std::int64_t localStart = 0;  // file time units, local, at clock 0
  int utcOffsetMinutes = 60;
  std::int64_t tickOffset = 0;
  std::vector<ScheduledAction> scheduled;
  std::uint64_t scheduledCount = 0;
  bool runningActions = false;
  std::vector<std::shared_ptr<Thread>> threads;
  std::shared_ptr<Thread> running;  // whose turn it is in virtual time
  DWORD nextThread = 100;

  std::unordered_map<Element, Node> nodes;
  Element nextElement = 0x900000;
  std::uintptr_t nextWindow = 0x10010;
  std::uint64_t nextZ = 1;
  std::map<DWORD, Process> processes;
  DWORD nextProcess = 4000;
  HWND focus = nullptr;
  HWND foreground = nullptr;
  int foregroundRefusals = 0;
  bool attachRefused = false;

  POINT cursor{};
  bool keyDown[256] = {};
  bool synthesizedDown[256] = {};
  bool buttonDown = false;
  bool synthesizedButtonDown = false;
  HWND pressed = nullptr;
  std::optional<UINT> insertedPerCall;
  std::vector<std::vector<INPUT>> batches;
  std::vector<KeyMessage> keyMessages;
  std::map<WCHAR, SHORT> keyOverrides;
  Nanoseconds pasteDelay = 0;

  std::map<HHOOK, Hook> hooks;
  std::uintptr_t nextHook = 0x5000;
  std::string cursorShape = "arrow";

  struct ClipboardBlock {
    UINT format;
    HGLOBAL block;
  };
  std::vector<ClipboardBlock> clipboard;
  DWORD clipboardThread = 0;  // of ours that holds it
  Nanoseconds clipboardHeldUntil = 0;
  std::map<Text, UINT> formats;
  struct GlobalMemory {
    std::unique_ptr<std::uint8_t[]> bytes;
    std::size_t size = 0;
    int locks = 0;
    bool systemOwned = false;
  };
  std::map<HGLOBAL, GlobalMemory> globals;
  std::uintptr_t nextGlobal = 0x70000000;

  std::optional<std::string> localAppData;
  std::string ownLocalAppData;  // the temporary one
  std::map<HANDLE, KernelObject> handles;
  std::uintptr_t nextHandle = 0x200;
  thread_local static DWORD lastError;

  std::unordered_map<const void*, std::string> given;
  std::vector<std::string> misuses;
  std::vector<TraceEntry> trace;
  bool tracing = true;

  std::uint64_t calls = 0;
  std::uint64_t crossProcessCalls = 0;
  Nanoseconds crossProcessCost = 0;
  std::vector<const CallSite*> sequence;
  Faults faults;
  std::map<std::string, HRESULT, std::less<>> failureResults;
  std::vector<CallAction> callActions;
};

inline Desktop::State& TheState() {
  return TheDesktop().Internals();
}

// One platform call under way: counted, perhaps to fail, and the mutex held until its end.
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
  Desktop::State* operator->() const {
    return &state_;
  }
  Desktop::State& State() const {
    return state_;
  }

 private:
  Desktop::State& state_;
  CallSite& site_;
  bool fails_;
};

// At the top of a platform function: `CALL(Sleep)` declares `call`.
#define STANDIN_CALL(function)         \
  static CallSite callSite(#function); \
  const Call call(callSite)
#define STANDIN_COUNTED_CALL(function) \
  static CallSite callSite(#function); \
  const Call call(callSite, Call::Can::OnlyCount)

inline Nanoseconds FromMilliseconds(double milliseconds) {
  return static_cast<Nanoseconds>(milliseconds * kNanosecondsPerMillisecond);
}

inline Element ElementFor(HWND window) {
  return reinterpret_cast<Element>(window);
}

inline HWND WindowFor(Element element) {
  return reinterpret_cast<HWND>(element);
}

inline bool Contains(const RECT& rect, POINT point) {
  return point.x >= rect.left && point.x < rect.right && point.y >= rect.top && point.y < rect.bottom;
}

inline constexpr Element kRootElement = 0x10;

}  // namespace standin
