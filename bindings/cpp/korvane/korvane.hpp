/**
 * @file korvane.hpp
 * korvane for C++17: texts that free themselves, codes as an enum, a session that cleans up, windows found by name and
 * targets in them. Nothing to link but korvane and, for windows by name, user32.
 *
 * Every function of korvane.h is here under its name with a capital first letter, with the same results: a `Code`, or
 * an `Answer` where the interface answers yes or no. Nothing is thrown but std::invalid_argument, for a text with a
 * zero unit in it, which the C interface would cut off there.
 */
#ifndef KORVANE_KORVANE_HPP
#define KORVANE_KORVANE_HPP

#include <korvane/korvane.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace korvane {

using Text = std::basic_string<KorvaneChar>;
using TextView = std::basic_string_view<KorvaneChar>;
using std::chrono::milliseconds;

enum class [[nodiscard]] Code {
  Ok = KORVANE_OK,
  NotFound = KORVANE_NOT_FOUND,
  InvalidArgument = KORVANE_INVALID_ARGUMENT,
  Failed = KORVANE_FAILED,
  Cancelled = KORVANE_CANCELLED
};

enum class [[nodiscard]] Answer { Yes = 1, No = 0, Unreadable = -1, InvalidArgument = -2 };

enum class Method {
  Undecided = KORVANE_METHOD_UNDECIDED,
  AutomationId = KORVANE_METHOD_AUTOMATION_ID,
  Coordinates = KORVANE_METHOD_COORDINATES,
  TreePath = KORVANE_METHOD_TREE_PATH
};

enum class DirectPaste { Replace = 0, Insert = 1 };

inline const char* NameOf(Code code) {
  switch (code) {
    case Code::Ok:
      return "ok";
    case Code::NotFound:
      return "not found";
    case Code::InvalidArgument:
      return "invalid argument";
    case Code::Failed:
      return "failed";
    case Code::Cancelled:
      return "cancelled";
  }
  return "unknown";
}

namespace detail {

inline const KorvaneChar* Terminated(const Text& text) {
  if (text.find(KorvaneChar()) != Text::npos) {
    throw std::invalid_argument("korvane: a zero unit inside a text");
  }
  return text.c_str();
}

/** What the interface cannot hold is as long as it can. */
inline int Count(milliseconds time) {
  using Limits = std::numeric_limits<int>;
  return static_cast<int>(std::clamp<milliseconds::rep>(time.count(), Limits::min(), Limits::max()));
}

struct FreeText {
  void operator()(KorvaneChar* text) const noexcept {
    ::freeTextResult(text);
  }
};

}  // namespace detail

// ---- Texts of the library ----

/** A text that the library handed out, given back at its end; false when there is none. */
class OwnedText {
 public:
  explicit OwnedText(KorvaneChar* text = nullptr) noexcept : text_(text) {}

  explicit operator bool() const noexcept {
    return text_ != nullptr;
  }
  /** Empty without a text. */
  TextView View() const noexcept {
    return text_ ? TextView(text_.get()) : TextView();
  }

 private:
  std::unique_ptr<KorvaneChar, detail::FreeText> text_;
};

// ---- Automation context ----

inline Code InitializeAutomation() {
  return Code{::initializeAutomation()};
}
inline void CleanupAutomation() {
  ::cleanupAutomation();
}
inline Code SetTargetWindow(HWND window) {
  return Code{::setTargetWindow(window)};
}
inline void Delay(milliseconds time) {
  ::delay(detail::Count(time));
}

// ---- Log ----

/** An empty path selects the log in the user's local application data folder. */
inline void InitializeLog(const Text& path = {}) {
  ::initializeLog(detail::Terminated(path));
}
inline void LogAction(const Text& action, Code result, milliseconds duration) {
  ::logAction(detail::Terminated(action), static_cast<int>(result), detail::Count(duration));
}
inline void LogActionWithTimestamp(const Text& action, Code result, milliseconds duration,
                                   std::chrono::system_clock::time_point time) {
  const auto sinceEpoch = std::chrono::duration_cast<milliseconds>(time.time_since_epoch());
  ::logActionWithTimestamp(detail::Terminated(action), static_cast<int>(result), detail::Count(duration),
                           sinceEpoch.count());
}

