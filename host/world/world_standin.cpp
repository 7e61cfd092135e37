// The scripted desktop: an order form at a place that the environment tells, and a user who acts at set times.
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <ctime>

#include "host/base/failure.h"
#include "host/base/text.h"
#include "host/world/world.h"
#include "host/world/world_standin_picture.h"
#include "host/world/world_standin_script.h"
#include "standin/desktop/desktop.h"
#include "standin/desktop/state.h"

namespace host::world {

namespace {

using standin::TheDesktop;

// Calls into another program take their time on a real desktop, too.
constexpr double kCrossProcessCost = 0.2;

Rect FromRect(const RECT& rect) {
  return {rect.left, rect.top, rect.right, rect.bottom};
}

void SetClock() {
  const auto now = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  std::tm calendar{};
  localtime_r(&seconds, &calendar);
  const auto word = [](int number) { return static_cast<WORD>(number); };
  const auto milliseconds =
      std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
  TheDesktop().Clock().SetLocalTime({word(calendar.tm_year + 1900), word(calendar.tm_mon + 1), word(calendar.tm_wday),
                                     word(calendar.tm_mday), word(calendar.tm_hour), word(calendar.tm_min),
                                     word(calendar.tm_sec), static_cast<WORD>(milliseconds)});
  TheDesktop().Clock().SetUtcOffsetMinutes(static_cast<int>(calendar.tm_gmtoff / 60));
}

std::optional<Window> DescribeTop(HWND window) {
  WindowInfo info{};
  RECT rect{};
  if (window == nullptr || !IsWindow(window) || !GetWindowRect(window, &rect) ||
      getWindowInfo(window, &info) != KORVANE_OK) {
    return std::nullopt;
  }
  const auto className = TheDesktop().Internals().Property(TheDesktop().Elements().Of(window), UIA_ClassNamePropertyId);
  return Window{window, Utf8(info.title), Utf8(className.text), Utf8(info.processName), FromRect(rect)};
}

}  // namespace

void Start() {
  TheDesktop().Reset();
  TheDesktop().Calls().SetTracing(false);
  TheDesktop().Calls().SetCrossProcessCost(kCrossProcessCost);
  SetClock();
  const char* script = std::getenv(kScript);
  SetScene(script != nullptr ? script : "");
}

std::vector<std::string> Arguments(int count, char** arguments) {
  return {arguments + 1, arguments + count};
}

std::optional<std::string> EnvironmentVariable(const std::string& name) {
  const char* const value = std::getenv(name.c_str());
  return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

std::string HelpAboutThisWorld() {
  return "This is the build for the scripted desktop: every run begins with a fresh order form at 40,40. The "
         "environment\nvariable " +
         std::string(kScript) + " changes that, in instructions separated by semicolons: " + AllInstructions() + ".";
}

std::vector<Window> Windows() {
  std::vector<Window> windows;
  standin::State& state = TheDesktop().Internals();
  for (const auto element : state.Children(state.Root())) {
    if (auto window = DescribeTop(state.WindowOf(element)); window && !window->className.empty()) {
      windows.insert(windows.begin(), std::move(*window));
    }
  }
  return windows;
}

std::optional<Window> WindowAt(Point point) {
  const HWND window = WindowFromPoint({point.x, point.y});
  return window == nullptr ? std::nullopt : DescribeTop(GetAncestor(window, GA_ROOT));
}

std::optional<Window> Describe(HWND window) {
  return DescribeTop(window);
}

Point Cursor() {
  const POINT cursor = TheDesktop().User().Cursor();
  return {cursor.x, cursor.y};
}

HWND RootAt(Point point) {
  const HWND window = WindowFromPoint({point.x, point.y});
  return window == nullptr ? nullptr : GetAncestor(window, GA_ROOT);
}

HWND OwnerOf(HWND window) {
  return GetParent(window);
}

HWND ForegroundWindow() {
  return GetForegroundWindow();
}

bool Click(Point point, int times) {
  SetCursorPos(point.x, point.y);
  for (int i = 0; i < times; ++i) {
    mouse_event(MOUSEEVENTF_LEFTDOWN | MOUSEEVENTF_LEFTUP, 0, 0, 0, 0);
  }
  return true;
}

bool SendKeys(const std::vector<int>& keys) {
  std::vector<INPUT> inputs(keys.size() * 2);
  for (std::size_t i = 0; i < keys.size(); ++i) {
    INPUT& down = inputs[i];
    INPUT& up = inputs[inputs.size() - 1 - i];
    down.type = up.type = INPUT_KEYBOARD;
    down.ki.wVk = up.ki.wVk = static_cast<WORD>(keys[i]);
    up.ki.dwFlags = KEYEVENTF_KEYUP;
  }
  return SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof(INPUT)) == inputs.size();
}

bool HasKeysFor(KorvaneChar unit) {
  return VkKeyScanW(unit) != -1;
}

std::optional<std::string> WhyNoInput() {
  return TheScene().locked ? std::optional<std::string>("the desktop is locked, or its session is disconnected")
                           : std::nullopt;
}

std::optional<std::string> WhyOutOfReach(HWND /*window*/) {
  return TheScene().elevated ? std::optional<std::string>("its program runs as administrator, and this one does not")
                             : std::nullopt;
}

Screen TheScreen() {
  return {{0, 0, 1920, 1080}, TheScene().dpi};
}

double Now() {
  return TheDesktop().Clock().Now();
}

std::optional<Picture> TakePicture(HWND window, Settle /*settle*/) {
  const auto& form = TheScene().form;
  return form && window == form->Window() ? std::optional(DrawForm(*form)) : std::nullopt;
}

std::optional<Picture> TakePictureOfScreen() {
  return DrawScreen(TheScreen().rect, TheScene().form.get());
}

std::optional<std::string> WhyNobodyCanClick() {
  return TheScene().clicks ? std::nullopt
                           : std::optional<std::string>("nobody clicks on the scripted desktop unless " +
                                                        std::string(kScript) + " says \"click MS X,Y\"");
}

std::optional<std::string> WhyNobodyCanPoint() {
  return "the scripted desktop has no mouse to point with";
}

char WaitForKey() {
  throw Failure(ExitCode::NotHere, *WhyNobodyCanPoint());
}

std::string AskForLine(const std::string& /*question*/) {
  throw Failure(ExitCode::NotHere, *WhyNobodyCanPoint());
}

bool OutputIsTerminal() {
  const char* const kind = std::getenv("TERM");
  return isatty(STDOUT_FILENO) != 0 && kind != nullptr && std::string_view(kind) != "dumb";
}

}  // namespace host::world
