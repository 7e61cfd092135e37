// What every native test shares: an empty desktop, a log of its own, and at the end the proof that nothing is left
// over.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "korvane/korvane.h"
#include "platform/owners.h"
#include "standin/desktop/desktop.h"
#include "tests/native/lines.h"

namespace tests {

using namespace korvane;
using standin::TheDesktop;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class DesktopTest : public ::testing::Test {
 protected:
  void SetUp() override {
    TheDesktop().Reset();
    folder_ = std::filesystem::temp_directory_path() /
              ("korvane-" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()) + "-" +
               std::to_string(::testing::UnitTest::GetInstance()->random_seed()) + "-" + std::to_string(getpid()));
    std::filesystem::create_directories(folder_);
    OpenLog();
  }

  // The state that outlives a cleanup is emptied too, so that no test sees another's.
  void TearDown() override {
    TheDesktop().Faults().Stop();
    cleanupAutomation();
    clearElementCache();
    ClearCancelled();
    EXPECT_THAT(TheDesktop().Ledger().Outstanding(), IsEmpty());
    EXPECT_THAT(TheDesktop().Ledger().Misuses(), IsEmpty());
    std::filesystem::remove_all(folder_);
  }

  void OpenLog() {
    initializeLog(LogPath().u16string().c_str());
  }
  std::filesystem::path LogPath() const {
    return folder_ / "log.txt";
  }
  const std::filesystem::path& Folder() const {
    return folder_;
  }