/** From the log's opening to the clean-up, on one thread. */
class Session {
 public:
  explicit Session(const Text& logPath = {}) {
    InitializeLog(logPath);
    started_ = InitializeAutomation();
  }
  ~Session() {
    CleanupAutomation();
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  Code Started() const {
    return started_;
  }

 private:
  Code started_ = Code::Failed;
};

// ---- Capture and resolution ----

inline Code CaptureTargetAtPoint(TargetRecord& target, int x, int y) {
  return Code{::captureTargetAtPoint(&target, x, y)};
}
inline Code CaptureTargetAtCursor(TargetRecord& target) {
  return Code{::captureTargetAtCursor(&target)};
}
inline void Use(TargetRecord& target, Method method) {
  target.identificationMethod = static_cast<int>(method);
}
inline Code VerifyTarget(const TargetRecord& target, HWND window) {
  return Code{::verifyTarget(&target, window)};
}
inline void ClearElementCache() {
  ::clearElementCache();
}

// ---- Clicking and pasting; a null window stands for that of SetTargetWindow ----

inline Code ClickTarget(const TargetRecord& target, HWND window = nullptr) {
  return Code{::clickTarget(&target, window)};
}
inline Code EnsureWindowFocus(HWND window) {
  return Code{::ensureWindowFocus(window)};
}
inline Code PasteToTargetWithVerify(const TargetRecord& target, HWND window = nullptr) {
  return Code{::pasteToTargetWithVerify(&target, window)};
}
inline Code PasteToTargetWithVerifyEx(const TargetRecord& target, HWND window, milliseconds timeout) {
  return Code{::pasteToTargetWithVerifyEx(&target, window, detail::Count(timeout))};
}
inline Code PasteToTargetDirect(const TargetRecord& target, HWND window, const Text& text,
                                DirectPaste mode = DirectPaste::Replace) {
  return Code{::pasteToTargetDirect(&target, window, detail::Terminated(text), static_cast<int>(mode))};
}
inline Code PasteToTargetSimple(const TargetRecord& target, HWND window = nullptr) {
  return Code{::pasteToTargetSimple(&target, window)};
}

// ---- Keyboard ----

inline Code SendKey(int virtualKey) {
  return Code{::sendKey(virtualKey)};
}
inline Code SendKeySequence(const Text& text, milliseconds pause = milliseconds(1)) {
  return Code{::sendKeySequence(detail::Terminated(text), detail::Count(pause))};
}
inline Code SendAltA() {
  return Code{::sendAltA()};
}
inline Code SendAltB() {
  return Code{::sendAltB()};
}
inline Code SendAltD() {
  return Code{::sendAltD()};
}
inline Code SendAltE() {
  return Code{::sendAltE()};
}
inline Code SendAltP() {
  return Code{::sendAltP()};
}
inline Code SendAltT() {
  return Code{::sendAltT()};
}
inline Code SendAltZ() {
  return Code{::sendAltZ()};
}
inline Code SendCtrlA() {
  return Code{::sendCtrlA()};
}
inline Code SendCtrlAltN() {
  return Code{::sendCtrlAltN()};
}
inline Code SendCtrlL() {
  return Code{::sendCtrlL()};
}
inline Code SendCtrlN() {
  return Code{::sendCtrlN()};
}
inline Code SendCtrlQ() {
  return Code{::sendCtrlQ()};
}
inline Code SendCtrlS() {
  return Code{::sendCtrlS()};
}
inline Code SendCtrlShiftF3() {
  return Code{::sendCtrlShiftF3()};
}
inline Code SendCtrlV() {
  return Code{::sendCtrlV()};
}
inline Code SendShiftF2() {
  return Code{::sendShiftF2()};
}
inline Code SendShiftF4() {
  return Code{::sendShiftF4()};
}
inline Code SendShiftInsert() {
  return Code{::sendShiftInsert()};
}

// ---- Clipboard ----

inline Code SetClipboardText(const Text& text) {
  return Code{::setClipboardText(detail::Terminated(text))};
}
/** The HTML is UTF-8. */
inline Code SetClipboardTextAndHtml(const Text& text, const std::string& html) {
  if (html.find('\0') != std::string::npos) {
    throw std::invalid_argument("korvane: a zero byte inside the HTML");
  }
  return Code{::setClipboardTextAndHtml(detail::Terminated(text), html.c_str())};
}

// ---- Reading, tests and waits ----

inline OwnedText GetTargetText(const TargetRecord& target, HWND window) {
  return OwnedText(::getTargetText(&target, window));
}
inline Answer IsTargetEmpty(const TargetRecord& target, HWND window) {
  return Answer{::isTargetEmpty(&target, window)};
}
inline Answer TargetContainsText(const TargetRecord& target, HWND window, const Text& expected) {
  return Answer{::targetContainsText(&target, window, detail::Terminated(expected))};
}
inline Answer TargetContainsPartialText(const TargetRecord& target, HWND window, const Text& part) {
  return Answer{::targetContainsPartialText(&target, window, detail::Terminated(part))};
}
inline Code WaitForFieldChange(const TargetRecord& target, HWND window, const Text& previous, milliseconds timeout) {
  return Code{::waitForFieldChange(&target, window, detail::Terminated(previous), detail::Count(timeout))};
}
inline Code WaitForFieldEmpty(const TargetRecord& target, HWND window, milliseconds timeout) {
  return Code{::waitForFieldEmpty(&target, window, detail::Count(timeout))};
}
inline Code WaitForTargetContainsPartialText(const TargetRecord& target, HWND window, const Text& part,
                                             milliseconds timeout) {
  return Code{::waitForTargetContainsPartialText(&target, window, detail::Terminated(part), detail::Count(timeout))};
}
inline Code WaitForTargetContainsText(const TargetRecord& target, HWND window, const Text& expected,
                                      milliseconds timeout) {
  return Code{::waitForTargetContainsText(&target, window, detail::Terminated(expected), detail::Count(timeout))};
}
/** Code::NotFound when the texts do not match. */
inline Code VerifySimple(const Text& expected, HWND window = nullptr) {
  return Code{::verifySimple(detail::Terminated(expected), window)};
}

// ---- Windows ----

inline HWND FindWindowByClick() {
  return ::findWindowByClick();
}
inline Code GetWindowInfo(HWND window, WindowInfo& info) {
  return Code{::getWindowInfo(window, &info)};
}

// ---- Cancelling ----

inline void StartCancelMonitor() {
  ::startCancelMonitor();
}
inline void StopCancelMonitor() {
  ::stopCancelMonitor();
}
inline bool IsCancelled() {
  return ::isCancelled() != 0;
}

/** Watches the Escape key as long as it lives. */
class CancelMonitor {
 public:
  CancelMonitor() {
    StartCancelMonitor();
  }
  ~CancelMonitor() {
    StopCancelMonitor();
  }
  CancelMonitor(const CancelMonitor&) = delete;
  CancelMonitor& operator=(const CancelMonitor&) = delete;
};

// ---- Windows and targets ----

namespace detail {

extern "C" {
#if defined(_WIN32)
// As <windows.h> declares them, which may come before or after.
__declspec(dllimport) HWND __stdcall FindWindowExW(HWND, HWND, const wchar_t*, const wchar_t*);
__declspec(dllimport) int __stdcall IsWindowVisible(HWND);
__declspec(dllimport) unsigned int __stdcall GetDoubleClickTime(void);
#else
HWND FindWindowExW(HWND, HWND, const KorvaneChar*, const KorvaneChar*);
#endif
}

inline bool Visible(HWND window) {
#if defined(_WIN32)
  return IsWindowVisible(window) != 0;
#else
  return window != nullptr;
#endif
}

inline milliseconds DoubleClick() {
#if defined(_WIN32)
  return milliseconds(GetDoubleClickTime());
#else
  return milliseconds(500);
#endif
}

inline bool SameProcess(TextView one, TextView other) {
  const auto lower = [](KorvaneChar unit) {
    return unit >= 'A' && unit <= 'Z' ? static_cast<KorvaneChar>(unit + ('a' - 'A')) : unit;
  };
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [&](KorvaneChar a, KorvaneChar b) { return lower(a) == lower(b); });
}

/** The last click of this process: input is one stream for the whole desktop. */
struct LastClick {
  HWND window = nullptr;
  TargetRecord target{};
  std::chrono::steady_clock::time_point time;
};
inline LastClick g_lastClick;

/**
 * Clicks by `act`: never as the second half of a double click on the same target, nor at a remembered point, which may
 * lie beside a window that has moved.
 */
template <class Act>
Code AsOneClick(HWND window, const TargetRecord& target, Act act) {
  using std::chrono::steady_clock;
  if (g_lastClick.window == window && std::memcmp(&g_lastClick.target, &target, sizeof target) == 0) {
    const auto left = g_lastClick.time + DoubleClick() - steady_clock::now();
    if (left.count() > 0) {
      Delay(std::chrono::duration_cast<milliseconds>(left) + milliseconds(1));
    }
  }
  ClearElementCache();
  const Code code = act();
  g_lastClick = {window, target, steady_clock::now()};
  return code;
}

}  // namespace detail

