// Written by scripts/make_bindings.py from include/korvane/korvane.h.
using System;
using System.Diagnostics.CodeAnalysis;
using System.Runtime.InteropServices;

namespace Korvane
{
    // DllImport rather than LibraryImport: it means the same for these plain signatures, and every compiler takes it, from
    // .NET Framework and Mono to the present .NET.
    internal static class Native
    {
        private const string Library = "korvane";

        [DllImport(Library)] public static extern int initializeAutomation();
        [DllImport(Library)] public static extern void cleanupAutomation();
        [DllImport(Library)] public static extern int setTargetWindow(IntPtr window);
        [DllImport(Library)] public static extern void delay(int milliseconds);
        [DllImport(Library, CharSet = CharSet.Unicode)] public static extern void initializeLog(string logPath);
        [DllImport(Library, CharSet = CharSet.Unicode)] public static extern void logAction(string action, int result, int durationMs);
        [DllImport(Library, CharSet = CharSet.Unicode)] public static extern void logActionWithTimestamp(string action, int result, int durationMs, long timestampMs);
        [DllImport(Library)] public static extern int captureTargetAtPoint(out TargetRecord target, int x, int y);
        [DllImport(Library)] public static extern int captureTargetAtCursor(out TargetRecord target);
        [DllImport(Library)] public static extern int verifyTarget(ref TargetRecord target, IntPtr window);
        [DllImport(Library)] public static extern void clearElementCache();
        [DllImport(Library)] public static extern int clickTarget(ref TargetRecord target, IntPtr window);
        [DllImport(Library)] public static extern int ensureWindowFocus(IntPtr window);
        [DllImport(Library)] public static extern int pasteToTargetWithVerifyEx(ref TargetRecord target, IntPtr window, int timeoutMs);
        [DllImport(Library)] public static extern int pasteToTargetWithVerify(ref TargetRecord target, IntPtr window);
        [DllImport(Library, CharSet = CharSet.Unicode)] public static extern int pasteToTargetDirect(ref TargetRecord target, IntPtr window, string text, int insert);
        [DllImport(Library)] public static extern int pasteToTargetSimple(ref TargetRecord target, IntPtr window);
        [DllImport(Library)] public static extern int sendKey(int virtualKey);
        [DllImport(Library, CharSet = CharSet.Unicode)] public static extern int sendKeySequence(string text, int pauseMs);
        [DllImport(Library)] public static extern int sendAltA();
        [DllImport(Library)] public static extern int sendAltB();
        [DllImport(Library)] public static extern int sendAltD();
        [DllImport(Library)] public static extern int sendAltE();
        [DllImport(Library)] public static extern int sendAltP();
        [DllImport(Library)] public static extern int sendAltT();
        [DllImport(Library)] public static extern int sendAltZ();
        [DllImport(Library)] public static extern int sendCtrlA();
        [DllImport(Library)] public static extern int sendCtrlAltN();
        [DllImport(Library)] public static extern int sendCtrlL();
        [DllImport(Library)] public static extern int sendCtrlN();
        [DllImport(Library)] public static extern int sendCtrlQ();
        [DllImport(Library)] public static extern int sendCtrlS();
        [DllImport(Library)] public static extern int sendCtrlShiftF3();
        [DllImport(Library)] public static extern int sendCtrlV();
        [DllImport(Library)] public static extern int sendShiftF2();
        [DllImport(Library)] public static extern int sendShiftF4();
        [DllImport(Library)] public static extern int sendShiftInsert();
        [DllImport(Library, CharSet = CharSet.Unicode)] public static extern int setClipboardText(string text);
        [DllImport(Library, CharSet = CharSet.Unicode)] public static extern int setClipboardTextAndHtml(string text, byte[] html);
        [DllImport(Library)] public static extern IntPtr getTargetText(ref TargetRecord target, IntPtr window);
        [DllImport(Library)] public static extern void freeTextResult(IntPtr text);
        [DllImport(Library)] public static extern int isTargetEmpty(ref TargetRecord target, IntPtr window);
        [DllImport(Library, CharSet = CharSet.Unicode)] public static extern int targetContainsText(ref TargetRecord target, IntPtr window, string expectedText);
        [DllImport(Library, CharSet = CharSet.Unicode)] public static extern int targetContainsPartialText(ref TargetRecord target, IntPtr window, string partialText);
        [DllImport(Library, CharSet = CharSet.Unicode)] public static extern int waitForFieldChange(ref TargetRecord target, IntPtr window, string previousText, int timeoutMs);
        [DllImport(Library)] public static extern int waitForFieldEmpty(ref TargetRecord target, IntPtr window, int timeoutMs);
        [DllImport(Library, CharSet = CharSet.Unicode)] public static extern int waitForTargetContainsPartialText(ref TargetRecord target, IntPtr window, string partialText, int timeoutMs);
        [DllImport(Library, CharSet = CharSet.Unicode)] public static extern int waitForTargetContainsText(ref TargetRecord target, IntPtr window, string expectedText, int timeoutMs);
        [DllImport(Library, CharSet = CharSet.Unicode)] public static extern int verifySimple(string expectedText, IntPtr window);
        [DllImport(Library)] public static extern IntPtr findWindowByClick();
        [DllImport(Library)] public static extern int getWindowInfo(IntPtr window, out WindowInfo info);
        [DllImport(Library)] public static extern void startCancelMonitor();
        [DllImport(Library)] public static extern void stopCancelMonitor();
        [DllImport(Library)] public static extern int isCancelled();
    }

