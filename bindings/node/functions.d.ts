// Written by scripts/make_bindings.py from include/korvane/korvane.h.
import { TargetRecord, WindowHandle, WindowInfo } from './records';

/**
 * Creates the UI Automation context when it does not exist yet.
 * @throws {FailedError} When the object model or UI Automation cannot be initialised (reported in the log).
 */
export function initializeAutomation(): void;

/**
 * Stops the cancel monitor, releases the automation context, closes the log and clears the target window. The
 * coordinate cache stays. Does nothing when nothing was set up.
 */
export function cleanupAutomation(): void;

/**
 * Sets the window that clicking, pasting and `verifySimple` use when their own window argument is null.
 * @param window The default window; null clears it. Stored in every case.
 * @throws {FailedError} When the automation context cannot be created.
 */
export function setTargetWindow(window: WindowHandle | null): void;

/**
 * Sleeps the calling thread.
 * @param milliseconds The time; a value below 1 sleeps 50 milliseconds.
 */
export function delay(milliseconds: number): void;

/**
 * Opens the log, appending, after closing an open one. A file that cannot be opened leaves the log closed, silently,
 * and everything else works unchanged. Lines end with CR LF; units up to U+00FF are one byte each, others are written
 * as `\uXXXX` with four lower-case hexadecimal digits. A line feed inside a logged text is stored as CR LF; otherwise
 * texts of other programs are written as they come, so a line that begins inside such a text may look like one of the
 * library's.
 * @param logPath The file; its folder must exist. Null or empty selects `Tavrin\automation_execution.log` in the user's
 *   local application data folder, where the Tavrin folder is created when missing.
 */
export function initializeLog(logPath?: string | null): void;

/**
 * Writes one action line to the log, stamped with the local time. Does nothing when `action` is null or the log closed.
 * @param action What the host did.
 * @param result Its result code.
 * @param durationMs How long it took in milliseconds.
 */
export function logAction(action: string, result: number, durationMs: number): void;

/**
 * Like `logAction`, stamped with the given instant, in UTC.
 * @param timestampMs Milliseconds since 1970-01-01 00:00:00 UTC. An instant before 1601 or after the year 30827 is
 *   written as 0000-00-00 00:00:00.000.
 */
export function logActionWithTimestamp(action: string, result: number, durationMs: number, timestampMs: number | bigint): void;

/**
 * Captures the element at a screen point, with every identification it has, and leaves `identificationMethod` at -1. An
 * element that vanishes meanwhile may leave a path to the first child: verify a record before relying on it.
 * @throws {NotFoundError} No element at the point.
 * @throws {FailedError} The automation context cannot be created.
 */
export function captureTargetAtPoint(x: number, y: number): TargetRecord;

/**
 * Captures the element under the mouse cursor, tracing its steps to the standard output, and chooses the method: tree
 * path when one was captured, else coordinates.
 * @throws {NotFoundError} the cursor or the element cannot be had, or the automation context cannot be created.
 */
export function captureTargetAtCursor(): TargetRecord;

/**
 * Finds the target without acting on it and remembers its centre for the next `clickTarget`: under the window and the
 * AutomationId, also under an empty one, which all records without an AutomationId then share.
 *
 * Success means: found.
 * @param window The window the target belongs to; required.
 * @throws {NotFoundError} Not found.
 * @throws {InvalidArgumentError} An argument is null.
 * @throws {FailedError} The automation context cannot be created.
 */
export function verifyTarget(target: TargetRecord, window: WindowHandle): void;

/**
 * Writes the hit statistics to the log, forgets all remembered points and sets the counters to 0. See `clickTarget` for
 * when a host needs it.
 */
export function clearElementCache(): void;

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
 *
 * Success means: the click was sent.
 * @param window The window the target belongs to; null uses the one of `setTargetWindow`.
 * @throws {NotFoundError} The window or the element was not found.
 * @throws {InvalidArgumentError} `target` is null or there is no window.
 * @throws {FailedError} The automation context, the element's point or the input failed.
 * @throws {CancelledError} Cancelled.
 */