/** An element in a window, found anew for each call. A copy is the same element. */
class Target {
 public:
  Target() = default;
  Target(HWND window, const TargetRecord& record) noexcept : window_(window), record_(record) {}

  /** What a host stores to find the element again. */
  const TargetRecord& Record() const noexcept {
    return record_;
  }
  /** The window that it is in. */
  HWND WindowHandle() const noexcept {
    return window_;
  }
  /** Two calls are two clicks, never a double click. */
  Code Click() const {
    return detail::AsOneClick(window_, record_, [this] { return ClickTarget(record_, window_); });
  }
  /** Puts the text on the clipboard, clicks, pastes, and waits until it shows: Code::Failed when not in time. */
  Code Paste(const korvane::Text& text, milliseconds timeout = milliseconds(3000)) const {
    const Code code = SetClipboardText(text);
    return code != Code::Ok ? code : detail::AsOneClick(window_, record_, [&] {
      return PasteToTargetWithVerifyEx(record_, window_, timeout);
    });
  }
  /** Clicks and types the text key by key. */
  Code Type(const korvane::Text& text, milliseconds pause = milliseconds(1)) const {
    const Code code = Click();
    return code != Code::Ok ? code : SendKeySequence(text, pause);
  }
  /** What it shows. */
  OwnedText Text() const {
    return GetTargetText(record_, window_);
  }
  /** Waits until it shows the text, or when `exact` nothing else: Code::Failed when time ran out. */
  Code Wait(const korvane::Text& text, milliseconds timeout = milliseconds(3000), bool exact = false) const {
    return exact ? WaitForTargetContainsText(record_, window_, text, timeout)
                 : WaitForTargetContainsPartialText(record_, window_, text, timeout);
  }
  /** Whether it shows the text, or when `exact` nothing else. */
  Answer Check(const korvane::Text& text, bool exact = false) const {
    return exact ? TargetContainsText(record_, window_, text) : TargetContainsPartialText(record_, window_, text);
  }