    /// <summary>
    /// Every function of korvane.h under its name with a capital first letter. What answers a result code there returns
    /// nothing here and throws a <see cref="KorvaneException"/> unless it is Ok; what answers yes or no returns a bool. Lone
    /// surrogates pass in both directions; a text with a NUL is an ArgumentException. Windows are handles; IntPtr.Zero
    /// stands for none.
    /// </summary>
#if NULLABLE_BY_HAND
    [System.Runtime.CompilerServices.NullableContext(1)]
#endif
    public static class Automation
    {
        /// <summary>The value of SendKey that stands for Ctrl+A.</summary>
        public const int KeyCtrlA = 9999;

        /// <summary>Creates the UI Automation context when it does not exist yet.</summary>
        /// <exception cref="FailedException">When the object model or UI Automation cannot be initialised
        /// (reported in the log).</exception>
        public static void InitializeAutomation() => Results.Check("initializeAutomation", Native.initializeAutomation());

        /// <summary>Stops the cancel monitor, releases the automation context, closes the log and clears the
        /// target window. The coordinate cache stays. Does nothing when nothing was set up.</summary>
        public static void CleanupAutomation()
        {
            Native.cleanupAutomation();
            Results.CloseLog();
        }

        /// <summary>Sets the window that clicking, pasting and <c>VerifySimple</c> use when their own window
        /// argument is null.</summary>
        /// <param name="window">The default window; null clears it. Stored in every case.</param>
        /// <exception cref="FailedException">When the automation context cannot be created.</exception>
        public static void SetTargetWindow(IntPtr window) => Results.Check("setTargetWindow", Native.setTargetWindow(window));

        /// <summary>Sleeps the calling thread.</summary>
        /// <param name="milliseconds">The time; a value below 1 sleeps 50 milliseconds.</param>
        public static void Delay(int milliseconds) => Native.delay(milliseconds);

        /// <summary>Opens the log, appending, after closing an open one. A file that cannot be opened leaves
        /// the log closed, silently, and everything else works unchanged. Lines end with CR LF; units up to
        /// U+00FF are one byte each, others are written as <c>\uXXXX</c> with four lower-case hexadecimal
        /// digits. A line feed inside a logged text is stored as CR LF; otherwise texts of other programs are
        /// written as they come, so a line that begins inside such a text may look like one of the
        /// library's.</summary>
        /// <param name="logPath">The file; its folder must exist. Null or empty selects
        /// <c>Tavrin\automation_execution.log</c> in the user's local application data folder, where the Tavrin
        /// folder is created when missing.</param>
        public static void InitializeLog([AllowNull] string logPath = null)
        {
            Native.initializeLog(Texts.Whole(logPath));
            Results.OpenLog(logPath);
        }

