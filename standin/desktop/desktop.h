// A desktop that a program can script: processes with windows and controls that behave, one screen, cursor, keyboard
// and clipboard, a clock, and a user who acts at set times. It answers the platform functions that the library calls.
// A test arranges the screen, says what is to go wrong and when, calls the library, and looks at the result:
//
//   auto& desktop = TheDesktop();
//   desktop.Reset();
//   const HWND form = desktop.Windows().Add({.title = u"Order", .rect = {100, 100, 500, 400}});
//   const HWND edit = desktop.Windows().Add(
//       {.rect = {120, 120, 320, 150}, .parent = form, .controlId = 7, .behaviour = Behaviour::Edit});
//   desktop.User().Click(150, 130);                          // the edit gets the focus
//   desktop.Clipboard().Hold(3);                             // another program keeps it open for 3 ms
//   EXPECT_EQ(setClipboardText(u"4711"), KORVANE_OK);
//   EXPECT_EQ(sendCtrlV(), KORVANE_OK);
//   EXPECT_EQ(desktop.Controls().TextOf(edit), u"4711");
//   desktop.Faults().FailNth("SetClipboardData", 1);         // its next call fails
//   EXPECT_EQ(setClipboardText(u"4712"), KORVANE_FAILED);
//   EXPECT_THAT(desktop.Ledger().Outstanding(), IsEmpty());  // everything was given back
//
// One desktop serves the whole process, as on a real machine: TheDesktop(). Each of its subjects is a small handle that
// may be kept and copied. All members may be called from any thread.
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
  // 0: by behaviour (50032 top-level, 50033 panel, 50020 label, 50000 button, 50004 edit, 50008 list)
  CONTROLTYPEID controlType = 0;
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

// ---- The subjects ----

struct State;

// What every subject is: a handle to the desktop.
class Subject {
 public:
  explicit Subject(State& state) : state_(&state) {}

 protected:
  State* state_;
};

// Virtual time moves only by Sleep, waiting, call costs and Advance, and threads made by CreateThread take turns with
// the one that reset the desktop, in a fixed order; no other thread may wait then. Real time is the machine's, and
// threads of any kind really run together.
class Clock : public Subject {
 public:
  using Subject::Subject;
  // To be called while no thread made by CreateThread runs.
  void UseVirtualTime();
  void UseRealTime();

  double Now() const;                 // milliseconds since Reset
  void Advance(double milliseconds);  // runs what is scheduled on the way
  // Runs `action` when the clock reaches Now() + milliseconds, on whichever thread moves it there; in real time, on a
  // thread that waits or makes a platform call then.
  void After(double milliseconds, std::function<void()> action);

  void SetLocalTime(const SYSTEMTIME& time);
  void SetUtcOffsetMinutes(int minutes);  // local = UTC + offset; 60 after Reset
  void SetTickCount(DWORD ticks);         // what GetTickCount answers now
  // From now on a thread that CreateThread makes begins this many milliseconds after its creation, as on a busy machine
  // or while another thread holds the loader's lock. In virtual time.
  void DelayNewThreads(double milliseconds);
};

// Processes and windows, and which window is in front and which one gets the keys.
class Windows : public Subject {
 public:
  using Subject::Subject;
  DWORD AddProcess(TextView executablePath);
  void ForbidOpening(DWORD process);  // OpenProcess fails for it

  HWND Add(const WindowSpec& window);      // shown on top of its siblings
  void Destroy(HWND window);               // with its children
  void MoveTo(HWND window, int x, int y);  // with its children
  void SetTitle(HWND window, TextView title);
  void SetVisible(HWND window, bool visible);
  void Minimize(HWND window);
  bool IsMinimized(HWND window) const;
  void BringToTop(HWND window);     // above its siblings, without activating it
  void FailRectangle(HWND window);  // GetWindowRect fails for it though it exists

