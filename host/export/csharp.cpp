#include "host/export/program.h"

namespace host {

namespace {

constexpr const char* kProgram =
    R"(// Does what the recording beside the program says, which also tells where everything is.
//
//     PROGRAM NAME=VALUE ...
using System;
using System.Collections.Generic;
using System.Diagnostics;
using System.IO;
using System.Linq;
using System.Threading;
using Korvane;

internal static class RecordedProgram
{
    private static readonly string Recording = Path.Combine(AppDomain.CurrentDomain.BaseDirectory, @RECORDING@);
    private static readonly string[] Given = { @GIVEN@ };
    private static readonly string[] Secrets = { @SECRETS@ }; // from environment variables of these names
    private static readonly TimeSpan Timeout = TimeSpan.FromSeconds(3); // for windows, elements and texts

    // The steps. `values` has what was given, and gets what is read.
    private static void Run(Session session, IDictionary<string, string> values)
    {
@STEPS@    }

    // What a step of the recording acts on, as soon as it is there.
    private static Target WhenThere(Target found)
    {
        var waited = Stopwatch.StartNew();
        while (true)
        {
            Automation.ClearElementCache();
            try
            {
                Automation.VerifyTarget(found.Record, found.Window.Handle);
                return found;
            }
            catch (NotFoundException) when (waited.Elapsed < Timeout)
            {
                Thread.Sleep(50);
            }
        }
    }

    private static Target Step(this Session session, string name) => WhenThere(session.TargetOfStep(Recording, name, Timeout));
    private static Target Step(this Session session, int number) => WhenThere(session.TargetOfStep(Recording, number, Timeout));

    // Asserts that it shows the text, or when it is to be exact nothing else, in this time.
    private static void Expect(Target target, string text, bool exact = false, TimeSpan timeout = default(TimeSpan))
    {
        var waited = Stopwatch.StartNew();
        while (true)
        {
            var shown = target.Text();
            if (shown != null && (exact ? shown == text : shown.Contains(text))) return;
            if (waited.Elapsed >= timeout)
                throw new InvalidOperationException("\"" + shown + "\" is shown, not \"" + text + "\"");
            Thread.Sleep(50);
        }
    }

    private static string Read(Target target) =>
        target.Text() ?? throw new InvalidOperationException(target.Record + " shows no text");

    private static void Empty(Target target)
    {
        target.Click();
        Automation.SendCtrlA();
        Automation.SendKey(0x2E); // Delete
    }

    private static void DoubleClick(Target target)
    {
        target.Click();
        Automation.ClickTarget(target.Record, target.Window.Handle);
    }

    private static int Main(string[] arguments)
    {
        var values = arguments.Select(each => each.Split(new[] { '=' }, 2)).ToDictionary(each => each[0], each => each.Last());
        foreach (var name in Secrets) values[name] = Environment.GetEnvironmentVariable(name);
        var missing = Given.Concat(Secrets).Where(name => !values.ContainsKey(name) || values[name] == null).ToList();
        if (missing.Count > 0)
        {
            Console.Error.WriteLine("no value for " + string.Join(", ", missing));
            return 1;
        }
        using (var session = new Session("korvane.log"))
        using (new CancelMonitor())
            Run(session, values);
        return 0;
    }
}
)";

std::string Variable(const std::string& name) {
  return "values[" + Quoted(name) + "]";
}

std::string Seconds(int milliseconds) {
  return milliseconds == 0 ? "Timeout" : "TimeSpan.FromMilliseconds(" + std::to_string(milliseconds) + ")";
}

std::string WindowOf(const WindowName& window) {
  return "session.Window(" + (window.title.empty() ? "" : "title: " + Quoted(window.title) + ", ") +
         (window.className.empty() ? "" : "className: " + Quoted(window.className) + ", ") +
         (window.process.empty() ? "" : "process: " + Quoted(window.process) + ", ") + "timeout: Timeout)";
}

class Csharp final : public Dialect {
 public:
  std::string Target(const std::string& name, std::size_t number) const override {
    return "session.Step(" + (name.empty() ? std::to_string(number) : Quoted(name)) + ")";
  }
  std::string Text(const std::string& text) const override {
    return Joined(text, Quoted, Variable);
  }
  std::string Click(const std::string& target) const override {
    return target + ".Click();";
  }
  std::string DoubleClick(const std::string& target) const override {
    return "DoubleClick(" + target + ");";
  }
  std::string Empty(const std::string& target) const override {
    return "Empty(" + target + ");";
  }
  std::string Type(const std::string& target, const std::string& text) const override {
    return target + ".Type(" + text + ");";
  }
  std::string Paste(const std::string& target, const std::string& text) const override {
    return target + ".Paste(" + text + ", Timeout);";
  }
  std::string Expect(const std::string& target, const std::string& text, Match match,
                     std::optional<int> timeoutMs) const override {
    return "Expect(" + target + ", " + text + (match == Match::Equals ? ", exact: true" : "") +
           (timeoutMs ? ", timeout: " + Seconds(*timeoutMs) : "") + ");";
  }
  std::string Focus(const WindowName& window) const override {
    return WindowOf(window) + ".Focus();";
  }
  std::string Send(const std::string& sender, int key, const std::string& keys) const override {
    return sender.empty() ? "Automation.SendKey(" + std::to_string(key) + "); // " + keys
                          : "Automation.S" + sender.substr(1) + "();";
  }
  std::vector<std::string> Read(const std::string& target, const std::string& variable) const override {
    return {Variable(variable) + " = Read(" + target + ");",
            "Console.WriteLine(" + Quoted(variable + " = ") + " + " + Variable(variable) + ");"};
  }
};

}  // namespace

std::string ExportedCsharp(const ExportedProgram& program) {
  return Filled(kProgram, {{"RECORDING", Quoted(program.file)},
                           {"GIVEN", Listed(program.given, Quoted)},
                           {"SECRETS", Listed(program.secrets, Quoted)},
                           {"STEPS", StepsIn(Csharp(), program, "        ")}});
}

}  // namespace host