        /// <summary>Writes one action line to the log, stamped with the local time. Does nothing when
        /// <c>action</c> is null or the log closed.</summary>
        /// <param name="action">What the host did.</param>
        /// <param name="result">Its result code.</param>
        /// <param name="durationMs">How long it took in milliseconds.</param>
        public static void LogAction(string action, int result, int durationMs) => Native.logAction(Texts.Whole(action), result, durationMs);

        /// <summary>Like <c>LogAction</c>, stamped with the given instant, in UTC.</summary>
        /// <param name="timestampMs">Milliseconds since 1970-01-01 00:00:00 UTC. An instant before 1601 or
        /// after the year 30827 is written as 0000-00-00 00:00:00.000.</param>
        public static void LogActionWithTimestamp(string action, int result, int durationMs, long timestampMs) => Native.logActionWithTimestamp(Texts.Whole(action), result, durationMs, timestampMs);

        /// <summary>Captures the element at a screen point, with every identification it has, and leaves
        /// <c>identificationMethod</c> at -1. An element that vanishes meanwhile may leave a path to the first
        /// child: verify a record before relying on it.</summary>
        /// <exception cref="NotFoundException">No element at the point.</exception>
        /// <exception cref="FailedException">The automation context cannot be created.</exception>
        public static TargetRecord CaptureTargetAtPoint(int x, int y)
        {
            Results.Check("captureTargetAtPoint", Native.captureTargetAtPoint(out var target, x, y));
            return target;
        }

        /// <summary>Captures the element under the mouse cursor, tracing its steps to the standard output, and
        /// chooses the method: tree path when one was captured, else coordinates.</summary>
        /// <exception cref="NotFoundException">the cursor or the element cannot be had, or the automation
        /// context cannot be created.</exception>
        public static TargetRecord CaptureTargetAtCursor()
        {
            Results.Check("captureTargetAtCursor", Native.captureTargetAtCursor(out var target));
            return target;
        }

        /// <summary>Finds the target without acting on it and remembers its centre for the next
        /// <c>ClickTarget</c>: under the window and the AutomationId, also under an empty one, which all
        /// records without an AutomationId then share. Success means: found.</summary>
        /// <param name="window">The window the target belongs to; required.</param>
        /// <exception cref="NotFoundException">Not found.</exception>
        /// <exception cref="InvalidArgumentException">An argument is null.</exception>
        /// <exception cref="FailedException">The automation context cannot be created.</exception>
        public static void VerifyTarget(TargetRecord target, IntPtr window) => Results.Check("verifyTarget", Native.verifyTarget(ref target, window));

        /// <summary>Writes the hit statistics to the log, forgets all remembered points and sets the counters
        /// to 0. See <c>ClickTarget</c> for when a host needs it.</summary>
        public static void ClearElementCache() => Native.clearElementCache();

        /// <summary>Clicks the target with the left button: at its remembered point when there is one, else
        /// after finding it and bringing its window to the foreground. Success means: the click was
        /// sent.</summary>
        /// <remarks>A click that had to search remembers its point for every record with an AutomationId,
        /// whatever its identification method, under the window and the AutomationId alone. A click at a
        /// remembered point neither searches nor brings the window to the foreground; it goes beside its
        /// element when the window has moved, and to the first element found when two elements of one window
        /// share an AutomationId. Call <c>ClearElementCache</c> before each step unless identifiers are known
        /// to be unique and the window to stay where it is. The cancelled state is asked once, before the
        /// search: Escape during the search does not prevent the click, except that a tree path then ends
        /// unfound and the screen point is tried. The platform may report any clickable point, (0, 0) included;
        /// it is clicked as it is. Two quick clicks on one spot are a double click.</remarks>
        /// <param name="window">The window the target belongs to; null uses the one of
        /// <c>SetTargetWindow</c>.</param>
        /// <exception cref="NotFoundException">The window or the element was not found.</exception>
        /// <exception cref="InvalidArgumentException"><c>target</c> is null or there is no window.</exception>
        /// <exception cref="FailedException">The automation context, the element's point or the input
        /// failed.</exception>
        /// <exception cref="CancelledException">Cancelled.</exception>
        public static void ClickTarget(TargetRecord target, IntPtr window = default(IntPtr)) => Results.Check("clickTarget", Native.clickTarget(ref target, window));

