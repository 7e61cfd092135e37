using System;
using System.Collections.Generic;
using System.Diagnostics;
using System.Diagnostics.CodeAnalysis;
using System.IO;
using System.Linq;
using System.Runtime.InteropServices;
using System.Runtime.Serialization.Json;
using System.Text.RegularExpressions;
using System.Threading;
using System.Xml;
using System.Xml.Linq;

namespace Korvane
{
    /// <summary>From the opening of the log to the clean-up, on one thread.</summary>
#if NULLABLE_BY_HAND
    [System.Runtime.CompilerServices.NullableContext(1)]
#endif
    public sealed class Session : IDisposable
    {
        private static readonly TimeSpan WindowTimeout = TimeSpan.FromSeconds(5);
        private const int PollMs = 50;

        private IntPtr lastWindow;
        private TargetRecord lastRecord;
        [AllowNull] private Stopwatch sinceLastClick;

        /// <summary>Opens the log and UI Automation.</summary>
        /// <param name="logPath">The log; without it the one in the user's local application data folder.</param>
        public Session([AllowNull] string logPath = null)
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

        /// <summary>Cleans up, on the thread that opened the session.</summary>
        public void Dispose() => Automation.CleanupAutomation();

        /// <summary>The only visible top-level window with the title, class and process, waited for.</summary>
        /// <param name="title">The whole title.</param>
        /// <param name="className">The window's class.</param>
        /// <param name="process">The file name of its process; upper and lower case are the same.</param>
        /// <param name="timeout">5 seconds unless told.</param>
        /// <exception cref="NotFoundException">There is none in time.</exception>
        /// <exception cref="InvalidArgumentException">There are several.</exception>
        public Window Window([AllowNull] string title = null, [AllowNull] string className = null, [AllowNull] string process = null,
            TimeSpan? timeout = null)
        {
            if (title == null && className == null && process == null)
                throw new ArgumentException("a title, a class or a process is needed");
            return WaitForWindow(title == null ? null : new Predicate<string>(each => each == title), "title \"" + title + "\"",
                className, process, timeout);
        }

        /// <summary>The only visible top-level window whose title matches, waited for; otherwise as by a whole title.</summary>
        public Window Window(Regex title, [AllowNull] string className = null, [AllowNull] string process = null,
            TimeSpan? timeout = null) =>
            WaitForWindow(title.IsMatch, "title /" + title + "/", className, process, timeout);

        private Window WaitForWindow(Predicate<string> title, string titleShown, string className, string process, TimeSpan? timeout)
        {
            var wanted = string.Join(", ", new[]
            {
                title == null ? null : titleShown,
                className == null ? null : "class \"" + className + "\"",
                process == null ? null : "process \"" + process + "\"",
            }.Where(each => each != null));
            var waited = Stopwatch.StartNew();
            while (true)
            {
                var found = Windows.Find(title, className, process);
                if (found.Count == 1) return new Window(this, found[0]);
                if (found.Count > 1)
                    throw Results.Error("Window", Code.InvalidArgument, found.Count + " windows with " + wanted);
                if (waited.Elapsed >= (timeout ?? WindowTimeout))
                    throw Results.Error("Window", Code.NotFound,
                        "no window with " + wanted + " within " + (timeout ?? WindowTimeout).TotalSeconds + " s");
                Thread.Sleep(PollMs);
            }
        }

        /// <summary>The window of a handle.</summary>
        public Window WindowOf(IntPtr handle) => new Window(this, handle);

        /// <summary>The window that the user clicks next; null when the mouse cannot be watched.</summary>
        [return: MaybeNull]
        public Window PickWindow()
        {
            var handle = Automation.FindWindowByClick();
            return handle == IntPtr.Zero ? null : new Window(this, handle);
        }

        /// <summary>The target of a step in a recording of the companion program.</summary>
        /// <param name="file">The recording.</param>
        /// <param name="step">The step's name.</param>
        /// <param name="timeout">How long its window is waited for, 5 seconds unless told.</param>
        /// <exception cref="NotFoundException">The window is not there.</exception>
        public Target TargetOfStep(string file, string step, TimeSpan? timeout = null) =>
            TargetOfStep(file, steps => steps.FirstOrDefault(each => (string)each.Element("name") == step), "\"" + step + "\"", timeout);

