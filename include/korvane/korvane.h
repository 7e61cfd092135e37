/**
 * @file korvane.h
 * Record and replay user-interface actions on other applications' windows.
 *
 * This header compiles as C11 and as C++, with or without <windows.h> before it.
 *
 * Conventions shared by all functions:
 *  - Texts are NUL-terminated UTF-16 code units (`KorvaneChar`), unless a function says otherwise. The library never
 *    keeps a caller's pointer after it returns.
 *  - Screen coordinates are pixels of the virtual screen; negative values occur left of or above the primary monitor.
 *  - Unless a function says otherwise it returns one of the KORVANE_* result codes; 0 is success.
 *  - A function that runs out of memory returns its own failure code and writes an error line "Out of memory".
 *
 * Threads. Every function may be called from any thread. The log, the coordinate cache and the automation context
 * are guarded, and a running call keeps its own reference to what it uses, so `initializeLog` and
 * `clearElementCache` may run beside any other call. `isCancelled` never waits; `stopCancelMonitor` waits at most 300
 * ms and never for another function. Three things remain the host's to arrange: input is one stream for the whole
 * desktop, so functions that click, paste or type should not overlap; only one `findWindowByClick` may run at a time;
 * and no other thread may be inside a function that uses UI Automation while `cleanupAutomation` runs, because the
 * platform unloads its own parts with the last use of its object model. That model is initialised on the thread that
 * creates the automation context; call `cleanupAutomation` on that same thread.
 *
 * The user's own keyboard and mouse matter: with swapped mouse buttons a click is a right click, Caps Lock turns the
 * case of typed letters, and a modifier that the user holds down combines with every key and click that is sent.
 *
 * Call `cleanupAutomation` before unloading the library. Unloading stops its monitor thread and releases what it holds.
 * Unloading it while another thread is inside one of these functions is the host's mistake and undefined.
 */
#ifndef KORVANE_KORVANE_H
#define KORVANE_KORVANE_H

#include <stdint.h>
#if defined(_WIN32)
#include <wchar.h>
#elif !defined(__cplusplus)
#include <uchar.h>
#endif