        /// <summary>Brings a window to the foreground, restoring it when minimised. Success means: it is in the
        /// foreground.</summary>
        /// <exception cref="NotFoundException">No such window.</exception>
        /// <exception cref="InvalidArgumentException"><c>window</c> is null.</exception>
        /// <exception cref="FailedException">The system refused.</exception>
        public static void EnsureWindowFocus(IntPtr window) => Results.Check("ensureWindowFocus", Native.ensureWindowFocus(window));

        /// <summary>Clicks the target as <c>ClickTarget</c> does, remembered points included, types Ctrl+V and
        /// polls the target's value every 2 ms until the clipboard's text shows. Only the element's Value is
        /// read, never its name. After a time-out the keystrokes have been sent. Success means: the text
        /// shows.</summary>
        /// <param name="window">As for <c>ClickTarget</c>.</param>
        /// <param name="timeoutMs">Milliseconds to watch; 0 or less means 150.</param>
        /// <exception cref="NotFoundException">The window or the element was not found.</exception>
        /// <exception cref="InvalidArgumentException"><c>target</c> is null or there is no window.</exception>
        /// <exception cref="FailedException">No clipboard text, input not accepted, or the text did not show in
        /// time.</exception>
        /// <exception cref="CancelledException">Cancelled.</exception>
        public static void PasteToTargetWithVerifyEx(TargetRecord target, IntPtr window, int timeoutMs) => Results.Check("pasteToTargetWithVerifyEx", Native.pasteToTargetWithVerifyEx(ref target, window, timeoutMs));

        /// <summary><c>PasteToTargetWithVerifyEx</c> with a time-out of 150 milliseconds.</summary>
        public static void PasteToTargetWithVerify(TargetRecord target, IntPtr window = default(IntPtr)) => Results.Check("pasteToTargetWithVerify", Native.pasteToTargetWithVerify(ref target, window));

        /// <summary>Puts a text into the target's own control with a window message, without clipboard or
        /// keyboard. Brings the control's top-level window to the foreground first and sleeps 50 ms. Needs an
        /// automation context. Success means: the message was sent, whatever the control did with it.</summary>
        /// <param name="window">As for <c>ClickTarget</c>.</param>
        /// <param name="text">The text.</param>
        /// <param name="insert">Inserts at the caret; without it the whole text is replaced.</param>
        /// <exception cref="NotFoundException">The element was not found or has no window of its
        /// own.</exception>
        /// <exception cref="InvalidArgumentException"><c>target</c> or <c>text</c> is null or there is no
        /// window.</exception>
        /// <exception cref="FailedException">Out of memory.</exception>
        public static void PasteToTargetDirect(TargetRecord target, IntPtr window, string text, bool insert = false) => Results.Check("pasteToTargetDirect", Native.pasteToTargetDirect(ref target, window, Texts.Whole(text), insert ? 1 : 0));

        /// <summary>Types Ctrl+V into whatever has the keyboard focus. Success means: sent.</summary>
        /// <exception cref="InvalidArgumentException"><c>target</c> is null or there is no window.</exception>
        /// <exception cref="FailedException">Input not accepted.</exception>
        public static void PasteToTargetSimple(TargetRecord target, IntPtr window = default(IntPtr)) => Results.Check("pasteToTargetSimple", Native.pasteToTargetSimple(ref target, window));

        /// <summary>Presses and releases one key. Success means: sent.</summary>
        /// <param name="virtualKey">A virtual-key code, of which the low 16 bits count; 9999 stands for
        /// Ctrl+A.</param>
        /// <exception cref="InvalidArgumentException">The code is below 1.</exception>
        /// <exception cref="FailedException">Input not accepted.</exception>
        public static void SendKey(int virtualKey) => Results.Check("sendKey", Native.sendKey(virtualKey));

