// Captures four elements of the order form, opens the form elsewhere and fills it in by the records.
using System;
using System.Linq;
using Korvane;

internal static class OrderForm
{
    private static byte[] Capture(Window form, int control)
    {
        var (x, y) = Stage.CentreOf(control);
        return form.TargetAt(x, y).Record.ToBytes(); // as it would go into a file
    }

    private static void Main()
    {
        using (var session = new Session("korvane.log"))
        {
            var first = session.WindowOf(Stage.OpenForm(40, 40));
            var stored = new[] { Stage.Name, Stage.Article, Stage.Submit, Stage.Status }
                .Select(control => Capture(first, control)).ToArray();

            // Anywhere else, at any later time.
            Stage.OpenForm(420, 300);
            var form = session.Window(title: "Order form", className: "OrderForm");
            var targets = stored.Select(bytes => form.Target(TargetRecord.FromBytes(bytes))).ToArray();
            Target name = targets[0], article = targets[1], submit = targets[2], status = targets[3];
            name.Paste("Renée García");
            article.Paste("Brass compass");
            submit.Click();
            status.Wait("Submitted");
            Console.WriteLine(status.Text());
            Stage.CloseForm();
        }
    }
}
