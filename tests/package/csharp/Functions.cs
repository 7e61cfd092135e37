// What the .NET package offers, line by line, after trying what a call can meet.
using System;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;
using Korvane;

internal static class Binding
{
    private static void Check(bool holds, string what)
    {
        if (!holds) throw new InvalidOperationException("wrong: " + what);
    }

    private static void Fails(Code code, Action action)
    {
        try
        {
            action();
        }
        catch (KorvaneException error)
        {
            Check(error.Code == code, error.Message);
            return;
        }
        Check(false, "no " + code);
    }

    private static void Refuses(Action action)
    {
        try
        {
            action();
        }
        catch (ArgumentException)
        {
            return;
        }
        Check(false, "not refused");
    }

    private static void Describe(Type type)
    {
        Console.WriteLine(type.Name + " " + Marshal.SizeOf(type));
        foreach (var field in type.GetFields(BindingFlags.Instance | BindingFlags.NonPublic))
            Console.WriteLine(type.Name + "." + field.Name + " " + Marshal.OffsetOf(type, field.Name));
    }

    private static void Main()
    {
        Describe(typeof(TargetRecord));
        Describe(typeof(WindowInfo));
        foreach (var method in typeof(Automation).GetMethods(BindingFlags.Static | BindingFlags.Public))
            Console.WriteLine("offers " + method.Name);

        using (new Session("binding.log"))
        {
            var form = Stage.OpenForm(60, 60);
            var (x, y) = Stage.CentreOf(Stage.Name);
            var name = Automation.CaptureTargetAtPoint(x, y);
            var again = TargetRecord.FromBytes(name.ToBytes());
            Check(again.ToBytes().SequenceEqual(name.ToBytes()) && again.Equals(name) && !again.Equals(new TargetRecord()), "bytes");
            Check(again.Path.Count == 3 && again.Path[2].ClassName == "Edit" && again.ToString().Contains("\"101\""), again.ToString());
            Check(again.AutomationId == "101" && again.X == x && again.Y == y && again.PathLength == 3, "record");
            Check(again.Method == Method.Undecided, "method");
            var info = Automation.GetWindowInfo(form);
            Check(info.Title == "Order form" && info.ProcessName == "order_form.exe" && info.Window == form, "window");
            name.Method = Method.AutomationId;

            // No unit is changed on its way to the control and back.
            foreach (var text in new[] { "Ren\u00e9e", "\U0001f9ed", "low \udc00 high \ud800 end", new string('x', 70000) })
            {
                Automation.PasteToTargetDirect(name, form, text);
                Check(Automation.GetTargetText(name, form) == text, "text of " + text.Length);
                Check(Automation.TargetContainsText(name, form, text), "contains");
            }
            Check(!Automation.TargetContainsText(name, form, "other"), "contains not");
            Automation.PasteToTargetDirect(name, form, "");
            Check(Automation.GetTargetText(name, form) == null, "no text");

            Fails(Code.InvalidArgument, () => Automation.SetClipboardText(null));
            Fails(Code.InvalidArgument, () => Automation.ClickTarget(name));
            Fails(Code.NotFound, () => Automation.IsTargetEmpty(name, form));
            Fails(Code.Failed, () => Automation.WaitForTargetContainsText(name, form, "never", 20));
            Refuses(() => Automation.SetClipboardText("a\0b"));
            Refuses(() => Automation.SetClipboardTextAndHtml("a", "\ud800"));
            Automation.StartCancelMonitor();
            Check(!Automation.IsCancelled(), "cancelled");
            Automation.StopCancelMonitor();
            Stage.CloseForm();
        }
    }
}