        /// <summary>The target of a step in a recording of the companion program, by the step's number from 1.</summary>
        /// <exception cref="NotFoundException">The window is not there.</exception>
        public Target TargetOfStep(string file, int step, TimeSpan? timeout = null) =>
            TargetOfStep(file, steps => steps.ElementAtOrDefault(step - 1), step.ToString(), timeout);

        private Target TargetOfStep(string file, Func<IEnumerable<XElement>, XElement> find, string step, TimeSpan? timeout)
        {
            XElement recording;
            using (var reader = JsonReaderWriterFactory.CreateJsonReader(File.ReadAllBytes(file), XmlDictionaryReaderQuotas.Max))
                recording = XElement.Load(reader);
            var found = find(recording.Element("steps").Elements());
            if (found == null || found.Element("target") == null)
                throw new ArgumentException(file + " has no step " + step + " with a target");
            var named = recording.Element("windows").Elements().ElementAt(((int?)found.Element("window") ?? 1) - 1);
            Func<string, string> given = name => string.IsNullOrEmpty((string)named.Element(name)) ? null : (string)named.Element(name);
            return Window(given("title"), given("class"), given("process"), timeout)
                .Target(TargetRecord.FromRecording(found.Element("target")));
        }

        // Makes sure that a click is not the second half of a double click on the same target, and forgets remembered points,
        // which may lie beside a window that has moved.
        internal void SeparateClick(IntPtr window, TargetRecord record)
        {
            if (sinceLastClick != null && lastWindow == window && lastRecord.Equals(record))
            {
                var left = Windows.DoubleClickMs + 1 - sinceLastClick.ElapsedMilliseconds;
                if (left > 0) Automation.Delay((int)left);
            }
            Automation.ClearElementCache();
        }

        internal void Clicked(IntPtr window, TargetRecord record)
        {
            lastWindow = window;
            lastRecord = record;
            sinceLastClick = Stopwatch.StartNew();
        }
    }

    /// <summary>A top-level window of another program.</summary>
#if NULLABLE_BY_HAND
    [System.Runtime.CompilerServices.NullableContext(1)]
#endif
    public sealed class Window
    {
        internal Window(Session session, IntPtr handle)
        {
            Session = session;
            Handle = handle;
        }

        /// <summary>The session it was found in.</summary>
        public Session Session { get; }

        /// <summary>Its handle.</summary>
        public IntPtr Handle { get; }

        /// <summary>Its title as it is now.</summary>
        public string Title => Automation.GetWindowInfo(Handle).Title;

        /// <summary>The file name of its process.</summary>
        public string Process => Automation.GetWindowInfo(Handle).ProcessName;

        /// <summary>Brings it to the foreground.</summary>
        public void Focus() => Automation.EnsureWindowFocus(Handle);

        /// <summary>The element at a point of the screen, in pixels.</summary>
        public Target TargetAt(int x, int y)
        {
            var record = Automation.CaptureTargetAtPoint(x, y);
            // The strongest identification that the element has. A path with a level that may be several elements is none.
            var levels = record.Path;
            var exact = levels.Count > 0 && levels.All(level => level.ControlType > 0 && level.ChildIndex > 0);
            if (record.AutomationId.Length > 0) record.Method = Method.AutomationId;
            else if (exact) record.Method = Method.TreePath;
            return Target(record);
        }

        /// <summary>The element under the mouse.</summary>
        public Target TargetAtCursor() => Target(Automation.CaptureTargetAtCursor());

        /// <summary>The element of a record that was kept.</summary>
        public Target Target(TargetRecord record) => new Target(this, record);
    }

    /// <summary>An element in a window, found anew for each call.</summary>
#if NULLABLE_BY_HAND
    [System.Runtime.CompilerServices.NullableContext(1)]
#endif
    public sealed class Target
    {
        private static readonly TimeSpan TextTimeout = TimeSpan.FromSeconds(3);

        internal Target(Window window, TargetRecord record)
        {
            Window = window;
            Record = record;
        }

        /// <summary>Its window.</summary>
        public Window Window { get; }

        /// <summary>What a host stores to find the element again.</summary>
        public TargetRecord Record { get; }

        /// <summary>Clicks it. Two calls are two clicks, never a double click.</summary>
        public void Click() => AfterClicks(() => Automation.ClickTarget(Record, Window.Handle));