  std::string LogBytes() const {
    std::ifstream file(LogPath(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  // The lines since the last call, without their time stamps, and with every "<n>ms" that the clock decides left as it
  // is.
  Lines Log() {
    const std::string all = LogBytes();
    Lines lines;
    for (std::size_t end = 0; (end = all.find("\r\n", read_)) != std::string::npos; read_ = end + 2) {
      lines.push_back(WithoutStamp(all.substr(read_, end - read_)));
    }
    return lines;
  }

  static void ClearCancelled() {
    if (isCancelled() != 0) {
      startCancelMonitor();
      stopCancelMonitor();
    }
  }

  // A log of its own for the next of many runs in one test.
  void StartNewLog() {
    std::filesystem::remove(LogPath());
    read_ = 0;
    OpenLog();
  }

  void ForgetLog() {
    Log();
  }

  static std::string WithoutStamp(const std::string& line) {
    const auto fits = [](char shape, char given) { return shape == '0' ? std::isdigit(given) != 0 : shape == given; };
    for (const std::string_view shape :
         {"[0000-00-00 00:00:00] ", "0000-00-00 00:00:00.000 ", "00-00 00:00:00.000 ", "[00:00:00.000] "}) {
      if (line.size() >= shape.size() && std::equal(shape.begin(), shape.end(), line.begin(), fits)) {
        return line.substr(shape.size());
      }
    }
    return line;
  }

 private:
  std::filesystem::path folder_;
  std::size_t read_ = 0;
};

// The platform calls that `action` makes, in order, without those that only stamp and write the log.
template <class Action>
Lines CallsOf(Action&& action) {
  const std::size_t before = TheDesktop().Calls().Sequence().size();
  action();
  Lines calls = TheDesktop().Calls().Sequence();
  calls.erase(calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(before));
  std::erase_if(calls, [](const std::string& call) {
    return call == "WriteFile" || call == "GetLocalTime" || call.starts_with("QueryPerformance");
  });
  return calls;
}

// The lines that one operation wrote.
inline Lines Starting(const Lines& lines, std::string_view prefix) {
  Lines some;
  std::copy_if(lines.begin(), lines.end(), std::back_inserter(some),
               [prefix](const std::string& line) { return line.starts_with(prefix); });
  return some;
}

// The AutomationId of an element that was found, or "none".
inline std::string IdOf(const ElementPtr& element) {
  Bstr id;
  if (!element || FAILED(element->get_CurrentAutomationId(id.Receive()))) {
    return "none";
  }
  const std::u16string_view text = id ? id.Get() : u"";
  return {text.begin(), text.end()};
}

// Leaves the cancelled flag set and no monitor behind.
inline void CancelByEscape() {
  startCancelMonitor();
  TheDesktop().User().HoldEscape(5, 30);
  delay(80);
  stopCancelMonitor();
  ASSERT_EQ(isCancelled(), 1);
}

// A window of another program, from (100, 100) to (500, 400).
inline HWND AddDialog(std::u16string_view className = u"Dialog") {
  return TheDesktop().Windows().Add(
      {.className = standin::Text(className), .title = u"Orders", .rect = {100, 100, 500, 400}});
}

inline HWND AddControl(HWND parent, std::u16string_view className, int id, RECT rect = {120, 120, 320, 150},
                       standin::Behaviour behaviour = standin::Behaviour::Edit) {
  return TheDesktop().Windows().Add(
      {.className = standin::Text(className), .rect = rect, .parent = parent, .controlId = id, .behaviour = behaviour});
}

// What a search for an AutomationId writes that finds its element.
inline const Lines kFoundById = {
    "[FindTargetElement] Starting with identification method: 0", "[FindTargetElement] Trying Method 0: AutomationId",
    "[FindElementByAutomationId] Starting AutomationId search", "AutomationId search completed in 0ms",
    "[FindTargetElement] SUCCESS with Method 0: AutomationId"};

// How a handle reads in the log.
inline std::string Decimal(HWND window) {
  return std::to_string(reinterpret_cast<std::uintptr_t>(window));
}

inline std::string Hexadecimal(HWND window) {
  char text[24];
  std::snprintf(text, sizeof text, "%zx", reinterpret_cast<std::uintptr_t>(window));
  return text;
}

// A record that holds nothing but a method.
inline TargetRecord EmptyRecord(int method = KORVANE_METHOD_UNDECIDED) {
  TargetRecord record{};
  record.identificationMethod = method;
  return record;
}

inline TargetRecord RecordById(std::u16string_view automationId) {
  TargetRecord record = EmptyRecord(KORVANE_METHOD_AUTOMATION_ID);
  automationId.copy(record.automationId, KORVANE_AUTOMATION_ID_SIZE - 1);
  return record;
}

inline TargetRecord RecordAt(int x, int y) {
  TargetRecord record = EmptyRecord();
  record.x = x;
  record.y = y;
  return record;
}

inline void AddLevel(TargetRecord& record, int controlType, std::u16string_view className, int index) {
  const int level = record.pathLength++;
  record.identificationMethod = KORVANE_METHOD_TREE_PATH;
  record.controlTypes[level] = controlType;
  className.copy(record.classNames[level], KORVANE_CLASS_NAME_SIZE - 1);
  record.childIndices[level] = index;
}

// ---- Measuring a call ----

// How far the desktop's clock moves while `action` runs, in milliseconds.
template <class Action>
double Elapsed(Action&& action) {
  const double start = TheDesktop().Clock().Now();
  action();
  return TheDesktop().Clock().Now() - start;
}

// What one operation wrote, without its prefix.
inline Lines WithPrefix(const Lines& lines, std::string_view prefix) {
  Lines found;
  for (const std::string& line : lines) {
    if (line.starts_with(prefix)) {
      found.push_back(line.substr(prefix.size()));
    }
  }
  return found;
}

// A dialog with one edit, whose AutomationId is "7". No automation context yet.
class FormTest : public DesktopTest {
 protected:
  void SetUp() override {
    DesktopTest::SetUp();
    window_ = AddDialog();
    edit_ = AddControl(window_, u"Edit", 7);
    field_ = TheDesktop().Elements().Of(edit_);
  }

  const TargetRecord target_ = RecordById(u"7");
  HWND window_ = nullptr;
  HWND edit_ = nullptr;
  standin::Element field_ = 0;
};

// The same with a context.
class FieldTest : public FormTest {
 protected:
  void SetUp() override {
    FormTest::SetUp();
    initializeAutomation();
    ForgetLog();
  }
};

}  // namespace tests
