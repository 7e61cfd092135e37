using System;
using System.Runtime.InteropServices;

namespace Korvane
{
    public enum Code
    {
        Ok = 0,
        NotFound = -1,
        InvalidArgument = -2,
        Failed = -3,
        Cancelled = -4,
    }

    public enum Method
    {
        Undecided = -1,
        AutomationId = 0,
        Coordinates = 2,
        TreePath = 3,
    }

    /// <summary>A function answered a code other than Ok.</summary>
    public sealed class KorvaneException : Exception
    {
        public KorvaneException(string function, Code code) : base(function + ": " + code)
        {
            Code = code;
        }

        public Code Code { get; }
    }

    /// <summary>A captured element; a host stores <see cref="ToBytes"/> and reads it with <see cref="FromBytes"/>.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public unsafe struct TargetRecord
    {
        public const int Size = 3256;

        private fixed ushort automationId[256];
        private IntPtr hwnd;
        private int x;
        private int y;
        private int identificationMethod;
        private int pathLength;
        private fixed int controlTypes[20];
        private fixed ushort classNames[20 * 64];
        private fixed int childIndices[20];

        public string AutomationId
        {
            get { fixed (ushort* units = automationId) return Texts.Read(units, 256); }
        }

        public IntPtr Window => hwnd;
        public int X => x;
        public int Y => y;
        public int PathLength => pathLength;

        public Method Method
        {
            get => (Method)identificationMethod;
            set => identificationMethod = (int)value;
        }

        public byte[] ToBytes()
        {
            var bytes = new byte[Size];
            fixed (TargetRecord* record = &this) Marshal.Copy((IntPtr)record, bytes, 0, Size);
            return bytes;
        }

        public static TargetRecord FromBytes(byte[] bytes)
        {
            if (bytes == null || bytes.Length != Size) throw new ArgumentException("a record has " + Size + " bytes");
            TargetRecord record;
            Marshal.Copy(bytes, 0, (IntPtr)(&record), Size);
            return record;
        }
    }

    [StructLayout(LayoutKind.Sequential)]
    public unsafe struct WindowInfo
    {
        private fixed ushort title[256];
        private fixed ushort processName[256];
        private IntPtr window;

        public string Title
        {
            get { fixed (ushort* units = title) return Texts.Read(units, 256); }
        }

        public string ProcessName
        {
            get { fixed (ushort* units = processName) return Texts.Read(units, 256); }
        }

        public IntPtr Window => window;
    }

    internal static unsafe class Texts
    {
        public static string Read(ushort* units, int size)
        {
            var length = 0;
            while (length < size && units[length] != 0) ++length;
            return new string((char*)units, 0, length);
        }

        // The marshaller would cut a text off at a NUL.
        public static string Whole(string text)
        {
            if (text != null && text.IndexOf('\0') >= 0) throw new ArgumentException("korvane: a NUL inside a text");
            return text;
        }
    }

    // DllImport rather than LibraryImport: it means the same for these plain signatures, and every compiler takes it, from
    // .NET Framework and Mono to the present .NET.
    internal static class Native
    {
        private const string Library = "korvane";
        private const CharSet Utf16 = CharSet.Unicode;