        /// <summary>Types a text key by key on the calling thread's keyboard layout, which need not be the
        /// receiving window's. Units that no key produces are skipped. U+000D is the Enter key; U+000A is what
        /// the layout makes of it, usually Ctrl+Enter. A character on a dead key is typed as that key and
        /// combines with the next one. Success means: sent.</summary>
        /// <param name="text">The text.</param>
        /// <param name="pauseMs">Milliseconds between characters; below 1 means 1.</param>
        /// <exception cref="InvalidArgumentException">The text is null or empty.</exception>
        /// <exception cref="FailedException">Input not accepted: what came before stays typed.</exception>
        public static void SendKeySequence(string text, int pauseMs = 1) => Results.Check("sendKeySequence", Native.sendKeySequence(Texts.Whole(text), pauseMs));

        /// <summary>Alt+A. Success means: sent.</summary>
        /// <exception cref="FailedException">Input not accepted.</exception>
        public static void SendAltA() => Results.Check("sendAltA", Native.sendAltA());

        /// <summary>Alt+B. Success means: sent.</summary>
        /// <exception cref="FailedException">Input not accepted.</exception>
        public static void SendAltB() => Results.Check("sendAltB", Native.sendAltB());

        /// <summary>Alt+D. Success means: sent.</summary>
        /// <exception cref="FailedException">Input not accepted.</exception>
        public static void SendAltD() => Results.Check("sendAltD", Native.sendAltD());

        /// <summary>Alt+E. Success means: sent.</summary>
        /// <exception cref="FailedException">Input not accepted.</exception>
        public static void SendAltE() => Results.Check("sendAltE", Native.sendAltE());

        /// <summary>Alt+P. Success means: sent.</summary>
        /// <exception cref="FailedException">Input not accepted.</exception>
        public static void SendAltP() => Results.Check("sendAltP", Native.sendAltP());

        /// <summary>Alt+T. Success means: sent.</summary>
        /// <exception cref="FailedException">Input not accepted.</exception>
        public static void SendAltT() => Results.Check("sendAltT", Native.sendAltT());

        /// <summary>Alt+Z. Success means: sent.</summary>
        /// <exception cref="FailedException">Input not accepted.</exception>
        public static void SendAltZ() => Results.Check("sendAltZ", Native.sendAltZ());

        /// <summary>Ctrl+A. Success means: sent.</summary>
        /// <exception cref="FailedException">Input not accepted.</exception>
        public static void SendCtrlA() => Results.Check("sendCtrlA", Native.sendCtrlA());

        /// <summary>Ctrl+Alt+N. Success means: sent.</summary>
        /// <exception cref="FailedException">Input not accepted.</exception>
        public static void SendCtrlAltN() => Results.Check("sendCtrlAltN", Native.sendCtrlAltN());

        /// <summary>Ctrl+L. Success means: sent.</summary>
        /// <exception cref="FailedException">Input not accepted.</exception>
        public static void SendCtrlL() => Results.Check("sendCtrlL", Native.sendCtrlL());

        /// <summary>Ctrl+N. Success means: sent.</summary>
        /// <exception cref="FailedException">Input not accepted.</exception>
        public static void SendCtrlN() => Results.Check("sendCtrlN", Native.sendCtrlN());

        /// <summary>Ctrl+Q. Success means: sent.</summary>
        /// <exception cref="FailedException">Input not accepted.</exception>
        public static void SendCtrlQ() => Results.Check("sendCtrlQ", Native.sendCtrlQ());

        /// <summary>Ctrl+S. Success means: sent.</summary>
        /// <exception cref="FailedException">Input not accepted.</exception>
        public static void SendCtrlS() => Results.Check("sendCtrlS", Native.sendCtrlS());

        /// <summary>Ctrl+Shift+F3. Success means: sent.</summary>
        /// <exception cref="FailedException">Input not accepted.</exception>
        public static void SendCtrlShiftF3() => Results.Check("sendCtrlShiftF3", Native.sendCtrlShiftF3());

        /// <summary>Ctrl+V. Success means: sent.</summary>
        /// <exception cref="FailedException">Input not accepted.</exception>
        public static void SendCtrlV() => Results.Check("sendCtrlV", Native.sendCtrlV());

