using System;
using System.Runtime.InteropServices;

// The order form to automate, in stage.dll of the package. Hosts do not need it.
internal static class Stage
{
    public const int Name = 101, Article = 201, Note = 202, Submit = 301, Status = 401;

    [DllImport("stage")] private static extern int stageOpenForm(int x, int y);
    [DllImport("stage")] private static extern void stageCloseForm();
    [DllImport("stage")] private static extern IntPtr stageFormWindow();
    [DllImport("stage")] private static extern int stageCentreOf(int control, out int x, out int y);

    public static IntPtr OpenForm(int x, int y)
    {
        if (stageOpenForm(x, y) != 0) throw new InvalidOperationException("the order form does not come up");
        return stageFormWindow();
    }

    public static void CloseForm() => stageCloseForm();

    public static (int X, int Y) CentreOf(int control)
    {
        if (stageCentreOf(control, out var x, out var y) != 0) throw new ArgumentException("no control " + control);
        return (x, y);
    }
}