export function clickTarget(target: TargetRecord, window?: WindowHandle | null): void;

/**
 * Brings a window to the foreground, restoring it when minimised.
 *
 * Success means: it is in the foreground.
 * @throws {NotFoundError} No such window.
 * @throws {InvalidArgumentError} `window` is null.
 * @throws {FailedError} The system refused.
 */
export function ensureWindowFocus(window: WindowHandle): void;

/**
 * Clicks the target as `clickTarget` does, remembered points included, types Ctrl+V and polls the target's value every
 * 2 ms until the clipboard's text shows. Only the element's Value is read, never its name. After a time-out the
 * keystrokes have been sent.
 *
 * Success means: the text shows.
 * @param window As for `clickTarget`.
 * @param timeoutMs Milliseconds to watch; 0 or less means 150.
 * @throws {NotFoundError} The window or the element was not found.
 * @throws {InvalidArgumentError} `target` is null or there is no window.
 * @throws {FailedError} No clipboard text, input not accepted, or the text did not show in time.
 * @throws {CancelledError} Cancelled.
 */
export function pasteToTargetWithVerifyEx(target: TargetRecord, window: WindowHandle, timeoutMs: number): void;

/**
 * `pasteToTargetWithVerifyEx` with a time-out of 150 milliseconds.
 */
export function pasteToTargetWithVerify(target: TargetRecord, window?: WindowHandle | null): void;

/**
 * Puts a text into the target's own control with a window message, without clipboard or keyboard. Brings the control's
 * top-level window to the foreground first and sleeps 50 ms. Needs an automation context.
 *
 * Success means: the message was sent, whatever the control did with it.
 * @param window As for `clickTarget`.
 * @param text The text.
 * @param insert Inserts at the caret; without it the whole text is replaced.
 * @throws {NotFoundError} The element was not found or has no window of its own.
 * @throws {InvalidArgumentError} `target` or `text` is null or there is no window.
 * @throws {FailedError} Out of memory.
 */
export function pasteToTargetDirect(target: TargetRecord, window: WindowHandle, text: string, insert?: boolean): void;

/**
 * Types Ctrl+V into whatever has the keyboard focus.
 *
 * Success means: sent.
 * @throws {InvalidArgumentError} `target` is null or there is no window.
 * @throws {FailedError} Input not accepted.
 */
export function pasteToTargetSimple(target: TargetRecord, window?: WindowHandle | null): void;

/**
 * Presses and releases one key.
 *
 * Success means: sent.
 * @param virtualKey A virtual-key code, of which the low 16 bits count; 9999 stands for Ctrl+A.
 * @throws {InvalidArgumentError} The code is below 1.
 * @throws {FailedError} Input not accepted.
 */
export function sendKey(virtualKey: number): void;

/**
 * Types a text key by key on the calling thread's keyboard layout, which need not be the receiving window's. Units that
 * no key produces are skipped. U+000D is the Enter key; U+000A is what the layout makes of it, usually Ctrl+Enter. A
 * character on a dead key is typed as that key and combines with the next one.
 *
 * Success means: sent.
 * @param text The text.
 * @param pauseMs Milliseconds between characters; below 1 means 1.
 * @throws {InvalidArgumentError} The text is null or empty.
 * @throws {FailedError} Input not accepted: what came before stays typed.
 */
export function sendKeySequence(text: string, pauseMs?: number): void;

/**
 * Alt+A.
 *
 * Success means: sent.
 * @throws {FailedError} Input not accepted.
 */
export function sendAltA(): void;

/**
 * Alt+B.
 *
 * Success means: sent.
 * @throws {FailedError} Input not accepted.
 */
export function sendAltB(): void;

