using System;
using System.Collections.Generic;
using System.Globalization;
using System.Linq;
using System.Runtime.InteropServices;
using System.Text;
using System.Xml.Linq;

namespace Korvane
{
    /// <summary>Which identification of a record is tried first, before its screen point.</summary>
    public enum Method
    {
        /// <summary>None: the screen point alone.</summary>
        Undecided = -1,
        /// <summary>The AutomationId.</summary>
        AutomationId = 0,
        /// <summary>The AutomationId; what a capture at the cursor without a tree path chooses.</summary>
        Coordinates = 2,
        /// <summary>The tree path.</summary>
        TreePath = 3,
    }

    /// <summary>One level of a tree path.</summary>
#if NULLABLE_BY_HAND
    [System.Runtime.CompilerServices.NullableContext(1)]
#endif
    public sealed class PathLevel
    {
        internal PathLevel(int controlType, string className, int childIndex)
        {
            ControlType = controlType;
            ClassName = className;
            ChildIndex = childIndex;
        }

        /// <summary>The UI Automation control type; 0: any.</summary>
        public int ControlType { get; }

        /// <summary>Empty: any.</summary>
        public string ClassName { get; }

        /// <summary>The position among siblings of the same type and class, from 1; 0: the first.</summary>
        public int ChildIndex { get; }
    }

    /// <summary>A captured element; a host stores <see cref="ToBytes"/> and reads it with <see cref="FromBytes"/>.</summary>
    [StructLayout(LayoutKind.Sequential)]
#if NULLABLE_BY_HAND
    [System.Runtime.CompilerServices.NullableContext(1)]
#endif
    public unsafe struct TargetRecord : IEquatable<TargetRecord>
    {
        /// <summary>The size of a record in bytes.</summary>
        public const int Size = 3256;

        private const int AutomationIdSize = 256, ClassNameSize = 64, MostLevels = 20;

        private fixed ushort automationId[AutomationIdSize];
        private IntPtr hwnd;
        private int x;
        private int y;
        private int identificationMethod;
        private int pathLength;
        private fixed int controlTypes[MostLevels];
        private fixed ushort classNames[MostLevels * ClassNameSize];
        private fixed int childIndices[MostLevels];

        /// <summary>The element's AutomationId; empty when it has none.</summary>
        public string AutomationId
        {
            get { fixed (ushort* units = automationId) return Texts.Read(units, AutomationIdSize); }
        }

        /// <summary>The window of the capture, or zero.</summary>
        public IntPtr Window => hwnd;

        /// <summary>The screen point of the capture, in pixels.</summary>
        public int X => x;

        /// <summary>The screen point of the capture, in pixels.</summary>
        public int Y => y;

        /// <summary>Levels of the tree path in use.</summary>
        public int PathLength => pathLength;

        /// <summary>Which identification is tried first.</summary>
        public Method Method
        {
            get => (Method)identificationMethod;
            set => identificationMethod = (int)value;
        }

        /// <summary>The levels of the tree path, outermost first.</summary>
        public IReadOnlyList<PathLevel> Path
        {
            get
            {
                var levels = new List<PathLevel>();
                fixed (ushort* names = classNames)
                fixed (int* types = controlTypes)
                fixed (int* indices = childIndices)
                {
                    for (var i = 0; i < Math.Min(pathLength, MostLevels); ++i)
                        levels.Add(new PathLevel(types[i], Texts.Read(names + i * ClassNameSize, ClassNameSize), indices[i]));
                }
                return levels;
            }
        }

        /// <summary>What a host stores.</summary>
        public byte[] ToBytes()
        {
            var bytes = new byte[Size];
            fixed (TargetRecord* record = &this) Marshal.Copy((IntPtr)record, bytes, 0, Size);
            return bytes;
        }

        /// <summary>The record of bytes that were stored.</summary>
        /// <exception cref="ArgumentException">They are not as many as a record has.</exception>
        public static TargetRecord FromBytes(byte[] bytes)
        {
            if (bytes == null || bytes.Length != Size) throw new ArgumentException("a record has " + Size + " bytes");
            TargetRecord record;
            Marshal.Copy(bytes, 0, (IntPtr)(&record), Size);
            return record;
        }