        /// <summary>Shift+F2. Success means: sent.</summary>
        /// <exception cref="FailedException">Input not accepted.</exception>
        public static void SendShiftF2() => Results.Check("sendShiftF2", Native.sendShiftF2());

        /// <summary>Shift+F4. Success means: sent.</summary>
        /// <exception cref="FailedException">Input not accepted.</exception>
        public static void SendShiftF4() => Results.Check("sendShiftF4", Native.sendShiftF4());

        /// <summary>Shift+Insert. Success means: sent.</summary>
        /// <exception cref="FailedException">Input not accepted.</exception>
        public static void SendShiftInsert() => Results.Check("sendShiftInsert", Native.sendShiftInsert());

        /// <summary>Puts a text on the clipboard and reads it back. Where the user keeps a clipboard history,
        /// the text stays in it. Success means: written and read back equal.</summary>
        /// <exception cref="InvalidArgumentException">The text is null.</exception>
        /// <exception cref="FailedException">Memory or the clipboard failed, or it read back
        /// differently.</exception>
        public static void SetClipboardText(string text) => Results.Check("setClipboardText", Native.setClipboardText(Texts.Whole(text)));

        /// <summary>Puts a text and an HTML fragment ("HTML Format") on the clipboard and reads the text back.
        /// Without the HTML the call still succeeds when only the text could be written.</summary>
        /// <remarks>It fails as <c>SetClipboardText</c> does.</remarks>
        /// <param name="html">The fragment.</param>
        /// <exception cref="InvalidArgumentException">Also when <c>html</c> is null.</exception>
        public static void SetClipboardTextAndHtml(string text, string html) => Results.Check("setClipboardTextAndHtml", Native.setClipboardTextAndHtml(Texts.Whole(text), Texts.Utf8(html)));

        /// <summary>The text the target shows: the first non-empty one of its value, name, and legacy value,
        /// name and description. An empty field therefore answers with its name, on Windows usually its label.
        /// Needs an automation context.</summary>
        /// <param name="window">The window the target belongs to; required.</param>
        /// <returns>the text, null when there is none (the log says why).</returns>
        [return: MaybeNull]
        public static string GetTargetText(TargetRecord target, IntPtr window) => Texts.Owned(Native.getTargetText(ref target, window));

        /// <summary>Tests the text of <c>GetTargetText</c>. An empty field with a name or another text is not
        /// empty in this sense, and one without any text cannot be read.</summary>
        /// <returns>True: the target's text is white space only.</returns>
        /// <exception cref="NotFoundException">No text can be read.</exception>
        /// <exception cref="InvalidArgumentException"><c>target</c> is null.</exception>
        public static bool IsTargetEmpty(TargetRecord target, IntPtr window) => Results.Answer("isTargetEmpty", Native.isTargetEmpty(ref target, window));

        /// <summary>Tests the target's text.</summary>
        /// <returns>True: the target's text equals <c>expectedText</c>.</returns>
        /// <exception cref="NotFoundException">No text can be read.</exception>
        /// <exception cref="InvalidArgumentException">A pointer is null.</exception>
        public static bool TargetContainsText(TargetRecord target, IntPtr window, string expectedText) => Results.Answer("targetContainsText", Native.targetContainsText(ref target, window, Texts.Whole(expectedText)));

        /// <summary>Tests the target's text.</summary>
        /// <returns>True: the target's text contains <c>partialText</c> or is contained in it.</returns>
        /// <exception cref="NotFoundException">No text can be read.</exception>
        /// <exception cref="InvalidArgumentException">A pointer is null.</exception>
        public static bool TargetContainsPartialText(TargetRecord target, IntPtr window, string partialText) => Results.Answer("targetContainsPartialText", Native.targetContainsPartialText(ref target, window, Texts.Whole(partialText)));

        /// <summary>The waits poll every 2 ms. Success means: the target's text became different from
        /// <c>previousText</c>.</summary>
        /// <param name="timeoutMs">Milliseconds; 0 or less means 150.</param>
        /// <exception cref="InvalidArgumentException">A pointer is null.</exception>
        /// <exception cref="FailedException">Time ran out.</exception>
        public static void WaitForFieldChange(TargetRecord target, IntPtr window, string previousText, int timeoutMs) => Results.Check("waitForFieldChange", Native.waitForFieldChange(ref target, window, Texts.Whole(previousText), timeoutMs));

