/**
 * @file korvane.hpp
 * korvane for C++17: texts that free themselves, codes as an enum, a session that cleans up. Nothing to link but
 * korvane.
 *
 * Every function of korvane.h is here under its name with a capital first letter, with the same results: a `Code`, or
 * an `Answer` where the interface answers yes or no. Nothing is thrown but std::invalid_argument, for a text with a
 * zero unit in it, which the C interface would cut off there.
 */
#ifndef KORVANE_KORVANE_HPP
#define KORVANE_KORVANE_HPP

#include <korvane/korvane.h>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace korvane {

using Text = std::basic_string<KorvaneChar>;
using TextView = std::basic_string_view<KorvaneChar>;
using std::chrono::milliseconds;

enum class [[nodiscard]] Code{Ok = KORVANE_OK, NotFound = KORVANE_NOT_FOUND, InvalidArgument = KORVANE_INVALID_ARGUMENT,
                              Failed = KORVANE_FAILED, Cancelled = KORVANE_CANCELLED};

enum class [[nodiscard]] Answer{Yes = 1, No = 0, Unreadable = -1, InvalidArgument = -2};

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

inline int Count(milliseconds time) {
  return static_cast<int>(time.count());
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

}  // namespace korvane

#endif /* KORVANE_KORVANE_HPP */
