#include "host/export/program.h"

namespace host {

namespace {

constexpr const char* kProgram =
    R"(// Does what the recording beside the program says, which also tells where everything is.
//
//     PROGRAM NAME=VALUE ...
//
// C++17, linked with korvane and user32; mingw also takes -municode.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <korvane/recording.hpp>
#include <map>
#include <string>

using korvane::Code;
using korvane::Text;

#if defined(_WIN32)
#define T(text) L##text
#else
#define T(text) u##text
#endif

namespace {

const std::chrono::milliseconds kTimeout(3000);  // for windows, elements and texts
std::filesystem::path g_recording;
std::map<std::string, Text> g_values;  // what was given, and what is read

[[noreturn]] void Fail(const std::string& why) {
  std::fprintf(stderr, "%s\n", why.c_str());
  korvane::CleanupAutomation();
  std::exit(1);
}

void Must(Code code, const char* what) {
  if (code != Code::Ok) {
    Fail(std::string(what) + ": " + korvane::NameOf(code) + "; korvane.log tells more");
  }
}

std::string Utf8(const Text& text) {
  const auto bytes = std::filesystem::path(text).u8string();
  return {bytes.begin(), bytes.end()};
}

/** An argument or an environment variable, in whatever form the system has it. */
Text FromSystem(const std::filesystem::path& text) {
#if defined(_WIN32)
  return text.wstring();
#else
  return text.u16string();
#endif
}

[[maybe_unused]] void TakeSecret(const char* name) {
#if defined(_WIN32)
  const wchar_t* const value = _wgetenv(std::filesystem::path(name).c_str());
#else
  const char* const value = std::getenv(name);
#endif
  if (value != nullptr) {
    g_values[name] = FromSystem(value);
  }
}

/** What a step of the recording acts on, as soon as it is there. */
template <class NameOrNumber>
korvane::Target Step(NameOrNumber step) {
  korvane::Target target;
  Must(korvane::TargetOfStep(target, g_recording, step, kTimeout), "the window of a step");
  const auto end = std::chrono::steady_clock::now() + kTimeout;
  for (;;) {
    korvane::ClearElementCache();
    const Code code = korvane::VerifyTarget(target.Record(), target.WindowHandle());
    if (code == Code::Ok) {
      return target;
    }
    if (code != Code::NotFound || std::chrono::steady_clock::now() >= end) {
      Must(code, "the target of a step");
    }
    korvane::Delay(std::chrono::milliseconds(50));
  }
}

/** Asserts that it shows the text, or when `exact` nothing else, in this time. */
[[maybe_unused]] void Expect(const korvane::Target& target, const Text& text, bool exact,
                             std::chrono::milliseconds timeout) {
  const auto end = std::chrono::steady_clock::now() + timeout;
  for (;;) {
    const korvane::OwnedText shown = target.Text();
    if (shown && (exact ? shown.View() == text : shown.View().find(text) != korvane::TextView::npos)) {
      return;
    }
    if (std::chrono::steady_clock::now() >= end) {
      Fail("\"" + Utf8(Text(shown.View())) + "\" is shown, not \"" + Utf8(text) + "\"");
    }
    korvane::Delay(std::chrono::milliseconds(50));
  }
}

[[maybe_unused]] Text Read(const korvane::Target& target) {
  const korvane::OwnedText text = target.Text();
  if (!text) {
    Fail("a target shows no text");
  }
  return Text(text.View());
}

[[maybe_unused]] void Empty(const korvane::Target& target) {
  Must(target.Click(), "click");
  Must(korvane::SendCtrlA(), "Ctrl+A");
  Must(korvane::SendKey(0x2E), "Delete");
}

[[maybe_unused]] void DoubleClick(const korvane::Target& target) {
  Must(target.Click(), "click");
  Must(korvane::ClickTarget(target.Record(), target.WindowHandle()), "second click");
}

[[maybe_unused]] void Focus(const korvane::WindowName& name) {
  korvane::Window window;
  Must(korvane::WaitForWindow(window, name, kTimeout), "the window of a step");
  Must(window.Focus(), "focus");
}

void Run() {
  auto& values = g_values;
@STEPS@}

}  // namespace

#if defined(_WIN32)
int wmain(int count, wchar_t** arguments) {
#else
int main(int count, char** arguments) {
#endif
  g_recording = std::filesystem::path(arguments[0]).parent_path() / std::filesystem::path(T(@RECORDING@));
  for (int i = 1; i < count; ++i) {
    const Text argument = FromSystem(arguments[i]);
    const auto equals = argument.find(T('='));
    if (equals == Text::npos) {
      Fail("NAME=VALUE is needed");
    }
    g_values[Utf8(argument.substr(0, equals))] = argument.substr(equals + 1);
  }
@TAKE@  for (const char* const name : @NEEDED@) {
    if (g_values.count(name) == 0) {
      Fail(std::string("no value for ") + name);
    }
  }
  const korvane::Session session(T("korvane.log"));
  Must(session.Started(), "UI Automation");
  const korvane::CancelMonitor monitor;
  Run();
  return 0;
}
)";

std::string Wide(const std::string& text) {
  return "T(" + LiteralOfC(text) + ")";
}

// Put together from whole texts: a literal alone could not be added to another one.
std::string Whole(const std::string& text) {
  return "Text(" + Wide(text) + ")";
}

std::string Variable(const std::string& name) {
  return "values[" + LiteralOfC(name) + "]";
}

std::string Milliseconds(int milliseconds) {
  return milliseconds == 0 ? "kTimeout" : "std::chrono::milliseconds(" + std::to_string(milliseconds) + ")";
}

class Cpp final : public Dialect {
 public:
  std::string Target(const std::string& name, std::size_t number) const override {
    return "Step(" + (name.empty() ? std::to_string(number) : Wide(name)) + ")";
  }
  std::string Text(const std::string& text) const override {
    return Joined(text, PartsOf(text).size() < 2 ? Wide : Whole, Variable);
  }
  std::string Click(const std::string& target) const override {
    return "Must(" + target + ".Click(), \"click\");";
  }
  std::string DoubleClick(const std::string& target) const override {
    return "DoubleClick(" + target + ");";
  }
  std::string Empty(const std::string& target) const override {
    return "Empty(" + target + ");";
  }
  std::string Type(const std::string& target, const std::string& text) const override {
    return "Must(" + target + ".Type(" + text + "), \"type\");";
  }
  std::string Paste(const std::string& target, const std::string& text) const override {
    return "Must(" + target + ".Paste(" + text + ", kTimeout), \"paste\");";
  }
  std::string Expect(const std::string& target, const std::string& text, Match match,
                     std::optional<int> timeoutMs) const override {
    return "Expect(" + target + ", " + text + (match == Match::Equals ? ", true, " : ", false, ") +
           (timeoutMs ? Milliseconds(*timeoutMs) : "std::chrono::milliseconds(0)") + ");";
  }
  std::string Focus(const WindowName& window) const override {
    return "Focus({" + Wide(window.title) + ", " + Wide(window.className) + ", " + Wide(window.process) + "});";
  }
  std::string Send(const std::string& sender, int key, const std::string& keys) const override {
    return "Must(korvane::" +
           (sender.empty() ? "SendKey(" + std::to_string(key) + ")" : "S" + sender.substr(1) + "()") + ", " +
           LiteralOfC(keys) + ");";
  }
  std::vector<std::string> Read(const std::string& target, const std::string& variable) const override {
    return {Variable(variable) + " = Read(" + target + ");",
            "std::printf(\"%s = %s\\n\", " + LiteralOfC(variable) + ", Utf8(" + Variable(variable) + ").c_str());"};
  }
};

}  // namespace

std::string ExportedCpp(const ExportedProgram& program) {
  std::string take;
  for (const std::string& name : program.secrets) {
    take += "  TakeSecret(" + LiteralOfC(name) + ");\n";
  }
  std::vector<std::string> needed = program.given;
  needed.insert(needed.end(), program.secrets.begin(), program.secrets.end());
  return Filled(kProgram, {{"RECORDING", LiteralOfC(program.file)},
                           {"TAKE", take},
                           {"NEEDED", "std::initializer_list<const char*>{" + Listed(needed, LiteralOfC) + "}"},
                           {"STEPS", StepsIn(Cpp(), program, "  ")}});
}

}  // namespace host