        // A step's target in a recording, read as XML.
        internal static TargetRecord FromRecording(XElement target)
        {
            var levels = target.Element("levels").Elements().ToArray();
            if (levels.Length > MostLevels) throw new ArgumentException("a record has at most " + MostLevels + " levels");
            var record = new TargetRecord
            {
                hwnd = new IntPtr(long.Parse(target.Element("hwnd").Value, NumberStyles.HexNumber, CultureInfo.InvariantCulture)),
                x = (int)target.Element("x"),
                y = (int)target.Element("y"),
                pathLength = (int)target.Element("pathLength"),
                Method = MethodOf(target.Element("identificationMethod").Value),
            };
            Texts.Write(record.automationId, AutomationIdSize, Texts.OfJson(target.Element("automationId")));
            for (var i = 0; i < levels.Length; ++i)
            {
                record.controlTypes[i] = (int)levels[i].Element("controlType");
                Texts.Write(record.classNames + i * ClassNameSize, ClassNameSize, Texts.OfJson(levels[i].Element("className")));
                record.childIndices[i] = (int)levels[i].Element("childIndex");
            }
            return record;
        }

        private static Method MethodOf(string word)
        {
            switch (word)
            {
                case "undecided": return Method.Undecided;
                case "automation-id": return Method.AutomationId;
                case "coordinates": return Method.Coordinates;
                case "tree-path": return Method.TreePath;
                default: return (Method)int.Parse(word, CultureInfo.InvariantCulture);
            }
        }

        /// <summary>Whether the other has the same bytes.</summary>
        public bool Equals(TargetRecord other) => ToBytes().SequenceEqual(other.ToBytes());

        /// <inheritdoc/>
        public override bool Equals(object other) => other is TargetRecord && Equals((TargetRecord)other);

        /// <inheritdoc/>
        public override int GetHashCode() => AutomationId.GetHashCode() ^ (x * 31 + y);

        /// <inheritdoc/>
        public override string ToString() =>
            "TargetRecord \"" + AutomationId + "\" at " + x + "," + y + ", " + Method + ", " + pathLength + " levels";
    }

    /// <summary>What GetWindowInfo tells of a window.</summary>
    [StructLayout(LayoutKind.Sequential)]
#if NULLABLE_BY_HAND
    [System.Runtime.CompilerServices.NullableContext(1)]
#endif
    public unsafe struct WindowInfo
    {
        private fixed ushort title[256];
        private fixed ushort processName[256];
        private IntPtr window;

        /// <summary>Cut to 255 units.</summary>
        public string Title
        {
            get { fixed (ushort* units = title) return Texts.Read(units, 256); }
        }

        /// <summary>The file name of the process, or "Unknown".</summary>
        public string ProcessName
        {
            get { fixed (ushort* units = processName) return Texts.Read(units, 256); }
        }

        /// <summary>The window asked about.</summary>
        public IntPtr Window => window;

        /// <inheritdoc/>
        public override string ToString() => "WindowInfo \"" + Title + "\" of " + ProcessName;
    }

    internal static unsafe class Texts
    {
        // Throws at a lone surrogate, which UTF-8 cannot hold.
        private static readonly Encoding StrictUtf8 = new UTF8Encoding(false, true);

        public static string Read(ushort* units, int size)
        {
            var length = 0;
            while (length < size && units[length] != 0) ++length;
            return new string((char*)units, 0, length);
        }

        public static void Write(ushort* units, int size, string text)
        {
            if (text.Length >= size) throw new ArgumentException("a text is longer than " + (size - 1) + " units");
            for (var i = 0; i < text.Length; ++i) units[i] = text[i];
        }

        // A text in a recording: a string, or units as hexadecimal numbers where a string would not bring back every one.
        public static string OfJson(XElement value)
        {
            var units = value.Element("units");
            if (units == null) return value.Value;
            return new string(units.Elements().Select(each => (char)Convert.ToUInt16(each.Value, 16)).ToArray());
        }

        // The marshaller would cut a text off at a NUL.
        public static string Whole(string text)
        {
            if (text != null && text.IndexOf('\0') >= 0) throw new ArgumentException("korvane: a NUL inside a text");
            return text;
        }

        public static byte[] Utf8(string text) => text == null ? null : StrictUtf8.GetBytes(Whole(text) + "\0");

        // A text that the library hands out, given back to it.
        public static string Owned(IntPtr text)
        {
            try
            {
                return text == IntPtr.Zero ? null : Marshal.PtrToStringUni(text);
            }
            finally
            {
                Native.freeTextResult(text);
            }
        }
    }
}
