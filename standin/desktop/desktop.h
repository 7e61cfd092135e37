// A desktop that a program can script: processes with windows and controls that behave, one screen, cursor, keyboard
// and clipboard, a clock, and a user who acts at set times. It answers the platform functions of src/platform/native.h.
//
// One desktop serves the whole process, as on a real machine: TheDesktop(). Reset() brings it back to an empty screen.
// All members may be called from any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/platform.h"
#include "platform/uia.h"

namespace standin {

using Text = std::u16string;
using TextView = std::u16string_view;

// ---- Windows and elements ----

enum class Behaviour {
  None,    // draws nothing, answers nothing
  Window,  // a top-level window or panel
  Label,   // its text is its Name
  Button,  // its text is its Name; a press calls onPress and counts
  Edit,    // text, caret and selection; WM_SETTEXT, EM_REPLACESEL, typed keys, Ctrl+A, Ctrl+C, Ctrl+V, Shift+Insert; a
           // press puts the caret behind the text; Value is its text
  List,    // a parent of windowless items
};

struct WindowSpec {
  Text className{};
  Text title{};           // of an Edit: its text
  RECT rect{};            // screen pixels
  HWND parent = nullptr;  // null: top-level
  HWND owner = nullptr;   // of a top-level window
  int controlId = 0;      // its AutomationId in decimal, unless 0
  Behaviour behaviour = Behaviour::Window;
  CONTROLTYPEID controlType =
      0;  // 0: by behaviour (50032 top-level, 50033 panel, 50020 label, 50000 button, 50004 edit, 50008 list)
  DWORD process = 0;       // 0: that of the parent, else a process "program.exe"
  bool readOnly = false;   // an Edit that typing and pasting do not change
  bool multiLine = false;  // an Edit that keeps line breaks; others paste up to the first one
};

struct ElementSpec {  // an element without a window
  Text className{};
  Text name{};
  Text automationId{};
  CONTROLTYPEID controlType = 50007;
  RECT rect{};
};

// Names an element, with a window or without, for as long as it exists.
using Element = std::uintptr_t;

// ---- What happened ----

// One platform call or event worth seeing, in order.
struct TraceEntry {
  std::string call;    // "SendInput", "SetCursorPos", "WM_CHAR" …
  std::string detail;  // arguments in a fixed form, for example "x=10 y=20"
};

struct KeyMessage {  // as a window received it
  HWND window;
  UINT message;  // WM_KEYDOWN, WM_KEYUP, WM_SYSKEYDOWN, WM_SYSKEYUP, WM_CHAR
  WPARAM key;
};

// ---- The call gate ----

// Whether the calling thread is inside a platform function or UI Automation method right now.
bool InsidePlatformCall();

// Every platform function and UI Automation method passes the gate under its name: "OpenClipboard",
// "IUIAutomation::ElementFromPoint". A failing call does nothing and answers as that function does when it fails; one
// that gives something back still counts as having given it back. Functions that have no way to fail only count.
class CallGate {
 public:
  std::uint64_t Count() const;                       // all calls since Reset
  std::uint64_t Count(std::string_view name) const;  // of one function
  std::vector<std::string> Sequence() const;         // every call in order, while tracing is on

  void FailNth(std::uint64_t n);      // the nth call from now, of any function, 1-based
  void FailFromNth(std::uint64_t n);  // the nth and every later one
  void FailPair(std::uint64_t first, std::uint64_t second);
  void FailNth(std::string_view name, std::uint64_t n);
  void FailFromNth(std::string_view name, std::uint64_t n);
  // What the named call answers when it fails; E_FAIL unless told. For calls that answer an HRESULT.
  void FailWith(std::string_view name, HRESULT result);
  void StopFailing();
  std::uint64_t Injected() const;  // failures since the last Fail… call

  // Time that one cross-process call takes on the desktop's clock, in milliseconds.
  void SetCrossProcessCost(double milliseconds);
  std::uint64_t CrossProcessCalls() const;  // UI Automation calls that leave the process, SendMessageW

  // Measures the machine's time that the calling thread spends in calls, beginning with nothing.
  void MeasureTime(bool on);
  double SecondsInside() const;

 private:
  friend class Desktop;
  CallGate() = default;
};

// ---- The desktop ----

class Desktop {
 public:
  Desktop();
  ~Desktop();

  // Back to an empty desktop with virtual time, English (US) layout, no faults, an empty ledger and trace. Leaks of the
  // run before are forgotten: ask Outstanding() first. Waits a second for threads made by CreateThread to end, then
  // aborts.
  void Reset();

  // --- Clock ---
  // Virtual time moves only by Sleep, waiting, call costs and Advance, and threads made by CreateThread take turns with
  // the one that reset the desktop, in a fixed order; no other thread may wait then. Real time is the machine's, and
  // threads of any kind really run together. To be changed while no thread made by CreateThread runs.
  void UseVirtualTime();
  void UseRealTime();
  double Now() const;                 // milliseconds since Reset
  void Advance(double milliseconds);  // runs what is scheduled on the way
  void SetLocalTime(const SYSTEMTIME& time);
  void SetUtcOffsetMinutes(int minutes);  // local = UTC + offset; 60 unless told
  void SetTickCount(DWORD ticks);         // what GetTickCount answers now
  // Runs `action` when the clock reaches Now() + milliseconds, on whichever thread moves it there; in real time, on a
  // thread that waits or makes a platform call then.
  void After(double milliseconds, std::function<void()> action);
  // Runs `action` right after the nth call from now of a platform function or UI Automation method.
  void AfterCall(std::string_view name, std::uint64_t nth, std::function<void()> action);

