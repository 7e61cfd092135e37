// What the tests of the scripted desktop itself share. A fault of its own would mislead the tests that stand on it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "standin/desktop/desktop.h"
#include "tests/native/lines.h"

namespace tests {

using standin::Behaviour;
using standin::TheDesktop;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class StandinTest : public ::testing::Test {
 protected:
  void SetUp() override {
    TheDesktop().Reset();
  }
  void TearDown() override {
    EXPECT_THAT(TheDesktop().Ledger().Outstanding(), IsEmpty());
    EXPECT_THAT(TheDesktop().Ledger().Misuses(), IsEmpty());
    TheDesktop().Reset();
  }

  // For a test that leaves things behind or misuses them on purpose.
  static Lines TakeMisuses() {
    const Lines misuses = TheDesktop().Ledger().Misuses();
    TheDesktop().Reset();
    return misuses;
  }

  static HWND AddWindow(RECT rect, HWND owner = nullptr) {
    return TheDesktop().Windows().Add({.className = u"Window", .title = u"Title", .rect = rect, .owner = owner});
  }
  static HWND AddChild(HWND parent, Behaviour behaviour, RECT rect = {10, 10, 110, 30}) {
    return TheDesktop().Windows().Add(
        {.className = u"Control", .rect = rect, .parent = parent, .behaviour = behaviour});
  }
};

// What happened, with the time at which it did.
class Diary {
 public:
  void Write(const std::string& what) {
    const std::lock_guard guard(mutex_);
    lines_.push_back(std::to_string(static_cast<int>(TheDesktop().Clock().Now())) + " " + what);
  }
  Lines Take() {
    const std::lock_guard guard(mutex_);
    return std::exchange(lines_, {});
  }

 private:
  std::mutex mutex_;
  Lines lines_;
};

inline Diary g_diary;

}  // namespace tests