 private:
  HWND window_ = nullptr;
  TargetRecord record_{};
};

/** A top-level window of another program; false when it is none. */
class Window {
 public:
  Window() = default;
  explicit Window(HWND handle) noexcept : handle_(handle) {}

  explicit operator bool() const noexcept {
    return handle_ != nullptr;
  }
  HWND Handle() const noexcept {
    return handle_;
  }
  /** Brings it to the foreground. */
  Code Focus() const {
    return EnsureWindowFocus(handle_);
  }
  /** The element at a point of the screen, in pixels, with the strongest identification that it has. */
  Code TargetAt(Target& target, int x, int y) const {
    TargetRecord record{};
    const Code code = CaptureTargetAtPoint(record, x, y);
    // A path with a level that may be several elements is none.
    bool exact = record.pathLength > 0;
    for (int i = 0; i < record.pathLength; ++i) {
      exact = exact && record.controlTypes[i] > 0 && record.childIndices[i] > 0;
    }
    if (record.automationId[0] != 0) {
      Use(record, Method::AutomationId);
    } else if (exact) {
      Use(record, Method::TreePath);
    }
    target = TargetOf(record);
    return code;
  }
  /** The element under the mouse. */
  Code TargetAtCursor(Target& target) const {
    TargetRecord record{};
    const Code code = CaptureTargetAtCursor(record);
    target = TargetOf(record);
    return code;
  }
  /** The element of a record that was kept. */
  Target TargetOf(const TargetRecord& record) const {
    return {handle_, record};
  }

 private:
  HWND handle_ = nullptr;
};

/** How a window is named; what is empty may be anything. The process is a file name, in upper or lower case. */
struct WindowName {
  Text title;
  Text className;
  Text process;
};

/**
 * Waits for the only visible top-level window of that name.
 * @return Code::NotFound there is none in time; Code::InvalidArgument there are several, or the name is empty.
 */
inline Code WaitForWindow(Window& window, const WindowName& name, milliseconds timeout = milliseconds(5000)) {
  if (name.title.empty() && name.className.empty() && name.process.empty()) {
    return Code::InvalidArgument;
  }
  const KorvaneChar* className = name.className.empty() ? nullptr : detail::Terminated(name.className);
  const auto end = std::chrono::steady_clock::now() + timeout;
  for (;;) {
    HWND found = nullptr;
    for (HWND each = nullptr; (each = detail::FindWindowExW(nullptr, each, className, nullptr)) != nullptr;) {
      WindowInfo info;
      const bool named = detail::Visible(each) && GetWindowInfo(each, info) == Code::Ok &&
                         (name.title.empty() || name.title == info.title) &&
                         (name.process.empty() || detail::SameProcess(name.process, info.processName));
      if (named && found != nullptr) {
        return Code::InvalidArgument;
      }
      found = named ? each : found;
    }
    if (found != nullptr) {
      window = Window(found);
      return Code::Ok;
    }
    if (std::chrono::steady_clock::now() >= end) {
      return Code::NotFound;
    }
    Delay(milliseconds(50));
  }
}

/** The window that the user clicks next; none when the mouse cannot be watched. */
inline Window PickWindow() {
  return Window(FindWindowByClick());
}

}  // namespace korvane

#endif /* KORVANE_KORVANE_HPP */