        /// <summary>Waits until <c>IsTargetEmpty</c> answers 1; a field that shows its name when it is empty
        /// never does. Success means: <c>IsTargetEmpty</c> answered 1.</summary>
        /// <exception cref="InvalidArgumentException"><c>target</c> is null.</exception>
        /// <exception cref="FailedException">Time ran out.</exception>
        public static void WaitForFieldEmpty(TargetRecord target, IntPtr window, int timeoutMs) => Results.Check("waitForFieldEmpty", Native.waitForFieldEmpty(ref target, window, timeoutMs));

        /// <summary>Waits. Success means: <c>TargetContainsPartialText</c> answered 1.</summary>
        /// <exception cref="InvalidArgumentException">A pointer is null.</exception>
        /// <exception cref="FailedException">Time ran out.</exception>
        public static void WaitForTargetContainsPartialText(TargetRecord target, IntPtr window, string partialText, int timeoutMs) => Results.Check("waitForTargetContainsPartialText", Native.waitForTargetContainsPartialText(ref target, window, Texts.Whole(partialText), timeoutMs));

        /// <summary>Waits. Success means: <c>TargetContainsText</c> answered 1.</summary>
        /// <exception cref="InvalidArgumentException">A pointer is null.</exception>
        /// <exception cref="FailedException">Time ran out.</exception>
        public static void WaitForTargetContainsText(TargetRecord target, IntPtr window, string expectedText, int timeoutMs) => Results.Check("waitForTargetContainsText", Native.waitForTargetContainsText(ref target, window, Texts.Whole(expectedText), timeoutMs));

        /// <summary>Copies the focused field through the clipboard (Ctrl+A, Ctrl+C) and compares it with a
        /// text; either may contain the other. Only a to z, 0 to 9, U+00C0 to U+00FF and the marks ! , - . : ?
        /// are compared, and case is ignored for a to z alone. A text in another script has nothing to compare
        /// and matches everything. The clipboard keeps the copied text; where another program holds it, there
        /// is no second try. Takes at least 150 ms.</summary>
        /// <param name="window">Only tested for presence; null uses the one of <c>SetTargetWindow</c>.</param>
        /// <returns>True: they match; not when they do not (the log shows where).</returns>
        /// <exception cref="InvalidArgumentException">The text is null or there is no window.</exception>
        /// <exception cref="FailedException">The clipboard or the input failed, or nothing was
        /// copied.</exception>
        public static bool VerifySimple(string expectedText, IntPtr window = default(IntPtr)) => Results.Match("verifySimple", Native.verifySimple(Texts.Whole(expectedText), window));

        /// <summary>Lets the user pick a window: shows a cross cursor and takes the next left click anywhere,
        /// which no window receives. Runs a message loop on the calling thread until then; a quit message ends
        /// it and is posted again for the host.</summary>
        /// <returns>the picked top-level window, or null when the mouse cannot be watched or the loop was
        /// ended.</returns>
        public static IntPtr FindWindowByClick() => Native.findWindowByClick();

        /// <summary>Describes a window.</summary>
        /// <exception cref="InvalidArgumentException">An argument is null and <c>info</c> is
        /// untouched.</exception>
        public static WindowInfo GetWindowInfo(IntPtr window)
        {
            Results.Check("getWindowInfo", Native.getWindowInfo(window, out var info));
            return info;
        }

        /// <summary>Clears the cancelled state and starts watching the Escape key, replacing a monitor that
        /// runs.</summary>
        public static void StartCancelMonitor() => Native.startCancelMonitor();

        /// <summary>Stops watching the Escape key, waiting at most 300 ms. The cancelled state stays.</summary>
        public static void StopCancelMonitor() => Native.stopCancelMonitor();

        /// <summary>Asks whether Escape was pressed.</summary>
        /// <returns>True: when Escape was pressed since the last <c>StartCancelMonitor</c>, else 0.</returns>
        public static bool IsCancelled() => Native.isCancelled() == 1;
    }
}
