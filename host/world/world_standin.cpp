// The scripted desktop: an order form at a place that the environment tells, and a user who acts at set times.
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <sstream>

#include "host/base/failure.h"
#include "host/base/text.h"
#include "host/world/world.h"
#include "host/world/world_standin_picture.h"
#include "samples/order_form/twin.h"
#include "standin/desktop/desktop.h"

namespace host::world {

namespace {

using standin::TheDesktop;

constexpr const char* kScript = "KORVANE_DESKTOP";
constexpr Point kUsualPlace{40, 40};
// Calls into another program take their time on a real desktop, too.
constexpr double kCrossProcessCost = 0.2;

// Made after the desktop that it is on, and so gone before it.
std::unique_ptr<order_form::Twin>& Form() {
  TheDesktop();
  static std::unique_ptr<order_form::Twin> form;
  return form;
}

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

// One instruction of the script: a word and its numbers.
void Obey(const std::string& instruction) {
  std::istringstream words(instruction);
  std::string word;
  std::vector<int> numbers;
  words >> word;
  for (int number = 0; words >> number;) {
    numbers.push_back(number);
    words >> std::ws;
    words.peek() == ',' ? words.ignore() : words;
  }
  const bool complete = words.eof();
  if (word == "form" && complete && numbers.size() == 2) {
    Form() = std::make_unique<order_form::Twin>(numbers[0], numbers[1]);
  } else if (word == "no-form" && complete && numbers.empty()) {
    Form().reset();
  } else if (word == "click" && complete && numbers.size() == 3) {
    TheDesktop().Clock().After(numbers[0], [numbers] { TheDesktop().User().Click(numbers[1], numbers[2]); });
  } else if (word == "escape" && complete && numbers.size() == 1) {
    TheDesktop().User().HoldEscape(numbers[0], 120);
  } else if (word == "close" && complete && numbers.size() == 1) {
    TheDesktop().Clock().After(numbers[0], [] { Form().reset(); });
  } else if (word == "title" && complete && numbers.empty() && Form()) {
    TheDesktop().Windows().SetTitle(Form()->Window(), TEXT("Order form - draft"));
  } else {
    throw Failure(ExitCode::Usage, std::string(kScript) + ": cannot follow \"" + instruction + "\"");
  }
}

std::optional<Window> DescribeTop(HWND window) {
  WindowInfo info{};
  RECT rect{};
  if (window == nullptr || !IsWindow(window) || !GetWindowRect(window, &rect) ||
      getWindowInfo(window, &info) != KORVANE_OK) {
    return std::nullopt;
  }
  const bool isForm = Form() && window == Form()->Window();
  return Window{window, Utf8(info.title), isForm ? Utf8(order_form::kWindowClass) : std::string(),
                Utf8(info.processName), FromRect(rect)};
}

bool Contains(const RECT& rect, Point point) {
  return point.x >= rect.left && point.x < rect.right && point.y >= rect.top && point.y < rect.bottom;
}

}  // namespace

void Start() {
  TheDesktop().Reset();
  TheDesktop().Calls().SetTracing(false);
  TheDesktop().Calls().SetCrossProcessCost(kCrossProcessCost);
  SetClock();
  Form() = std::make_unique<order_form::Twin>(kUsualPlace.x, kUsualPlace.y);
  const char* script = std::getenv(kScript);
  std::istringstream instructions(script != nullptr ? script : "");
  for (std::string instruction; std::getline(instructions, instruction, ';');) {
    if (const std::string trimmed = Trimmed(instruction); !trimmed.empty()) {
      Obey(trimmed);
    }
  }
}

std::vector<std::string> Arguments(int count, char** arguments) {
  return {arguments + 1, arguments + count};
}

std::string HelpAboutThisWorld() {
  return "This is the build for the scripted desktop: every run begins with a fresh order form at 40,40. The "
         "environment\nvariable KORVANE_DESKTOP changes that: \"form X,Y\", \"no-form\", \"title\", \"click MS X,Y\", "
         "\"escape MS\", \"close MS\",\nseparated by semicolons.";
}

std::vector<Window> Windows() {
  std::vector<Window> windows;
  if (Form()) {
    if (const auto form = DescribeTop(Form()->Window())) {
      windows.push_back(*form);
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

std::optional<Rect> ElementAt(Point point) {
  auto element = TheDesktop().Elements().Root();
  const auto root = element;
  for (bool deeper = true; deeper;) {
    deeper = false;
    for (const auto child : TheDesktop().Elements().ChildrenOf(element)) {
      if (Contains(TheDesktop().Elements().RectangleOf(child), point)) {
        element = child;
        deeper = true;
        break;
      }
    }
  }
  return element == root ? std::nullopt : std::optional(FromRect(TheDesktop().Elements().RectangleOf(element)));
}

double Now() {
  return TheDesktop().Clock().Now();
}

std::optional<Picture> TakePicture(HWND window) {
  if (!Form() || window != Form()->Window()) {
    return std::nullopt;
  }
  return DrawForm(*Form());
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
  return isatty(STDOUT_FILENO) != 0;
}

}  // namespace host::world
