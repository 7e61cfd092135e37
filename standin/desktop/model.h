// What the scripted desktop consists of. A Model made anew is an empty desktop.
#pragma once

#include <csetjmp>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <thread>
#include <unordered_map>
#include <utility>

#include "standin/desktop/desktop.h"

namespace standin {

using Nanoseconds = std::int64_t;
inline constexpr Nanoseconds kNever = INT64_MAX;

// ---- Threads and clock ----

// What a thread waits for.
struct Waiting {
  Nanoseconds until;
  const std::function<bool()>& ready;  // empty: only the time counts
  const char* what;
};

// A hook procedure that another thread asks the hook's own thread to call.
struct HookCall {
  HOOKPROC procedure;
  WPARAM message;
  MSLLHOOKSTRUCT event;
  LRESULT result = 0;
  bool done = false;
};

struct Thread {
  DWORD id = 0;
  // In virtual time: one that CreateThread made, or the one that reset the desktop.
  bool takesTurns = false;
  const Waiting* waiting = nullptr;
  bool ended = false;

  // Made by CreateThread
  LPTHREAD_START_ROUTINE start = nullptr;
  LPVOID parameter = nullptr;
  std::thread runner;
  std::optional<Waiting> beginning;  // in virtual time: not before then
  jmp_buf top;                       // where a terminated thread goes on, at the end of its life
  bool terminated = false;
  bool over = false;  // will run no more code, neither the library's nor the desktop's

  // Object model
  int comInitializations = 0;
  DWORD comModel = 0;  // of the first of them
  bool comOfHost = false;

  // Messages and hooks
  std::deque<MSG> messages;
  std::optional<int> quit;
  bool inGetMessage = false;
  std::deque<HookCall*> hookCalls;
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
  Text text{};
  HRESULT result = S_OK;
};

struct Node {
  Element id = 0;
  Element parent = 0;
  std::vector<Element> children{};
  std::uint64_t z = 0;
  RECT rect{};

  bool isWindow = false;
  ElementSpec element{};  // of one without a window
  WindowSpec window{};

  // Windows
  bool visible = true;
  bool minimized = false;
  DWORD thread = 0;
  HWND lastFocus = nullptr;  // of a top-level window: where keys went when it was in front
  bool rectFails = false;
  bool refusesText = false;
  int presses = 0;
  int mouseDowns = 0;
  std::size_t selectionBegin = 0;
  std::size_t selectionEnd = 0;
  std::function<void()> onPress{};
  std::function<void(HWND)> onEdited{};
  std::map<Text, HANDLE, std::less<>> properties{};

  // Elements
  std::map<PROPERTYID, PropertyOverride> overrides{};
  std::optional<std::optional<POINT>> clickablePoint{};
  bool clickableDenied = false;
  bool elementRectFails = false;
  bool hiddenFromArrays = false;
  bool hiddenFromCache = false;
};

inline constexpr Element kRootElement = 0x10;

struct Process {
  Text path;
  DWORD uiThread = 0;
  bool canBeOpened = true;
};

struct Hook {
  HOOKPROC procedure;
  DWORD thread;
};

// ---- Clipboard, memory, kernel objects ----

struct GlobalMemory {
  std::unique_ptr<std::uint8_t[]> bytes{};
  std::size_t size = 0;
  bool isMovable = true;
  int locks = 0;
  bool isHandedOut = false;  // somebody may know where the bytes are
  bool systemOwned = false;
};

struct ClipboardEntry {
  UINT format;
  HGLOBAL block;
};

// The object that a handle stands for.
struct KernelObject {
  enum class Kind { Thread, Event, File, Process } kind;
  std::shared_ptr<Thread> thread{};
  std::shared_ptr<bool> set{};  // of an event
  int file = -1;
  DWORD process = 0;
};

// ---- Calls ----

// What is counted of one platform function. Made at its first call and never destroyed.
struct CallSite {
  explicit CallSite(const char* functionName);

  const char* const name;
  const bool crossProcess;
  std::uint64_t count = 0;
  CallSite* next = nullptr;
};

// Which calls are to fail: by their number among all calls, or among those of one function.
struct ArmedFaults {
  bool armed = false;
  std::set<std::uint64_t> calls{};
  std::uint64_t from = UINT64_MAX;
  std::map<std::string, std::set<std::uint64_t>, std::less<>> named{};
  std::map<std::string, std::uint64_t, std::less<>> namedFrom{};
  std::map<std::string, std::uint64_t, std::less<>> memoryEnds{};
  std::uint64_t injected = 0;
};

struct CallAction {
  std::string name;
  std::uint64_t at;
  std::function<void()> run;
};

// ---- All of it ----

struct Model {
  bool virtualTime = true;
  Nanoseconds clock = 0;
  Nanoseconds realStart = 0;
  std::int64_t localStart = 0;  // local time at clock 0, in file time units
  int utcOffsetMinutes = 60;
  std::int64_t tickOffset = 0x10000;
  std::vector<ScheduledAction> scheduled{};
  std::uint64_t scheduledCount = 0;
  bool runningActions = false;
  std::vector<std::shared_ptr<Thread>> threads{};
  Thread* running = nullptr;  // whose turn it is in virtual time

  std::unordered_map<Element, Node> nodes{};
  std::map<DWORD, Process> processes{};
  HWND focus = nullptr;
  HWND foreground = nullptr;
  int foregroundRefusals = 0;
  bool attachRefused = false;
  Nanoseconds threadDelay = 0;  // of threads made from now on

  POINT cursor{};
  bool keyDown[256] = {};
  bool synthesizedDown[256] = {};
  bool synthesizedButtonDown = false;
  HWND pressed = nullptr;
  std::optional<UINT> insertedPerCall{};
  std::vector<std::vector<INPUT>> batches{};
  std::vector<KeyMessage> keyMessages{};
  std::map<WCHAR, SHORT> keyOverrides{};
  Nanoseconds pasteDelay = 0;

  std::map<HHOOK, Hook> hooks{};
  HCURSOR cursorShape = nullptr;

  std::vector<ClipboardEntry> clipboard{};
  DWORD clipboardThread = 0;  // of ours that holds it open
  Nanoseconds clipboardHeldUntil = 0;
  std::map<HGLOBAL, GlobalMemory> globals{};

  std::optional<std::string> localAppData{};
  std::map<HANDLE, KernelObject> handles{};

  std::unordered_map<const void*, const char*> given{};
  std::vector<std::string> misuses{};
  std::vector<TraceEntry> trace{};
  bool tracing = true;

  std::uint64_t calls = 0;
  std::uint64_t crossProcessCalls = 0;
  Nanoseconds crossProcessCost = 0;
  std::vector<const CallSite*> sequence{};
  ArmedFaults faults{};
  std::map<std::string, HRESULT, std::less<>> failureResults{};
  std::vector<CallAction> callActions{};
};

}  // namespace standin
