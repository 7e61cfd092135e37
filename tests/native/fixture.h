// What every native test shares: an empty desktop, a log of its own, and at the end the proof that nothing is left
// over.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "korvane/korvane.h"
#include "standin/desktop/desktop.h"

namespace tests {

using standin::TheDesktop;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Lines = std::vector<std::string>;

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
    TheDesktop().Gate().StopFailing();
    cleanupAutomation();
    clearElementCache();
    if (isCancelled() != 0) {
      startCancelMonitor();
      stopCancelMonitor();
    }
    EXPECT_THAT(TheDesktop().Outstanding(), IsEmpty());
    EXPECT_THAT(TheDesktop().Misuses(), IsEmpty());
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

  void ForgetLog() {
    Log();
  }

  static std::string WithoutStamp(const std::string& line) {
    static const std::regex stamp(
        R"(^(\[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\] |\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} |\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} |\[\d\d:\d\d:\d\d\.\d{3}\] ))");
    return std::regex_replace(line, stamp, "", std::regex_constants::format_first_only);
  }

 private:
  std::filesystem::path folder_;
  std::size_t read_ = 0;
};

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

}  // namespace tests