  HWND Foreground() const;
  HWND Focus() const;
  void SetForeground(HWND window);   // as a user's click would
  void RefuseForeground(int times);  // the next SetForegroundWindow calls fail; -1: all
  void RefuseThreadAttach(bool refuse);
};

// What edits hold and buttons do.
class Controls : public Subject {
 public:
  using Subject::Subject;
  void SetText(HWND edit, TextView text);  // its caret goes behind the text
  Text TextOf(HWND window) const;
  void SetSelection(HWND edit, std::size_t begin, std::size_t end);
  void RefuseText(HWND edit);            // WM_SETTEXT and EM_REPLACESEL answer 0 and change nothing
  void DelayPaste(double milliseconds);  // a pasted text appears in an edit this long after the keys
  // Runs when the text was changed by input or a message, not by SetText: for a field that reformats what it is given.
  void OnEdited(HWND edit, std::function<void(HWND)> action);

  void OnPress(HWND button, std::function<void()> action);
  int Presses(HWND button) const;
  int MouseDowns(HWND window) const;  // left-button presses that reached this window
};

// What UI Automation shows of the windows, and elements without a window.
class Elements : public Subject {
 public:
  using Subject::Subject;
  Element Add(HWND parent, const ElementSpec& element);
  Element Add(Element parent, const ElementSpec& element);
  void Destroy(Element element);
  Element Of(HWND window) const;
  Element Root() const;
  RECT RectangleOf(Element element) const;
  std::vector<Element> ChildrenOf(Element element) const;

  void SetProperty(Element element, PROPERTYID property, TextView text);
  void SetNullString(Element element, PROPERTYID property);                          // succeeds with a null string
  void SetUnsupported(Element element, PROPERTYID property);                         // succeeds without a string
  void FailProperty(Element element, PROPERTYID property, HRESULT result = E_FAIL);  // 30020 the window handle
  void SetClickablePoint(Element element, std::optional<POINT> point);               // nullopt: GetClickablePoint fails
  void DenyClickablePoint(Element element);  // GetClickablePoint succeeds and says that there is none
  void FailRectangle(Element element);
  void HideFromArrays(Element element);  // arrays count it but do not hand it out
  void HideFromCache(Element element);   // its cached properties cannot be read
};

// The person in front of the desktop.
class User : public Subject {
 public:
  using Subject::Subject;
  void MoveCursor(int x, int y);
  POINT Cursor() const;
  std::string CursorShape() const;  // "arrow", "cross", "none"
  void Click(int x, int y);         // passes the low-level hooks of threads that wait for messages
  void PressKey(int virtualKey, bool down);
  void HoldEscape(double after, double milliseconds);
};

// Input that programs make, and the keyboard's layout: English (US) after Reset.
class Input : public Subject {
 public:
  using Subject::Subject;
  void Block(std::uint32_t insertedPerCall);  // SendInput inserts at most this many records of each call
  void Accept();                              // no longer
  std::vector<INPUT> Sent() const;            // every record of SendInput, in order
  std::vector<std::vector<INPUT>> Batches() const;
  std::vector<KeyMessage> KeyMessages() const;
  bool IsDown(int virtualKey) const;
  void SetKey(WCHAR character, SHORT key);  // what VkKeyScanW answers for the character
};

class Clipboard : public Subject {
 public:
  using Subject::Subject;
  void Hold(double milliseconds);  // another program keeps it open for so long; negative: until Release
  void Release();
  void Set(TextView text);  // put there by another program
  void Clear();
  std::optional<standin::Text> Text() const;
  // The whole block of a format: "CF_UNICODETEXT", "HTML Format".
  std::vector<std::uint8_t> Bytes(std::string_view formatName) const;
  std::vector<std::string> Formats() const;
};

