// Captures four elements of the order form, opens the form elsewhere and fills it in by the records.
using System;
using System.Linq;
using Korvane;

internal static class OrderForm
{
    private const int TimeoutMs = 3000;

    private static byte[] Capture(int control)
    {
        var (x, y) = Stage.CentreOf(control);
        var record = Automation.CaptureTargetAtPoint(x, y);
        record.Method = Method.TreePath;
        return record.ToBytes(); // as it would go into a file
    }

    private static void Paste(TargetRecord record, IntPtr form, string text)
    {
        Automation.SetClipboardText(text);
        Automation.PasteToTargetWithVerifyEx(record, form, TimeoutMs);
    }

    private static void Main()
    {
        using (new Session("korvane.log"))
        {
            Stage.OpenForm(40, 40);
            var stored = new[] { Stage.Name, Stage.Article, Stage.Submit, Stage.Status }.Select(Capture).ToArray();

            // Anywhere else, at any later time.
            var form = Stage.OpenForm(420, 300);
            var records = stored.Select(TargetRecord.FromBytes).ToArray();
            TargetRecord name = records[0], article = records[1], submit = records[2], status = records[3];
            Automation.VerifyTarget(name, form);
            Paste(name, form, "Renée García");
            Paste(article, form, "Brass compass");
            Automation.ClickTarget(submit, form);
            Automation.WaitForTargetContainsPartialText(status, form, "Submitted", TimeoutMs);
            Console.WriteLine(Automation.GetTargetText(status, form));
            Stage.CloseForm();
        }
    }
}