        [DllImport(Library)] public static extern int initializeAutomation();
        [DllImport(Library)] public static extern void cleanupAutomation();
        [DllImport(Library)] public static extern int setTargetWindow(IntPtr window);
        [DllImport(Library)] public static extern void delay(int milliseconds);
        [DllImport(Library, CharSet = Utf16)] public static extern void initializeLog(string logPath);
        [DllImport(Library, CharSet = Utf16)] public static extern void logAction(string action, int result, int durationMs);
        [DllImport(Library, CharSet = Utf16)] public static extern void logActionWithTimestamp(string action, int result, int durationMs, long timestampMs);
        [DllImport(Library)] public static extern int captureTargetAtPoint(out TargetRecord target, int x, int y);
        [DllImport(Library)] public static extern int captureTargetAtCursor(out TargetRecord target);
        [DllImport(Library)] public static extern int verifyTarget(ref TargetRecord target, IntPtr window);
        [DllImport(Library)] public static extern void clearElementCache();
        [DllImport(Library)] public static extern int clickTarget(ref TargetRecord target, IntPtr window);
        [DllImport(Library)] public static extern int ensureWindowFocus(IntPtr window);
        [DllImport(Library)] public static extern int pasteToTargetWithVerify(ref TargetRecord target, IntPtr window);
        [DllImport(Library)] public static extern int pasteToTargetWithVerifyEx(ref TargetRecord target, IntPtr window, int timeoutMs);
        [DllImport(Library, CharSet = Utf16)] public static extern int pasteToTargetDirect(ref TargetRecord target, IntPtr window, string text, int mode);
        [DllImport(Library)] public static extern int pasteToTargetSimple(ref TargetRecord target, IntPtr window);
        [DllImport(Library)] public static extern int sendKey(int virtualKey);
        [DllImport(Library, CharSet = Utf16)] public static extern int sendKeySequence(string text, int pauseMs);
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
        [DllImport(Library, CharSet = Utf16)] public static extern int setClipboardText(string text);
        [DllImport(Library, CharSet = Utf16)] public static extern int setClipboardTextAndHtml(string text, byte[] html);
        [DllImport(Library)] public static extern IntPtr getTargetText(ref TargetRecord target, IntPtr window);
        [DllImport(Library)] public static extern void freeTextResult(IntPtr text);
        [DllImport(Library)] public static extern int isTargetEmpty(ref TargetRecord target, IntPtr window);
        [DllImport(Library, CharSet = Utf16)] public static extern int targetContainsText(ref TargetRecord target, IntPtr window, string expectedText);
        [DllImport(Library, CharSet = Utf16)] public static extern int targetContainsPartialText(ref TargetRecord target, IntPtr window, string partialText);
        [DllImport(Library, CharSet = Utf16)] public static extern int waitForFieldChange(ref TargetRecord target, IntPtr window, string previousText, int timeoutMs);
        [DllImport(Library)] public static extern int waitForFieldEmpty(ref TargetRecord target, IntPtr window, int timeoutMs);
        [DllImport(Library, CharSet = Utf16)] public static extern int waitForTargetContainsPartialText(ref TargetRecord target, IntPtr window, string partialText, int timeoutMs);
        [DllImport(Library, CharSet = Utf16)] public static extern int waitForTargetContainsText(ref TargetRecord target, IntPtr window, string expectedText, int timeoutMs);
        [DllImport(Library, CharSet = Utf16)] public static extern int verifySimple(string expectedText, IntPtr window);
        [DllImport(Library)] public static extern IntPtr findWindowByClick();
        [DllImport(Library)] public static extern int getWindowInfo(IntPtr window, out WindowInfo info);
        [DllImport(Library)] public static extern void startCancelMonitor();
        [DllImport(Library)] public static extern void stopCancelMonitor();
        [DllImport(Library)] public static extern int isCancelled();
    }

    /// <summary>
    /// korvane for C#: every function of korvane.h under its name with a capital first letter. What answers a result code
    /// there returns nothing here and throws a <see cref="KorvaneException"/> unless it is Ok; what answers yes or no
    /// returns a bool. Lone surrogates pass in both directions; a text with a NUL is an ArgumentException. Windows are
    /// handles; IntPtr.Zero stands for none.
    /// </summary>
    public static class Automation
    {
        public const int KeyCtrlA = 9999;

        // Throws at a lone surrogate, which UTF-8 cannot hold.
        private static readonly System.Text.Encoding StrictUtf8 = new System.Text.UTF8Encoding(false, true);

        private static void Done(string function, int code)
        {
            if (code != 0) throw new KorvaneException(function, (Code)code);
        }

        private static bool YesOrNo(string function, int answer)
        {
            if (answer < 0) throw new KorvaneException(function, (Code)answer);
            return answer == 1;
        }

        // ---- Automation context and log ----

        public static void InitializeAutomation() => Done("InitializeAutomation", Native.initializeAutomation());
        public static void CleanupAutomation() => Native.cleanupAutomation();
        public static void SetTargetWindow(IntPtr window) => Done("SetTargetWindow", Native.setTargetWindow(window));
        public static void Delay(int milliseconds) => Native.delay(milliseconds);