// The program that the library is loaded into.
class Host : public Subject {
 public:
  using Subject::Subject;
  HWND AddWindow(const WindowSpec& window);  // made by the calling thread
  // To the thread that waits for messages, else to the calling one.
  void PostMessage(UINT message);
  void PostQuit(int code);
  bool QuitPending() const;
  int HookCount() const;
  void InitializeComMultithreaded();  // the calling thread is in the other threading model already
  void UninitializeCom();             // takes that back
  // Windows paths given to CreateFileW and CreateDirectoryW are used as paths of this machine, backslashes as slashes.
  // nullopt: SHGetKnownFolderPath fails. After Reset it is a temporary folder.
  void SetLocalAppData(std::optional<std::string> folder);
};

// Every platform function and UI Automation method is counted and traced under its name: "OpenClipboard",
// "IUIAutomation::ElementFromPoint".
class Calls : public Subject {
 public:
  using Subject::Subject;
  std::uint64_t Count() const;                       // all calls since Reset
  std::uint64_t Count(std::string_view name) const;  // of one function
  std::uint64_t CrossProcessCount() const;           // UI Automation calls that leave the process, SendMessageW
  // Runs `action` right after the nth call from now.
  void After(std::string_view name, std::uint64_t nth, std::function<void()> action);
  // Time that one cross-process call takes on the desktop's clock, in milliseconds.
  void SetCrossProcessCost(double milliseconds);

  std::vector<std::string> Sequence() const;  // every call in order, while tracing is on
  std::vector<TraceEntry> Trace() const;
  void ClearTrace();
  void SetTracing(bool on);  // of calls, their arguments, and input; on after Reset

  // Measures the machine's time that the calling thread spends in calls, beginning with nothing.
  void MeasureTime(bool on);
  double SecondsInside() const;
};

// A call that is made to fail does nothing and answers as that function does when it fails; one that gives something
// back still counts as having given it back. Functions that have no way to fail are only counted.
class Faults : public Subject {
 public:
  using Subject::Subject;
  void FailNth(std::uint64_t n);      // the nth call from now, of any function, 1-based
  void FailFromNth(std::uint64_t n);  // the nth and every later one
  void FailPair(std::uint64_t first, std::uint64_t second);
  void FailNth(std::string_view name, std::uint64_t n);
  void FailFromNth(std::string_view name, std::uint64_t n);
  // What the named call answers when it fails, in place of E_FAIL. For calls that answer an HRESULT.
  void FailWith(std::string_view name, HRESULT result);
  // Makes the nth call from now of a platform function throw std::bad_alloc, as an allocation of the library at that
  // place would. UI Automation methods never throw.
  void EndMemoryAt(std::string_view name, std::uint64_t n);
  void Stop();
  std::uint64_t Injected() const;  // failures since the last of the calls above, Stop left out
};

class Ledger : public Subject {
 public:
  using Subject::Subject;
  // One line for each thing handed out and not given back: references by interface, BSTRs, VARIANTs, task and global
  // memory, clipboard holds, hooks, window properties, handles, COM initialisations, attached input queues, keys and
  // buttons left down by SendInput. Empty when nothing is outstanding.
  std::vector<std::string> Outstanding() const;
  // Releases of what was not handed out, double closes, frees of unknown blocks: one line each.
  std::vector<std::string> Misuses() const;
};

// Whether the calling thread is inside a platform function or UI Automation method right now.
bool InsidePlatformCall();

// ---- The desktop ----

class Desktop {
 public:
  Desktop();
  ~Desktop();

  // Back to an empty screen with virtual time, no faults, an empty ledger and trace. Leaks of the run before are
  // forgotten: ask Outstanding() first. Waits a second for threads made by CreateThread to end, then aborts.
  void Reset();

  standin::Clock Clock() const;
  standin::Windows Windows() const;
  standin::Controls Controls() const;
  standin::Elements Elements() const;
  standin::User User() const;
  standin::Input Input() const;
  standin::Clipboard Clipboard() const;
  standin::Host Host() const;
  standin::Calls Calls() const;
  standin::Faults Faults() const;
  standin::Ledger Ledger() const;

  State& Internals() const {
    return *state_;
  }

 private:
  std::unique_ptr<State> state_;
};

Desktop& TheDesktop();

}  // namespace standin