/**
 * Alt+D.
 *
 * Success means: sent.
 * @throws {FailedError} Input not accepted.
 */
export function sendAltD(): void;

/**
 * Alt+E.
 *
 * Success means: sent.
 * @throws {FailedError} Input not accepted.
 */
export function sendAltE(): void;

/**
 * Alt+P.
 *
 * Success means: sent.
 * @throws {FailedError} Input not accepted.
 */
export function sendAltP(): void;

/**
 * Alt+T.
 *
 * Success means: sent.
 * @throws {FailedError} Input not accepted.
 */
export function sendAltT(): void;

/**
 * Alt+Z.
 *
 * Success means: sent.
 * @throws {FailedError} Input not accepted.
 */
export function sendAltZ(): void;

/**
 * Ctrl+A.
 *
 * Success means: sent.
 * @throws {FailedError} Input not accepted.
 */
export function sendCtrlA(): void;

/**
 * Ctrl+Alt+N.
 *
 * Success means: sent.
 * @throws {FailedError} Input not accepted.
 */
export function sendCtrlAltN(): void;

/**
 * Ctrl+L.
 *
 * Success means: sent.
 * @throws {FailedError} Input not accepted.
 */
export function sendCtrlL(): void;

/**
 * Ctrl+N.
 *
 * Success means: sent.
 * @throws {FailedError} Input not accepted.
 */
export function sendCtrlN(): void;

/**
 * Ctrl+Q.
 *
 * Success means: sent.
 * @throws {FailedError} Input not accepted.
 */
export function sendCtrlQ(): void;

/**
 * Ctrl+S.
 *
 * Success means: sent.
 * @throws {FailedError} Input not accepted.
 */
export function sendCtrlS(): void;

/**
 * Ctrl+Shift+F3.
 *
 * Success means: sent.
 * @throws {FailedError} Input not accepted.
 */
export function sendCtrlShiftF3(): void;

/**
 * Ctrl+V.
 *
 * Success means: sent.
 * @throws {FailedError} Input not accepted.
 */
export function sendCtrlV(): void;

/**
 * Shift+F2.
 *
 * Success means: sent.
 * @throws {FailedError} Input not accepted.
 */
export function sendShiftF2(): void;

/**
 * Shift+F4.
 *
 * Success means: sent.
 * @throws {FailedError} Input not accepted.
 */
export function sendShiftF4(): void;

/**
 * Shift+Insert.
 *
 * Success means: sent.
 * @throws {FailedError} Input not accepted.
 */
export function sendShiftInsert(): void;

/**
 * Puts a text on the clipboard and reads it back. Where the user keeps a clipboard history, the text stays in it.
 *
 * Success means: written and read back equal.
 * @throws {InvalidArgumentError} The text is null.
 * @throws {FailedError} Memory or the clipboard failed, or it read back differently.
 */
export function setClipboardText(text: string): void;

/**
 * Puts a text and an HTML fragment ("HTML Format") on the clipboard and reads the text back. Without the HTML the call
 * still succeeds when only the text could be written.
 *
 * It fails as `setClipboardText` does.
 * @param html The fragment.
 * @throws {InvalidArgumentError} Also when `html` is null.
 */
export function setClipboardTextAndHtml(text: string, html: string): void;

/**
 * The text the target shows: the first non-empty one of its value, name, and legacy value, name and description. An
 * empty field therefore answers with its name, on Windows usually its label. Needs an automation context.
 * @param window The window the target belongs to; required.
 * @returns the text, null when there is none (the log says why).
 */
export function getTargetText(target: TargetRecord, window: WindowHandle): string | null;

/**
 * Releases a text of `getTargetText`; null is ignored.
 */
export function freeTextResult(text?: string | null): void;

/**
 * Tests the text of `getTargetText`. An empty field with a name or another text is not empty in this sense, and one
 * without any text cannot be read.
 * @returns true: the target's text is white space only.
 * @throws {NotFoundError} No text can be read.
 * @throws {InvalidArgumentError} `target` is null.
 */