        /// <summary>Without a path: in the user's local application data folder.</summary>
        public static void InitializeLog(string path = null) => Native.initializeLog(Texts.Whole(path));
        public static void LogAction(string action, Code result, int durationMs) => Native.logAction(Texts.Whole(action), (int)result, durationMs);
        public static void LogActionWithTimestamp(string action, Code result, int durationMs, DateTimeOffset time) =>
            Native.logActionWithTimestamp(Texts.Whole(action), (int)result, durationMs, time.ToUnixTimeMilliseconds());

        // ---- Capture and resolution ----

        public static TargetRecord CaptureTargetAtPoint(int x, int y)
        {
            Done("CaptureTargetAtPoint", Native.captureTargetAtPoint(out var target, x, y));
            return target;
        }

        public static TargetRecord CaptureTargetAtCursor()
        {
            Done("CaptureTargetAtCursor", Native.captureTargetAtCursor(out var target));
            return target;
        }

        public static void VerifyTarget(TargetRecord target, IntPtr window) => Done("VerifyTarget", Native.verifyTarget(ref target, window));
        public static void ClearElementCache() => Native.clearElementCache();

        // ---- Clicking and pasting; without a window, that of SetTargetWindow ----

        public static void ClickTarget(TargetRecord target, IntPtr window = default(IntPtr)) => Done("ClickTarget", Native.clickTarget(ref target, window));
        public static void EnsureWindowFocus(IntPtr window) => Done("EnsureWindowFocus", Native.ensureWindowFocus(window));
        public static void PasteToTargetWithVerify(TargetRecord target, IntPtr window = default(IntPtr)) =>
            Done("PasteToTargetWithVerify", Native.pasteToTargetWithVerify(ref target, window));
        public static void PasteToTargetWithVerifyEx(TargetRecord target, IntPtr window, int timeoutMs) =>
            Done("PasteToTargetWithVerifyEx", Native.pasteToTargetWithVerifyEx(ref target, window, timeoutMs));
        public static void PasteToTargetDirect(TargetRecord target, IntPtr window, string text, bool insert = false) =>
            Done("PasteToTargetDirect", Native.pasteToTargetDirect(ref target, window, Texts.Whole(text), insert ? 1 : 0));
        public static void PasteToTargetSimple(TargetRecord target, IntPtr window = default(IntPtr)) =>
            Done("PasteToTargetSimple", Native.pasteToTargetSimple(ref target, window));

        // ---- Keyboard ----

        public static void SendKey(int virtualKey) => Done("SendKey", Native.sendKey(virtualKey));
        public static void SendKeySequence(string text, int pauseMs = 1) => Done("SendKeySequence", Native.sendKeySequence(Texts.Whole(text), pauseMs));
        public static void SendAltA() => Done("SendAltA", Native.sendAltA());
        public static void SendAltB() => Done("SendAltB", Native.sendAltB());
        public static void SendAltD() => Done("SendAltD", Native.sendAltD());
        public static void SendAltE() => Done("SendAltE", Native.sendAltE());
        public static void SendAltP() => Done("SendAltP", Native.sendAltP());
        public static void SendAltT() => Done("SendAltT", Native.sendAltT());
        public static void SendAltZ() => Done("SendAltZ", Native.sendAltZ());
        public static void SendCtrlA() => Done("SendCtrlA", Native.sendCtrlA());
        public static void SendCtrlAltN() => Done("SendCtrlAltN", Native.sendCtrlAltN());
        public static void SendCtrlL() => Done("SendCtrlL", Native.sendCtrlL());
        public static void SendCtrlN() => Done("SendCtrlN", Native.sendCtrlN());
        public static void SendCtrlQ() => Done("SendCtrlQ", Native.sendCtrlQ());
        public static void SendCtrlS() => Done("SendCtrlS", Native.sendCtrlS());
        public static void SendCtrlShiftF3() => Done("SendCtrlShiftF3", Native.sendCtrlShiftF3());
        public static void SendCtrlV() => Done("SendCtrlV", Native.sendCtrlV());
        public static void SendShiftF2() => Done("SendShiftF2", Native.sendShiftF2());
        public static void SendShiftF4() => Done("SendShiftF4", Native.sendShiftF4());
        public static void SendShiftInsert() => Done("SendShiftInsert", Native.sendShiftInsert());

