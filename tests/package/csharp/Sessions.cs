// Sessions, windows and targets of the .NET package.
using System;
using System.IO;
using System.Linq;
using System.Text.RegularExpressions;
using Korvane;

internal static class Sessions
{
    private static void Check(bool holds, string what)
    {
        if (!holds) throw new InvalidOperationException("wrong: " + what);
    }

    private static T Fails<T>(Action action) where T : Exception
    {
        try
        {
            action();
        }
        catch (T error)
        {
            return error;
        }
        throw new InvalidOperationException("no " + typeof(T).Name);
    }

    private static void Main()
    {
        using (var session = new Session("session.log"))
        {
            var handle = Stage.OpenForm(40, 40);
            var form = session.Window(new Regex("^Order"), process: "ORDER_FORM.exe");
            Check(form.Handle == handle && form.Title == "Order form" && form.Process == "order_form.exe", "window");
            var lost = Fails<NotFoundException>(() => session.Window("Order", timeout: TimeSpan.FromSeconds(0.25)));
            Check(lost.Message == "Window: no window with title \"Order\" within 0.25 s", lost.Message);
            Fails<ArgumentException>(() => session.Window());

            var (x, y) = Stage.CentreOf(Stage.Name);
            var name = form.TargetAt(x, y);
            Check(name.Record.Method == Method.AutomationId, "method");
            // The form itself has no AutomationId.
            Check(form.TargetAt(60, 60).Record.Method == Method.TreePath, "method of the form");
            name.Paste("Ada");
            Check(name.Text() == "Ada" && name.Check("Ad") && !name.Check("Ad", exact: true), "text");
            Check(form.TargetAtCursor().Record.AutomationId == name.Record.AutomationId, "what was clicked is under the mouse");
            form.Target(name.Record).Type("x");
            name.Wait("Adax", exact: true);
            var late = Fails<FailedException>(() => name.Wait("never", TimeSpan.FromMilliseconds(20)));
            Check(late.Function == "waitForTargetContainsPartialText" && late.Log.Count > 0, late.Message);
            Fails<InvalidArgumentException>(session.WindowOf(IntPtr.Zero).Focus);
            using (var monitor = new CancelMonitor()) Check(!monitor.IsCancelled, "cancelled");

            // A recording of the companion program.
            var levels = string.Join(",", name.Record.Path.Select(level =>
                "{\"controlType\":" + level.ControlType + ",\"className\":\"" + level.ClassName + "\",\"childIndex\":" + level.ChildIndex + "}"));
            File.WriteAllText("order.json",
                "{\"korvane\":1,\"windows\":[{\"title\":\"Order form\",\"class\":\"OrderForm\",\"process\":\"order_form.exe\",\"rect\":[0,0,0,0]}]," +
                "\"steps\":[{\"name\":\"Name\",\"action\":\"click\",\"window\":1,\"target\":{\"identificationMethod\":\"automation-id\"," +
                "\"automationId\":{\"units\":[\"0031\",\"0030\",\"0031\"]},\"x\":" + x + ",\"y\":" + y + ",\"hwnd\":\"" +
                name.Record.Window.ToInt64().ToString("x") + "\",\"pathLength\":" + name.Record.PathLength + ",\"levels\":[" + levels + "]}}]}");
            var recorded = session.TargetOfStep("order.json", "Name");
            Check(recorded.Record.Equals(name.Record), recorded.Record + " is not " + name.Record);
            recorded.Click();
            Check(session.TargetOfStep("order.json", 1).Record.Equals(name.Record), "by number");
            Fails<ArgumentException>(() => session.TargetOfStep("order.json", 2));
            Fails<ArgumentException>(() => session.TargetOfStep("order.json", "Street"));
            Stage.CloseForm();
        }
    }
}