  // --- Processes and windows ---
  DWORD AddProcess(TextView executablePath);
  void ForbidOpening(DWORD process);
  HWND AddWindow(const WindowSpec& window);  // shown on top of its siblings
  Element AddElement(HWND parent, const ElementSpec& element);
  Element AddElement(Element parent, const ElementSpec& element);
  void DestroyWindow(HWND window);  // with its children
  void DestroyElement(Element element);
  void MoveWindowTo(HWND window, int x, int y);  // with its children
  void SetText(HWND window, TextView text);      // an Edit's caret goes behind it
  Text TextOf(HWND window) const;
  void SetTitle(HWND window, TextView title);
  void Minimize(HWND window);
  bool IsMinimized(HWND window) const;
  void BringToTop(HWND window);  // above its siblings, without activating it
  void SetVisible(HWND window, bool visible);
  void OnPress(HWND button, std::function<void()> action);
  int Presses(HWND button) const;
  int MouseDowns(HWND window) const;  // left-button presses that reached this window
  // Runs when an Edit's text was changed by input or a message, not by SetText: a field that reformats what it is
  // given.
  void OnEdited(HWND edit, std::function<void(HWND)> action);
  void SetSelection(HWND edit, std::size_t begin, std::size_t end);
  HWND Focus() const;
  HWND Foreground() const;
  void SetForeground(HWND window);   // as a user's click would
  void RefuseForeground(int times);  // the next SetForegroundWindow calls fail; -1: all
  void RefuseThreadAttach(bool refuse);
  // A window made here by the calling thread itself (the host's own).
  HWND AddHostWindow(const WindowSpec& window);
  void FailWindowRect(HWND window);  // GetWindowRect fails for it though it exists
  void RefuseText(HWND edit);        // WM_SETTEXT and EM_REPLACESEL answer 0 and change nothing

  // --- Elements ---
  Element ElementOf(HWND window) const;
  Element RootElement() const;
  RECT RectOf(Element element) const;
  std::vector<Element> ChildrenOf(Element element) const;
  void SetProperty(Element element, PROPERTYID property, TextView text);
  void SetNullString(Element element, PROPERTYID property);                          // succeeds with a null string
  void SetUnsupported(Element element, PROPERTYID property);                         // succeeds without a string
  void FailProperty(Element element, PROPERTYID property, HRESULT result = E_FAIL);  // 30020 the window handle
  void SetClickablePoint(Element element, std::optional<POINT> point);               // nullopt: GetClickablePoint fails
  void FailRectangle(Element element);
  void HideFromArrays(Element element);  // arrays count it but do not hand it out
  void HideFromCache(Element element);   // its cached properties cannot be read

  // --- Input ---
  void SetCursor(int x, int y);
  POINT Cursor() const;
  bool IsDown(int virtualKey) const;
  void PressKey(int virtualKey, bool down);  // the user's own keyboard
  void HoldEscape(double after, double milliseconds);
  void ClickAsUser(int x, int y);                  // passes the low-level hooks of threads that wait for messages
  void BlockInput(std::uint32_t insertedPerCall);  // SendInput inserts at most so many records of each call
  void AcceptInput();
  std::vector<INPUT> SentInput() const;  // every record of SendInput, in order
  std::vector<std::vector<INPUT>> InputBatches() const;
  std::vector<KeyMessage> KeyMessages() const;
  void SetKey(WCHAR character, SHORT key);  // what VkKeyScanW answers; the US layout otherwise

  void DelayPaste(double milliseconds);  // a pasted text shows so much later

  // --- Object model ---
  void InitializeComMultithreaded();  // the calling thread is in the other threading model already
  void UninitializeCom();             // takes that back

  // --- Clipboard ---
  void HoldClipboard(double milliseconds);  // another program keeps it open so long; negative: until ReleaseClipboard
  void ReleaseClipboard();
  void SetClipboard(TextView text);  // put there by another program
  void ClearClipboard();
  std::optional<Text> ClipboardText() const;
  std::vector<std::uint8_t> ClipboardBytes(
      std::string_view formatName) const;  // "CF_UNICODETEXT", "HTML Format"; whole block
  std::vector<std::string> ClipboardFormats() const;

  // --- Files ---
  // Windows paths given to CreateFileW and CreateDirectoryW are used as paths of this machine, backslashes as slashes.
  void SetLocalAppData(
      std::optional<std::string> folder);  // nullopt: SHGetKnownFolderPath fails; a temporary one unless told

  // --- Messages and hooks ---
  // To the thread that waits for messages, else to the calling one.
  void PostMessageToThread(UINT message);
  void PostQuit(int code);
  bool QuitPending() const;
  int HookCount() const;
  std::string CursorShape() const;  // "arrow", "cross", "none"

  // --- What happened ---
  CallGate& Gate();
  std::vector<TraceEntry> Trace() const;
  void ClearTrace();
  void SetTracing(bool on);  // traces, sequences and records of input; on after Reset

  // --- Ledger ---
  // One line for each thing handed out and not given back: references by interface, BSTRs, VARIANTs, task and global
  // memory, clipboard holds, hooks, window properties, handles, COM initialisations, attached input queues, keys and
  // buttons left down by SendInput. Empty when nothing is outstanding.
  std::vector<std::string> Outstanding() const;
  // Releases of what was not handed out, double closes, frees of unknown blocks: one line each.
  std::vector<std::string> Misuses() const;

  struct State;
  State& Internals() {
    return *state_;
  }

 private:
  std::unique_ptr<State> state_;
  CallGate gate_;
};

Desktop& TheDesktop();

}  // namespace standin