        // ---- Clipboard ----

        public static void SetClipboardText(string text) => Done("SetClipboardText", Native.setClipboardText(Texts.Whole(text)));

        public static void SetClipboardTextAndHtml(string text, string html)
        {
            var bytes = html == null ? null : StrictUtf8.GetBytes(Texts.Whole(html) + "\0");
            Done("SetClipboardTextAndHtml", Native.setClipboardTextAndHtml(Texts.Whole(text), bytes));
        }

        // ---- Reading, tests and waits ----

        /// <summary>The text, or null when there is none.</summary>
        public static string GetTargetText(TargetRecord target, IntPtr window)
        {
            var text = Native.getTargetText(ref target, window);
            try
            {
                return text == IntPtr.Zero ? null : Marshal.PtrToStringUni(text);
            }
            finally
            {
                Native.freeTextResult(text);
            }
        }

        public static bool IsTargetEmpty(TargetRecord target, IntPtr window) => YesOrNo("IsTargetEmpty", Native.isTargetEmpty(ref target, window));
        public static bool TargetContainsText(TargetRecord target, IntPtr window, string expected) =>
            YesOrNo("TargetContainsText", Native.targetContainsText(ref target, window, Texts.Whole(expected)));
        public static bool TargetContainsPartialText(TargetRecord target, IntPtr window, string part) =>
            YesOrNo("TargetContainsPartialText", Native.targetContainsPartialText(ref target, window, Texts.Whole(part)));
        public static void WaitForFieldChange(TargetRecord target, IntPtr window, string previous, int timeoutMs) =>
            Done("WaitForFieldChange", Native.waitForFieldChange(ref target, window, Texts.Whole(previous), timeoutMs));
        public static void WaitForFieldEmpty(TargetRecord target, IntPtr window, int timeoutMs) =>
            Done("WaitForFieldEmpty", Native.waitForFieldEmpty(ref target, window, timeoutMs));
        public static void WaitForTargetContainsPartialText(TargetRecord target, IntPtr window, string part, int timeoutMs) =>
            Done("WaitForTargetContainsPartialText", Native.waitForTargetContainsPartialText(ref target, window, Texts.Whole(part), timeoutMs));
        public static void WaitForTargetContainsText(TargetRecord target, IntPtr window, string expected, int timeoutMs) =>
            Done("WaitForTargetContainsText", Native.waitForTargetContainsText(ref target, window, Texts.Whole(expected), timeoutMs));

        /// <summary>Whether the focused field's text matches; goes through the clipboard.</summary>
        public static bool VerifySimple(string expected, IntPtr window = default(IntPtr))
        {
            var code = Native.verifySimple(Texts.Whole(expected), window);
            if (code != (int)Code.NotFound) Done("VerifySimple", code);
            return code == 0;
        }

        // ---- Windows and cancelling ----

        /// <summary>The window that the user clicks next, or zero.</summary>
        public static IntPtr FindWindowByClick() => Native.findWindowByClick();

        public static WindowInfo GetWindowInfo(IntPtr window)
        {
            Done("GetWindowInfo", Native.getWindowInfo(window, out var info));
            return info;
        }

        public static void StartCancelMonitor() => Native.startCancelMonitor();
        public static void StopCancelMonitor() => Native.stopCancelMonitor();
        public static bool IsCancelled() => Native.isCancelled() == 1;
    }

    /// <summary>From the log's opening to the clean-up, on one thread.</summary>
    public sealed class Session : IDisposable
    {
        public Session(string logPath = null)
        {
            Automation.InitializeLog(logPath);
            try
            {
                Automation.InitializeAutomation();
            }
            catch
            {
                Automation.CleanupAutomation();
                throw;
            }
        }

        public void Dispose() => Automation.CleanupAutomation();
    }
}