export function isTargetEmpty(target: TargetRecord, window: WindowHandle): boolean;

/**
 * @returns true: the target's text equals `expectedText`.
 * @throws {NotFoundError} No text can be read.
 * @throws {InvalidArgumentError} A pointer is null.
 */
export function targetContainsText(target: TargetRecord, window: WindowHandle, expectedText: string): boolean;

/**
 * @returns true: the target's text contains `partialText` or is contained in it.
 * @throws {NotFoundError} No text can be read.
 * @throws {InvalidArgumentError} A pointer is null.
 */
export function targetContainsPartialText(target: TargetRecord, window: WindowHandle, partialText: string): boolean;

/**
 * The waits poll every 2 ms.
 *
 * Success means: the target's text became different from `previousText`.
 * @param timeoutMs Milliseconds; 0 or less means 150.
 * @throws {InvalidArgumentError} A pointer is null.
 * @throws {FailedError} Time ran out.
 */
export function waitForFieldChange(target: TargetRecord, window: WindowHandle, previousText: string, timeoutMs: number): void;

/**
 * Waits until `isTargetEmpty` answers 1; a field that shows its name when it is empty never does.
 *
 * Success means: `isTargetEmpty` answered 1.
 * @throws {InvalidArgumentError} `target` is null.
 * @throws {FailedError} Time ran out.
 */
export function waitForFieldEmpty(target: TargetRecord, window: WindowHandle, timeoutMs: number): void;

/**
 * Success means: `targetContainsPartialText` answered 1.
 * @throws {InvalidArgumentError} A pointer is null.
 * @throws {FailedError} Time ran out.
 */
export function waitForTargetContainsPartialText(target: TargetRecord, window: WindowHandle, partialText: string, timeoutMs: number): void;

/**
 * Success means: `targetContainsText` answered 1.
 * @throws {InvalidArgumentError} A pointer is null.
 * @throws {FailedError} Time ran out.
 */
export function waitForTargetContainsText(target: TargetRecord, window: WindowHandle, expectedText: string, timeoutMs: number): void;

/**
 * Copies the focused field through the clipboard (Ctrl+A, Ctrl+C) and compares it with a text; either may contain the
 * other. Only a to z, 0 to 9, U+00C0 to U+00FF and the marks ! , - . : ? are compared, and case is ignored for a to z
 * alone. A text in another script has nothing to compare and matches everything. The clipboard keeps the copied text;
 * where another program holds it, there is no second try. Takes at least 150 ms.
 * @param window Only tested for presence; null uses the one of `setTargetWindow`.
 * @returns true: they match; not when they do not (the log shows where).
 * @throws {InvalidArgumentError} The text is null or there is no window.
 * @throws {FailedError} The clipboard or the input failed, or nothing was copied.
 */
export function verifySimple(expectedText: string, window?: WindowHandle | null): boolean;

/**
 * Lets the user pick a window: shows a cross cursor and takes the next left click anywhere, which no window receives.
 * Runs a message loop on the calling thread until then; a quit message ends it and is posted again for the host.
 * @returns the picked top-level window, or null when the mouse cannot be watched or the loop was ended.
 */
export function findWindowByClick(): WindowHandle | null;

/**
 * Describes a window.
 * @throws {InvalidArgumentError} An argument is null and `info` is untouched.
 */
export function getWindowInfo(window: WindowHandle): WindowInfo;

/**
 * Clears the cancelled state and starts watching the Escape key, replacing a monitor that runs.
 */
export function startCancelMonitor(): void;

/**
 * Stops watching the Escape key, waiting at most 300 ms. The cancelled state stays.
 */
export function stopCancelMonitor(): void;

/**
 * @returns true: when Escape was pressed since the last `startCancelMonitor`, else 0.
 */
export function isCancelled(): boolean;