#ifdef __cplusplus
#define KORVANE_NOEXCEPT noexcept
extern "C" {
#else
#define KORVANE_NOEXCEPT
#endif

/** One UTF-16 code unit. */
#if defined(_WIN32)
typedef wchar_t KorvaneChar;
#else
typedef char16_t KorvaneChar;
#endif

/** A window handle; the same type that <windows.h> declares. */
#if defined(NO_STRICT)
typedef void* HWND;
#else
struct HWND__;
typedef struct HWND__* HWND;
#endif

/** Result codes. */
enum {
  /** Success. */
  KORVANE_OK = 0,
  /** Something looked for was not found: an element, a window, a native handle. */
  KORVANE_NOT_FOUND = -1,
  /** An argument is null or empty, or no window was given and none is set. */
  KORVANE_INVALID_ARGUMENT = -2,
  /** A platform operation failed, a time-out passed, or the automation context cannot be created. */
  KORVANE_FAILED = -3,
  /** The user cancelled with Escape. */
  KORVANE_CANCELLED = -4
};

/** Values of `TargetRecord::identificationMethod`. Any other value behaves like KORVANE_METHOD_UNDECIDED. */
enum {
  /** No method chosen: only the screen point is tried. */
  KORVANE_METHOD_UNDECIDED = -1,
  /** AutomationId first, then the screen point. */
  KORVANE_METHOD_AUTOMATION_ID = 0,
  /** AutomationId first, then the screen point; written by a capture at the cursor that has no tree path. */
  KORVANE_METHOD_COORDINATES = 2,
  /** Tree path first, then the screen point. */
  KORVANE_METHOD_TREE_PATH = 3
};

enum {
  /** Code units in `TargetRecord::automationId`, terminator included. */
  KORVANE_AUTOMATION_ID_SIZE = 256,
  /** Levels a tree path can hold. */
  KORVANE_MAX_PATH_LEVELS = 20,
  /** Code units in one class name of a tree path, terminator included. */
  KORVANE_CLASS_NAME_SIZE = 64,
  /** Code units in each text of `WindowInfo`, terminator included. */
  KORVANE_WINDOW_TEXT_SIZE = 256,
  /** The value of `sendKey` that stands for Ctrl+A. */
  KORVANE_KEY_CTRL_A = 9999
};

/**
 * One captured user-interface element, 3,256 bytes, little-endian, without padding.
 *
 * The host allocates and stores it (8-byte aligned) and may keep it across processes and machines. The capture
 * functions fill it; every other function only reads it, each field within its own bounds.
 */
typedef struct TargetRecord {
  /** The element's AutomationId, cut to 255 units; empty when it has none. */
  KorvaneChar automationId[KORVANE_AUTOMATION_ID_SIZE];
  /** The window captured for the element, or null. For the host's own use: no function reads it. */
  HWND hwnd;
  /** Screen point of the capture in pixels. (0, 0) means "no point". */
  int32_t x;
  int32_t y;
  /** Which identification is tried first, KORVANE_METHOD_*. The host may change it. */
  int32_t identificationMethod;
  /** Levels of the tree path in use, 0 to 20. */
  int32_t pathLength;
  /** UI Automation control type of each level, outermost first; 0 = any. */
  int32_t controlTypes[KORVANE_MAX_PATH_LEVELS];
  /** Class name of each level; empty = any. A longer name is cut to 63 units, and its level is then never found. */
  KorvaneChar classNames[KORVANE_MAX_PATH_LEVELS][KORVANE_CLASS_NAME_SIZE];
  /**
   * 1-based position of each level among its siblings of the same type and class; 0 = the first that matches, which a
   * capture writes when it could not tell the position.
   */
  int32_t childIndices[KORVANE_MAX_PATH_LEVELS];
} TargetRecord;

/** What `getWindowInfo` tells of a window, 1,032 bytes without padding. */
typedef struct WindowInfo {
  /** The window's title, cut to 255 units; empty when it has none. */
  KorvaneChar title[KORVANE_WINDOW_TEXT_SIZE];
  /** File name of the owning process's executable, cut to 255 units; "Unknown" when it cannot be had. */
  KorvaneChar processName[KORVANE_WINDOW_TEXT_SIZE];
  /** The window asked about. */
  HWND window;
} WindowInfo;

/* ---- Automation context -------------------------------------------------------------------------------------- */

/**
 * Creates the UI Automation context when it does not exist yet.
 * @return KORVANE_OK, or KORVANE_FAILED when the object model or UI Automation cannot be initialised (reported in the
 * log).
 */
int initializeAutomation(void) KORVANE_NOEXCEPT;

/**
 * Stops the cancel monitor, releases the automation context, closes the log and clears the target window. The
 * coordinate cache stays. Does nothing when nothing was set up.
 */
void cleanupAutomation(void) KORVANE_NOEXCEPT;

/**
 * Sets the window that clicking, pasting and `verifySimple` use when their own window argument is null.
 * @param window the default window; null clears it. Stored in every case.
 * @return KORVANE_OK, or KORVANE_FAILED when the automation context cannot be created.
 */
int setTargetWindow(HWND window) KORVANE_NOEXCEPT;

/** Sleeps the calling thread. @param milliseconds the time; a value below 1 sleeps 50 milliseconds. */
void delay(int milliseconds) KORVANE_NOEXCEPT;

/* ---- Log ----------------------------------------------------------------------------------------------------- */

/**
 * Opens the log, appending, after closing an open one. A file that cannot be opened leaves the log closed, silently,
 * and everything else works unchanged. Lines end with CR LF; units up to U+00FF are one byte each, others are written
 * as `\uXXXX` with four lower-case hexadecimal digits. A line feed inside a logged text is stored as CR LF; otherwise
 * texts of other programs are written as they come, so a line that begins inside such a text may look like one of the
 * library's.
 * @param logPath the file; its folder must exist. Null or empty selects `Tavrin\automation_execution.log` in the user's
 *                local application data folder, where the Tavrin folder is created when missing.
 */
void initializeLog(const KorvaneChar* logPath) KORVANE_NOEXCEPT;

/**
 * Writes one action line to the log, stamped with the local time. Does nothing when `action` is null or the log closed.
 * @param action what the host did. @param result its result code. @param durationMs how long it took in milliseconds.
 */
void logAction(const KorvaneChar* action, int result, int durationMs) KORVANE_NOEXCEPT;

/**
 * Like `logAction`, stamped with the given instant, in UTC.
 * @param timestampMs milliseconds since 1970-01-01 00:00:00 UTC. An instant before 1601 or after the year 30827 is
 *                    written as 0000-00-00 00:00:00.000.
 */
void logActionWithTimestamp(const KorvaneChar* action, int result, int durationMs,
                            int64_t timestampMs) KORVANE_NOEXCEPT;

/* ---- Capture ------------------------------------------------------------------------------------------------- */

/**
 * Captures the element at a screen point, with every identification it has, and leaves `identificationMethod` at -1.
 * An element that vanishes meanwhile may leave a path to the first child: verify a record before relying on it.
 * @param target filled in place. On KORVANE_NOT_FOUND it holds zeros, the point and method -1; on the other failures it
 * is untouched.
 * @return KORVANE_OK; KORVANE_NOT_FOUND no element at the point; KORVANE_INVALID_ARGUMENT `target` is null;
 * KORVANE_FAILED the automation context cannot be created.
 */
int captureTargetAtPoint(TargetRecord* target, int x, int y) KORVANE_NOEXCEPT;

/**
 * Captures the element under the mouse cursor, tracing its steps to the standard output, and chooses the method: tree
 * path when one was captured, else coordinates.
 * @param target filled in place; on a failure zeros and method -1.
 * @return KORVANE_OK; KORVANE_NOT_FOUND `target` is null, the cursor or the element cannot be had, or the automation
 * context cannot be created.
 */
int captureTargetAtCursor(TargetRecord* target) KORVANE_NOEXCEPT;

/* ---- Resolution ---------------------------------------------------------------------------------------------- */

/**
 * Finds the target without acting on it and remembers its centre for the next `clickTarget`: under the window and the
 * AutomationId, also under an empty one, which all records without an AutomationId then share.
 * @param window the window the target belongs to; required.
 * @return KORVANE_OK found; KORVANE_NOT_FOUND not found; KORVANE_INVALID_ARGUMENT an argument is null; KORVANE_FAILED
 * the automation context cannot be created.
 */
int verifyTarget(const TargetRecord* target, HWND window) KORVANE_NOEXCEPT;

/**
 * Writes the hit statistics to the log, forgets all remembered points and sets the counters to 0. See `clickTarget` for
 * when a host needs it.
 */
void clearElementCache(void) KORVANE_NOEXCEPT;

/* ---- Clicking and focus -------------------------------------------------------------------------------------- */

/**
 * Clicks the target with the left button: at its remembered point when there is one, else after finding it and bringing
 * its window to the foreground.
 *
 * A click that had to search remembers its point for every record with an AutomationId, whatever its identification
 * method, under the window and the AutomationId alone. A click at a remembered point neither searches nor brings the
 * window to the foreground; it goes beside its element when the window has moved, and to the first element found when
 * two elements of one window share an AutomationId. Call `clearElementCache` before each step unless identifiers are
 * known to be unique and the window to stay where it is.
 *
 * The cancelled state is asked once, before the search: Escape during the search does not prevent the click, except
 * that a tree path then ends unfound and the screen point is tried. The platform may report any clickable point, (0, 0)
 * included; it is clicked as it is. Two quick clicks on one spot are a double click.
 * @param window the window the target belongs to; null uses the one of `setTargetWindow`.
 * @return KORVANE_OK the click was sent; KORVANE_NOT_FOUND the window or the element was not found;
 * KORVANE_INVALID_ARGUMENT `target` is null or there is no window; KORVANE_FAILED the automation context, the element's
 * point or the input failed; KORVANE_CANCELLED cancelled.
 */
int clickTarget(const TargetRecord* target, HWND window) KORVANE_NOEXCEPT;

/**
 * Brings a window to the foreground, restoring it when minimised.
 * @return KORVANE_OK it is in the foreground; KORVANE_NOT_FOUND no such window; KORVANE_INVALID_ARGUMENT `window` is
 * null; KORVANE_FAILED the system refused.
 */
int ensureWindowFocus(HWND window) KORVANE_NOEXCEPT;

/* ---- Pasting ------------------------------------------------------------------------------------------------- */

/**
 * Clicks the target as `clickTarget` does, remembered points included, types Ctrl+V and polls the target's value every
 * 2 ms until the clipboard's text shows. Only the element's Value is read, never its name. After a time-out the
 * keystrokes have been sent.
 * @param window as for `clickTarget`. @param timeoutMs milliseconds to watch; 0 or less means 150.
 * @return KORVANE_OK the text shows; KORVANE_NOT_FOUND the window or the element was not found;
 * KORVANE_INVALID_ARGUMENT `target` is null or there is no window; KORVANE_FAILED no clipboard text, input not
 * accepted, or the text did not show in time; KORVANE_CANCELLED cancelled.
 */
int pasteToTargetWithVerifyEx(const TargetRecord* target, HWND window, int timeoutMs) KORVANE_NOEXCEPT;

/** `pasteToTargetWithVerifyEx` with a time-out of 150 milliseconds. */
int pasteToTargetWithVerify(const TargetRecord* target, HWND window) KORVANE_NOEXCEPT;

/**
 * Puts a text into the target's own control with a window message, without clipboard or keyboard. Brings the control's
 * top-level window to the foreground first and sleeps 50 ms. Needs an automation context.
 * @param window as for `clickTarget`. @param text the text. @param mode 1 inserts at the caret, any other value
 * replaces the whole text.
 * @return KORVANE_OK the message was sent, whatever the control did with it; KORVANE_NOT_FOUND the element was not
 * found or has no window of its own; KORVANE_INVALID_ARGUMENT `target` or `text` is null or there is no window;
 * KORVANE_FAILED out of memory.
 */
int pasteToTargetDirect(const TargetRecord* target, HWND window, const KorvaneChar* text, int mode) KORVANE_NOEXCEPT;

/**
 * Types Ctrl+V into whatever has the keyboard focus.
 * @return KORVANE_OK sent; KORVANE_INVALID_ARGUMENT `target` is null or there is no window; KORVANE_FAILED input not
 * accepted.
 */
int pasteToTargetSimple(const TargetRecord* target, HWND window) KORVANE_NOEXCEPT;

/* ---- Keyboard ------------------------------------------------------------------------------------------------ */

/**
 * Presses and releases one key.
 * @param virtualKey a virtual-key code, of which the low 16 bits count; 9999 stands for Ctrl+A.
 * @return KORVANE_OK sent; KORVANE_INVALID_ARGUMENT the code is below 1; KORVANE_FAILED input not accepted.
 */
int sendKey(int virtualKey) KORVANE_NOEXCEPT;

/**
 * Types a text key by key on the calling thread's keyboard layout, which need not be the receiving window's. Units that
 * no key produces are skipped. U+000D is the Enter key; U+000A is what the layout makes of it, usually Ctrl+Enter. A
 * character on a dead key is typed as that key and combines with the next one.
 * @param text the text. @param pauseMs milliseconds between characters; below 1 means 1.
 * @return KORVANE_OK sent; KORVANE_INVALID_ARGUMENT the text is null or empty; KORVANE_FAILED input not accepted: what
 * came before stays typed.
 */
int sendKeySequence(const KorvaneChar* text, int pauseMs) KORVANE_NOEXCEPT;

/*
 * Fixed shortcuts for whatever has the keyboard focus.
 * @return KORVANE_OK sent; KORVANE_FAILED input not accepted.
 */
int sendAltA(void) KORVANE_NOEXCEPT;        /**< Alt+A */
int sendAltB(void) KORVANE_NOEXCEPT;        /**< Alt+B */
int sendAltD(void) KORVANE_NOEXCEPT;        /**< Alt+D */
int sendAltE(void) KORVANE_NOEXCEPT;        /**< Alt+E */
int sendAltP(void) KORVANE_NOEXCEPT;        /**< Alt+P */
int sendAltT(void) KORVANE_NOEXCEPT;        /**< Alt+T */
int sendAltZ(void) KORVANE_NOEXCEPT;        /**< Alt+Z */
int sendCtrlA(void) KORVANE_NOEXCEPT;       /**< Ctrl+A */
int sendCtrlAltN(void) KORVANE_NOEXCEPT;    /**< Ctrl+Alt+N */
int sendCtrlL(void) KORVANE_NOEXCEPT;       /**< Ctrl+L */
int sendCtrlN(void) KORVANE_NOEXCEPT;       /**< Ctrl+N */
int sendCtrlQ(void) KORVANE_NOEXCEPT;       /**< Ctrl+Q */
int sendCtrlS(void) KORVANE_NOEXCEPT;       /**< Ctrl+S */
int sendCtrlShiftF3(void) KORVANE_NOEXCEPT; /**< Ctrl+Shift+F3 */
int sendCtrlV(void) KORVANE_NOEXCEPT;       /**< Ctrl+V */
int sendShiftF2(void) KORVANE_NOEXCEPT;     /**< Shift+F2 */
int sendShiftF4(void) KORVANE_NOEXCEPT;     /**< Shift+F4 */
int sendShiftInsert(void) KORVANE_NOEXCEPT; /**< Shift+Insert */

/* ---- Clipboard ----------------------------------------------------------------------------------------------- */

/**
 * Puts a text on the clipboard and reads it back. Where the user keeps a clipboard history, the text stays in it.
 * @return KORVANE_OK written and read back equal; KORVANE_INVALID_ARGUMENT the text is null; KORVANE_FAILED memory or
 * the clipboard failed, or it read back differently.
 */
int setClipboardText(const KorvaneChar* text) KORVANE_NOEXCEPT;

/**
 * Puts a text and an HTML fragment ("HTML Format") on the clipboard and reads the text back. Without the HTML the call
 * still succeeds when only the text could be written.
 * @param html the fragment as UTF-8 bytes, NUL-terminated, copied unchanged.
 * @return as `setClipboardText`; KORVANE_INVALID_ARGUMENT also when `html` is null.
 */
int setClipboardTextAndHtml(const KorvaneChar* text, const char* html) KORVANE_NOEXCEPT;

/* ---- Reading, tests and waits -------------------------------------------------------------------------------- */

/**
 * The text the target shows: the first non-empty one of its value, name, and legacy value, name and description. An
 * empty field therefore answers with its name, on Windows usually its label. Needs an automation context.
 * @param window the window the target belongs to; required.
 * @return the text, owned by the caller, who gives it back to `freeTextResult`; null when there is none (the log says
 *         why).
 */
KorvaneChar* getTargetText(const TargetRecord* target, HWND window) KORVANE_NOEXCEPT;

/** Releases a text of `getTargetText`; null is ignored. */
void freeTextResult(KorvaneChar* text) KORVANE_NOEXCEPT;

/**
 * Tests the text of `getTargetText`. An empty field with a name or another text is not empty in this sense, and one
 * without any text cannot be read.
 * @return 1 the target's text is white space only; 0 it is not; -1 no text can be read; KORVANE_INVALID_ARGUMENT
 * `target` is null.
 */
int isTargetEmpty(const TargetRecord* target, HWND window) KORVANE_NOEXCEPT;

/**
 * @return 1 the target's text equals `expectedText`; 0 it differs; -1 no text can be read; KORVANE_INVALID_ARGUMENT a
 * pointer is null.
 */
int targetContainsText(const TargetRecord* target, HWND window, const KorvaneChar* expectedText) KORVANE_NOEXCEPT;

/**
 * @return 1 the target's text contains `partialText` or is contained in it; 0 neither; -1 no text can be read;
 * KORVANE_INVALID_ARGUMENT a pointer is null.
 */
int targetContainsPartialText(const TargetRecord* target, HWND window, const KorvaneChar* partialText) KORVANE_NOEXCEPT;

/**
 * The waits poll every 2 ms. @param timeoutMs milliseconds; 0 or less means 150.
 * @return KORVANE_OK the target's text became different from `previousText`; KORVANE_INVALID_ARGUMENT a pointer is
 * null; KORVANE_FAILED time ran out.
 */
int waitForFieldChange(const TargetRecord* target, HWND window, const KorvaneChar* previousText,
                       int timeoutMs) KORVANE_NOEXCEPT;

/**
 * Waits until `isTargetEmpty` answers 1; a field that shows its name when it is empty never does.
 * @return KORVANE_OK `isTargetEmpty` answered 1; KORVANE_INVALID_ARGUMENT `target` is null; KORVANE_FAILED time ran
 * out.
 */
int waitForFieldEmpty(const TargetRecord* target, HWND window, int timeoutMs) KORVANE_NOEXCEPT;

/**
 * @return KORVANE_OK `targetContainsPartialText` answered 1; KORVANE_INVALID_ARGUMENT a pointer is null;
 * KORVANE_FAILED time ran out.
 */
int waitForTargetContainsPartialText(const TargetRecord* target, HWND window, const KorvaneChar* partialText,
                                     int timeoutMs) KORVANE_NOEXCEPT;

/**
 * @return KORVANE_OK `targetContainsText` answered 1; KORVANE_INVALID_ARGUMENT a pointer is null; KORVANE_FAILED time
 * ran out.
 */
int waitForTargetContainsText(const TargetRecord* target, HWND window, const KorvaneChar* expectedText,
                              int timeoutMs) KORVANE_NOEXCEPT;

/**
 * Copies the focused field through the clipboard (Ctrl+A, Ctrl+C) and compares it with a text; either may contain the
 * other. Only a to z, 0 to 9, U+00C0 to U+00FF and the marks ! , - . : ? are compared, and case is ignored for a to z
 * alone. A text in another script has nothing to compare and matches everything. The clipboard keeps the copied text;
 * where another program holds it, there is no second try. Takes at least 150 ms.
 * @param window only tested for presence; null uses the one of `setTargetWindow`.
 * @return KORVANE_OK they match; KORVANE_NOT_FOUND they do not (the log shows where); KORVANE_INVALID_ARGUMENT the text
 * is null or there is no window; KORVANE_FAILED the clipboard or the input failed, or nothing was copied.
 */
int verifySimple(const KorvaneChar* expectedText, HWND window) KORVANE_NOEXCEPT;

/* ---- Windows ------------------------------------------------------------------------------------------------- */

/**
 * Lets the user pick a window: shows a cross cursor and takes the next left click anywhere, which no window receives.
 * Runs a message loop on the calling thread until then; a quit message ends it and is posted again for the host.
 * @return the picked top-level window, or null when the mouse cannot be watched or the loop was ended.
 */
HWND findWindowByClick(void) KORVANE_NOEXCEPT;

/**
 * Describes a window.
 * @return KORVANE_OK `info` is filled; KORVANE_INVALID_ARGUMENT an argument is null and `info` is untouched.
 */
int getWindowInfo(HWND window, WindowInfo* info) KORVANE_NOEXCEPT;

/* ---- Cancelling ---------------------------------------------------------------------------------------------- */

/** Clears the cancelled state and starts watching the Escape key, replacing a monitor that runs. */
void startCancelMonitor(void) KORVANE_NOEXCEPT;

/** Stops watching the Escape key, waiting at most 300 ms. The cancelled state stays. */
void stopCancelMonitor(void) KORVANE_NOEXCEPT;

/** @return 1 when Escape was pressed since the last `startCancelMonitor`, else 0. */
int isCancelled(void) KORVANE_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif /* KORVANE_KORVANE_H */
