// What the scenarios share: the order form, a log of their own, records of its fields.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "korvane/korvane.h"
#include "samples/order_form/program.h"

namespace scenarios {

using order_form::ControlId;
using order_form::Point;
using order_form::Text;

class ScenarioTest : public ::testing::Test {
 protected:
  void SetUp() override {
    log_ = order_form::ScratchFile("korvane-scenario.log");
    std::remove(LogFile().c_str());
    initializeLog(log_.c_str());
    ASSERT_TRUE(form_.Start(kFirstPlace.x, kFirstPlace.y));
    ASSERT_EQ(initializeAutomation(), KORVANE_OK);
  }

  void TearDown() override {
    stopCancelMonitor();
    clearElementCache();
    form_.Stop();
    cleanupAutomation();
    if (HasFailure()) {
      std::printf("the log:\n%s", Log().c_str());
    }
  }

  // Closes the form and opens it elsewhere, as a user would between recording and replaying.
  void Reopen() {
    form_.Stop();
    ASSERT_TRUE(form_.Start(kSecondPlace.x, kSecondPlace.y));
  }

  TargetRecord Capture(ControlId control, int method) {
    const Point point = form_.CentreOf(control);
    TargetRecord record{};
    EXPECT_EQ(captureTargetAtPoint(&record, point.x, point.y), KORVANE_OK);
    EXPECT_EQ(record.identificationMethod, KORVANE_METHOD_UNDECIDED);
    record.identificationMethod = method;
    return record;
  }

  std::string Log() const {
    std::ifstream file(LogFile(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  static constexpr Point kFirstPlace{120, 80};
  static constexpr Point kSecondPlace{420, 300};
  order_form::Program form_;

 private:
  std::string LogFile() const {
    return {log_.begin(), log_.end()};
  }

  Text log_;
};

inline Text Repeated(const KorvaneChar* piece, int times) {
  Text text;
  for (int i = 0; i < times; ++i) {
    text += piece;
  }
  return text;
}

}  // namespace scenarios