        /// <summary>Puts the text on the clipboard, clicks, pastes, and waits until it shows; 3 seconds unless told.</summary>
        /// <exception cref="FailedException">The text did not show in time.</exception>
        public void Paste(string text, TimeSpan? timeout = null)
        {
            Automation.SetClipboardText(text);
            AfterClicks(() => Automation.PasteToTargetWithVerifyEx(Record, Window.Handle, Milliseconds(timeout ?? TextTimeout)));
        }

        /// <summary>Clicks it and types the text key by key.</summary>
        public void Type(string text, TimeSpan? pause = null)
        {
            Click();
            Automation.SendKeySequence(text, Milliseconds(pause ?? TimeSpan.Zero));
        }

        /// <summary>What it shows; null when no text can be read.</summary>
        [return: MaybeNull]
        public string Text() => Automation.GetTargetText(Record, Window.Handle);

        /// <summary>Waits until it shows the text, or when it is to be exact nothing else; 3 seconds unless told.</summary>
        /// <exception cref="FailedException">Time ran out.</exception>
        public void Wait(string text, TimeSpan? timeout = null, bool exact = false)
        {
            var time = Milliseconds(timeout ?? TextTimeout);
            if (exact) Automation.WaitForTargetContainsText(Record, Window.Handle, text, time);
            else Automation.WaitForTargetContainsPartialText(Record, Window.Handle, text, time);
        }

        /// <summary>Whether it shows the text, or when it is to be exact nothing else.</summary>
        public bool Check(string text, bool exact = false) =>
            exact ? Automation.TargetContainsText(Record, Window.Handle, text)
                : Automation.TargetContainsPartialText(Record, Window.Handle, text);

        // 0 would mean the library's own time-out.
        private static int Milliseconds(TimeSpan time) => Math.Max(1, (int)Math.Min(time.TotalMilliseconds, int.MaxValue));

        private void AfterClicks(Action act)
        {
            Window.Session.SeparateClick(Window.Handle, Record);
            try
            {
                act();
            }
            finally
            {
                Window.Session.Clicked(Window.Handle, Record);
            }
        }
    }

    /// <summary>Watches the Escape key as long as it lives: what runs then can end with a CancelledException.</summary>
    public sealed class CancelMonitor : IDisposable
    {
        /// <summary>Starts to watch.</summary>
        public CancelMonitor() => Automation.StartCancelMonitor();

        /// <summary>Whether Escape was pressed.</summary>
        public bool IsCancelled => Automation.IsCancelled();

        /// <summary>Ends watching.</summary>
        public void Dispose() => Automation.StopCancelMonitor();
    }

    // What is asked of the system itself: windows by name, and the user's double click. Off Windows, what stands in for the
    // library answers.
    internal static class Windows
    {
        private const int UsualDoubleClickMs = 500;
        private static readonly bool OnWindows = Environment.OSVersion.Platform == PlatformID.Win32NT;

        private static class User32
        {
            [DllImport("user32", CharSet = CharSet.Unicode), DefaultDllImportSearchPaths(DllImportSearchPath.System32)]
            public static extern IntPtr FindWindowExW(IntPtr parent, IntPtr after, string className, string title);
            [DllImport("user32"), DefaultDllImportSearchPaths(DllImportSearchPath.System32)]
            public static extern int IsWindowVisible(IntPtr window);
            [DllImport("user32"), DefaultDllImportSearchPaths(DllImportSearchPath.System32)]
            public static extern uint GetDoubleClickTime();
        }

        private static class StandIn
        {
            [DllImport("korvane", CharSet = CharSet.Unicode)]
            public static extern IntPtr FindWindowExW(IntPtr parent, IntPtr after, string className, string title);
        }

        public static long DoubleClickMs => OnWindows ? User32.GetDoubleClickTime() : UsualDoubleClickMs;

        private static IntPtr Next(IntPtr window, string className) =>
            OnWindows ? User32.FindWindowExW(IntPtr.Zero, window, className, null)
                : StandIn.FindWindowExW(IntPtr.Zero, window, className, null);

        public static List<IntPtr> Find(Predicate<string> title, string className, string process)
        {
            var found = new List<IntPtr>();
            for (var window = Next(IntPtr.Zero, className); window != IntPtr.Zero; window = Next(window, className))
            {
                if (OnWindows && User32.IsWindowVisible(window) == 0) continue;
                var info = Automation.GetWindowInfo(window);
                var sameProcess = process == null || string.Equals(process, info.ProcessName, StringComparison.OrdinalIgnoreCase);
                if (sameProcess && (title == null || title(info.Title))) found.Add(window);
            }
            return found;
        }
    }
}
