// A scripted user is recorded: what of it becomes which steps, and what its programs still get.
#include "host/recorder/recorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/base/shortcut.h"
#include "host/base/text.h"
#include "host/engine/library_log.h"
#include "host/recording/variables.h"
#include "host/world/world_standin_script.h"
#include "host/world/world_standin_user.h"
#include "samples/order_form/layout.h"
#include "standin/desktop/desktop.h"

namespace host {
namespace {

using standin::TheDesktop;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

HWND FindWindowOf(const std::string& title) {
  for (const world::Window& window : world::Windows()) {
    if (window.title == title) {
      return window.handle;
    }
  }
  return nullptr;
}

class RecorderTest : public testing::Test {
 protected:
  void SetUp() override {
    world::TheScene().form.reset();
    TheDesktop().Reset();
    TheDesktop().Calls().SetTracing(false);
    TheDesktop().Calls().SetCrossProcessCost(0.2);
  }

  void TearDown() override {
    world::TheScene().form.reset();
  }

  // What "scene" makes of the desktop and its user does, until Ctrl+Q: "paste Ada at 101" and the like.
  std::vector<std::string> Record(const std::string& scene) {
    world::SetScene(scene);
    return RecordScene();
  }

  std::vector<std::string> RecordScene() {
    const LibraryLog log("");
    std::vector<RecorderHotkey> hotkeys;
    for (const auto& [command, keys] :
         std::initializer_list<std::pair<RecorderCommand, const char*>>{{RecorderCommand::CheckNext, "F5"},
                                                                        {RecorderCommand::ReadNext, "F7"},
                                                                        {RecorderCommand::Undo, "F8"},
                                                                        {RecorderCommand::Pause, "F9"},
                                                                        {RecorderCommand::End, "Ctrl+Q"}}) {
      hotkeys.push_back({command, world::ChordOf(*FindShortcut(keys))});
    }
    Recorder recorder({}, 0, hotkeys, true,
                      {[this](std::size_t, const Step&, const std::vector<std::string>& warnings) {
                         told_.insert(told_.end(), warnings.begin(), warnings.end());
                       },
                       [](std::size_t) {}, [this](const std::string& line) { told_.push_back(line); }});
    recorder.Run([] { return false; });
    recording_ = recorder.Result();
    std::vector<std::string> steps;
    for (const Step& step : recording_.steps) {
      steps.push_back(WordsOf(step.action).word + (step.text.empty() ? "" : " " + step.text) +
                      (step.hasTarget ? " at " + Utf8(step.target.automationId) : ""));
    }
    return steps;
  }

  std::string Held(order_form::ControlId control) const {
    return Utf8(TheDesktop().Controls().TextOf(world::TheScene().form->WindowOf(control)));
  }

