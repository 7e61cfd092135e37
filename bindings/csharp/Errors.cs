using System;
using System.Collections.Generic;
using System.IO;
using System.Linq;
using System.Text;

namespace Korvane
{
    /// <summary>What functions answer.</summary>
    public enum Code
    {
        /// <summary>Success.</summary>
        Ok = 0,
        /// <summary>An element, a window or a text is not there.</summary>
        NotFound = -1,
        /// <summary>An argument is null or empty, or does not name one thing.</summary>
        InvalidArgument = -2,
        /// <summary>The platform failed, or time ran out.</summary>
        Failed = -3,
        /// <summary>The user pressed Escape.</summary>
        Cancelled = -4,
    }

    /// <summary>A function answered a code other than Ok.</summary>
#if NULLABLE_BY_HAND
    [System.Runtime.CompilerServices.NullableContext(1)]
#endif
    public class KorvaneException : Exception
    {
        internal KorvaneException(string function, Code code, string details)
            : base(function + ": " + (details ?? code.ToString()))
        {
            Function = function;
            Code = code;
            Log = Results.LastLogLines();
        }

        /// <summary>The exported function, or the method that gave up.</summary>
        public string Function { get; }

        /// <summary>What it answered.</summary>
        public Code Code { get; }

        /// <summary>The last lines of the log when it failed, which tell why; none while no log is open.</summary>
        public IReadOnlyList<string> Log { get; }
    }

    /// <summary>An element, a window or a text is not there.</summary>
    public sealed class NotFoundException : KorvaneException
    {
        internal NotFoundException(string function, string details) : base(function, Code.NotFound, details) { }
    }

    /// <summary>An argument is null or empty, or does not name one thing.</summary>
    public sealed class InvalidArgumentException : KorvaneException
    {
        internal InvalidArgumentException(string function, string details) : base(function, Code.InvalidArgument, details) { }
    }

    /// <summary>The platform failed, or time ran out.</summary>
    public sealed class FailedException : KorvaneException
    {
        internal FailedException(string function, string details) : base(function, Code.Failed, details) { }
    }

    /// <summary>The user pressed Escape.</summary>
    public sealed class CancelledException : KorvaneException
    {
        internal CancelledException(string function, string details) : base(function, Code.Cancelled, details) { }
    }

    internal static class Results
    {
        private const int LogLines = 8;
        private const int LogBytes = 8192;
        private static string logPath;

        public static void Check(string function, int code)
        {
            if (code != 0) throw Error(function, (Code)code, null);
        }

        public static bool Answer(string function, int answer)
        {
            if (answer < 0) throw Error(function, (Code)answer, null);
            return answer == 1;
        }

        // Of a comparison: not found means that the texts differ.
        public static bool Match(string function, int code)
        {
            if (code != (int)Code.NotFound) Check(function, code);
            return code == 0;
        }

        public static KorvaneException Error(string function, Code code, string details)
        {
            switch (code)
            {
                case Code.NotFound: return new NotFoundException(function, details);
                case Code.InvalidArgument: return new InvalidArgumentException(function, details);
                case Code.Failed: return new FailedException(function, details);
                case Code.Cancelled: return new CancelledException(function, details);
                default: return new KorvaneException(function, code, details);
            }
        }

        public static void OpenLog(string path)
        {
            var usual = Path.Combine(Environment.GetFolderPath(Environment.SpecialFolder.LocalApplicationData), "Tavrin",
                "automation_execution.log");
            logPath = Path.GetFullPath(string.IsNullOrEmpty(path) ? usual : path);
        }

        public static void CloseLog() => logPath = null;

        public static string[] LastLogLines()
        {
            if (logPath == null) return new string[0];
            try
            {
                using (var file = new FileStream(logPath, FileMode.Open, FileAccess.Read, FileShare.ReadWrite))
                {
                    var cut = file.Length > LogBytes;
                    if (cut) file.Seek(-LogBytes, SeekOrigin.End);
                    using (var reader = new StreamReader(file, Encoding.GetEncoding("iso-8859-1")))
                    {
                        var lines = reader.ReadToEnd().Split(new[] { "\r\n" }, StringSplitOptions.RemoveEmptyEntries);
                        return lines.Skip(Math.Max(cut ? 1 : 0, lines.Length - LogLines)).ToArray();
                    }
                }
            }
            catch (Exception)
            {
                return new string[0]; // an error about the log would hide the one that is being told
            }
        }
    }
}