  Recording recording_;
  std::vector<std::string> told_;
};

// In the form at 40,40: Name 308,98; Street 308,130; Phone 308,314; Submit 90,410; Clear 200,410; Status 350,410.

TEST_F(RecorderTest, WhatIsDoneBecomesSteps) {
  const struct {
    const char* scene;
    std::vector<std::string> steps;
  } cases[] = {
      {"user 100 click 308,98; user 300 type Ada; user 600 click 90,410", {"paste Ada at 101", "click at 301"}},
      // Faster than any program answers: keys while the click is not there yet, clicks one upon the other.
      {"user 100 click 308,98; user 125 type Ada; user 150 click 308,130; user 175 type Hill; user 208 click 90,410; "
       "user 209 click 200,410; user 210 click 350,410",
       {"paste Ada at 101", "paste Hill at 102", "click at 301", "click at 302", "click at 401"}},
      {"user 100 click 308,98; user 300 type Adda; user 400 keys Backspace; user 410 keys Backspace; user 420 type a",
       {"paste Ada at 101"}},
      // One field, one step, although it was clicked twice on the way.
      {"user 100 click 308,98; user 300 type Ada; user 900 click 308,98; user 1600 type  L", {"paste AdaL at 101"}},
      {"user 100 click 308,98; user 900 click 308,98", {"click at 101", "click at 101"}},
      {"user 100 click 90,410; user 250 click 91,410", {"double-click at 301"}},
      {"user 100 drag 90,410,200,410; user 900 click 90,410", {"click at 301"}},
      // An input method, and a field that changes what it is given.
      {"user 100 click 308,98; user 300 compose Lowe", {"paste Lowe at 101"}},
      {"user 100 click 308,314; user 300 type 12345", {"type 12345 at 203"}},
      {"user 100 click 308,98; user 300 type a${B}$$c", {"paste a$${B}$$$c at 101"}},
      {"user 100 click 308,98; user 300 type Ada; user 600 keys Ctrl+S; user 700 keys Enter",
       {"paste Ada at 101", "shortcut Ctrl+S", "shortcut Enter"}},
      {"password; user 100 click 90,440; user 300 type hush; user 600 click 90,410",
       {"paste ${SECRET_1} at 602", "click at 301"}},
      {"user 100 keys F5; user 200 click 350,410; user 400 keys F7; user 500 click 350,410",
       {"check Ready at 401", "read VALUE_1 at 401"}},
      {"user 100 click 90,410; user 800 click 308,98; user 900 keys F8; user 1000 keys F9; user 1100 click 200,410; "
       "user 1500 keys F9; user 1600 click 350,410",
       {"click at 301", "click at 401"}},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.scene);
    EXPECT_EQ(each.steps, Record(std::string(each.scene) + "; user 3000 keys Ctrl+Q"));
    for (const Step& step : recording_.steps) {
      EXPECT_EQ(step.action == Action::Paste, step.replace);
    }
  }
}

TEST_F(RecorderTest, TextsThatLookLikeVariablesAreTexts) {
  Record("user 100 click 308,98; user 300 type a${B}$$c; user 3000 keys Ctrl+Q");
  ASSERT_EQ(1U, recording_.steps.size());
  EXPECT_EQ("a${B}$$c", Expand(recording_.steps[0].text, {}, ""));
}

TEST_F(RecorderTest, ProgramsGetWhatIsRecordedAndNothingElse) {
  Record("user 100 click 308,98; user 200 type Ada; user 500 click 90,410; user 3000 keys Ctrl+Q");
  EXPECT_EQ("Submitted: Ada / ", Held(order_form::kStatus));
  Record("user 100 keys F5; user 200 click 90,410; user 3000 keys Ctrl+Q");
  EXPECT_EQ("Ready", Held(order_form::kStatus)) << "a click that asks for a check is none";
}

TEST_F(RecorderTest, AClickThatClosesItsWindow) {
  EXPECT_THAT(
      Record("dialog 0; user 100 click 200,142; user 300 type Yes; user 500 click 150,184; user 1200 click 90,410; "
             "user 3000 keys Ctrl+Q"),
      ElementsAre("paste Yes at 501", "click at 1", "click at 301"));
  ASSERT_EQ(2U, recording_.windows.size());
  EXPECT_EQ("Confirm", recording_.windows[recording_.steps[1].window].title);
  EXPECT_EQ("Order form", recording_.windows[recording_.steps[2].window].title);
}

TEST_F(RecorderTest, AKeyThatClosesItsWindow) {
  world::SetScene("dialog 0; user 100 click 200,142; user 300 type Yes; user 500 keys Enter; user 3000 keys Ctrl+Q");
  TheDesktop().Clock().After(501, [] { TheDesktop().Windows().Destroy(FindWindowOf("Confirm")); });
  EXPECT_THAT(RecordScene(), ElementsAre("paste Yes at 501", "shortcut Enter"));
  EXPECT_EQ("Confirm", recording_.windows.at(recording_.steps[1].window).title);
}

TEST_F(RecorderTest, WhatCannotBeToldForSureIsSaid) {
  Record("id 302,301; user 100 click 90,410; user 3000 keys Ctrl+Q");
  EXPECT_THAT(told_, testing::Contains(HasSubstr("AutomationId is not unique")));
  EXPECT_EQ(KORVANE_METHOD_TREE_PATH, recording_.steps.at(0).target.identificationMethod);

  told_.clear();
  Record("user 100 unhooked; user 3000 keys Ctrl+Q");
  EXPECT_THAT(told_, ElementsAre(HasSubstr("look whether a step is missing")));

  told_.clear();
  Record("user 100 drag 90,410,200,410; user 3000 keys Ctrl+Q");
  EXPECT_THAT(told_, testing::Contains(HasSubstr("dragging cannot be recorded")));
}

TEST_F(RecorderTest, WhatIsPointedAtIsFramed) {
  Record(
      "id 302,301; user 100 point 308,98; user 800 point 90,410; user 1500 point 46,60; user 2200 point 1900,1000; "
      "user 3000 keys Ctrl+Q");
  EXPECT_THAT(world::OutlinesShown(),
              ElementsAre("green 153 86 463 110 field", "", "yellow 53 396 153 424 button Submit", "",
                          testing::StartsWith("red 40 40 500 460 window"), ""));
}

TEST_F(RecorderTest, APressWaitsNoLongerThanItMay) {
  world::SetScene("user 100 click 90,410; user 9000 keys Ctrl+Q");
  TheDesktop().Calls().SetCrossProcessCost(40);
  double pressed = 0;
  TheDesktop().Controls().OnPress(world::TheScene().form->WindowOf(order_form::kSubmit),
                                  [&] { pressed = TheDesktop().Clock().Now(); });
  EXPECT_THAT(RecordScene(), ElementsAre("click at 301"));
  EXPECT_NEAR(400, pressed, 60);
  EXPECT_THAT(told_, testing::Contains(HasSubstr("did not answer in time")));
}

TEST_F(RecorderTest, NothingIsLostInAHurry) {
  std::string scene;
  constexpr int kRounds = 100;
  for (int i = 0; i < kRounds; ++i) {
    const auto at = [&](int after) { return "user " + std::to_string(i * 300 + after); };
    scene += at(0) + " click 308,98; " + at(30) + " type abcdefghijklmnopqrst; " + at(200) + " click 200,410; ";
  }
  const auto steps = Record(scene + "user 40000 keys Ctrl+Q");
  EXPECT_EQ(std::size_t{2 * kRounds}, steps.size());
  EXPECT_EQ(kRounds, std::count(steps.begin(), steps.end(), "click at 302"));
  EXPECT_EQ(kRounds, std::count(steps.begin(), steps.end(), "paste abcdefghijklmnopqrst at 101"));
}

}  // namespace
}  // namespace host
