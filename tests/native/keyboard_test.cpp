// Keyboard input, record by record.
#include <functional>

#include "tests/native/fixture.h"
#include "tests/shortcuts.h"

namespace tests {
namespace {

using Keys = std::vector<int>;  // virtual keys; a release is the negative one
using Batches = std::vector<Keys>;

class KeyboardTest : public DesktopTest {
 protected:
  // The batches since the last call; no record may hold anything beside its key and its direction.
  Batches Sent() {
    const auto all = TheDesktop().Input().Batches();
    Batches batches;
    for (; seen_ < all.size(); ++seen_) {
      Keys& keys = batches.emplace_back();
      for (const INPUT& record : all[seen_]) {
        EXPECT_EQ(record.type, INPUT_KEYBOARD);
        EXPECT_EQ(record.ki.wScan, 0);
        EXPECT_EQ(record.ki.time, 0U);
        EXPECT_EQ(record.ki.dwExtraInfo, 0U);
        EXPECT_EQ(record.ki.dwFlags & ~KEYEVENTF_KEYUP, 0U);
        keys.push_back(record.ki.dwFlags == 0 ? record.ki.wVk : -int{record.ki.wVk});
      }
    }
    return batches;
  }

 private:
  std::size_t seen_ = 0;
};

// Every key is released again, the last one first.
Keys BatchOf(const Shortcut& shortcut) {
  Keys all = shortcut.keys;
  std::transform(shortcut.keys.rbegin(), shortcut.keys.rend(), std::back_inserter(all), std::negate<>());
  return all;
}

TEST_F(KeyboardTest, EachShortcutIsOneBatch) {
  EXPECT_EQ(Elapsed([&] {
              for (const Shortcut& shortcut : kShortcuts) {
                SCOPED_TRACE(shortcut.name);
                EXPECT_EQ(shortcut.send(), 0);
                EXPECT_EQ(Sent(), Batches{BatchOf(shortcut)});
              }
            }),
            0);
  EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(KeyboardTest, PartlyAcceptedShortcutFailsAndLeavesNoKeyDown) {
  for (const Shortcut& shortcut : kShortcuts) {
    for (std::uint32_t accepted = 0; accepted < 2 * shortcut.keys.size(); ++accepted) {
      SCOPED_TRACE(std::string(shortcut.name) + ", " + std::to_string(accepted));
      TheDesktop().Input().Block(accepted);
      // Once with every SendInput accepted, and once with the first releases refused.
      for (const std::uint64_t refused : {0U, 2U}) {
        TheDesktop().Faults().Stop();
        TheDesktop().Faults().FailNth("SendInput", refused);
        EXPECT_EQ(shortcut.send(), KORVANE_FAILED);
        for (const int key : shortcut.keys) {
          EXPECT_FALSE(TheDesktop().Input().IsDown(key)) << key;
        }
      }
    }
  }
  EXPECT_THAT(Log(), IsEmpty());
}

// Newest first, so that no key is released under a modifier that it was not pressed under.
TEST_F(KeyboardTest, WhatIsDownIsReleasedInTheReverseOrder) {
  const Keys all = {0x11, 0x10, 0x72, -0x72, -0x10, -0x11};
  const struct {
    std::uint32_t accepted;
    Batches releases;
  } cases[] = {
      {0, {}},        {1, {{-0x11}}}, {2, {{-0x10, -0x11}}}, {3, {{-0x72, -0x10, -0x11}}}, {4, {{-0x10, -0x11}}},
      {5, {{-0x11}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.accepted);
    TheDesktop().Input().Block(c.accepted);
    EXPECT_EQ(sendCtrlShiftF3(), KORVANE_FAILED);
    Batches expected = {all};
    expected.insert(expected.end(), c.releases.begin(), c.releases.end());
    EXPECT_EQ(Sent(), expected);
  }
  // What a release leaves is released by the next one.
  TheDesktop().Input().Block(3);
  TheDesktop().Calls().After("SendInput", 1, [] { TheDesktop().Input().Block(1); });
  EXPECT_EQ(sendCtrlShiftF3(), KORVANE_FAILED);
  EXPECT_EQ(Sent(), (Batches{all, {-0x72, -0x10, -0x11}, {-0x10, -0x11}, {-0x11}}));
  // Three refusals are enough.
  TheDesktop().Input().Block(2);
  TheDesktop().Calls().After("SendInput", 1, [] { TheDesktop().Input().Block(0); });
  EXPECT_EQ(sendCtrlShiftF3(), KORVANE_FAILED);
  EXPECT_EQ(Sent(), (Batches{all, {-0x10, -0x11}, {-0x10, -0x11}, {-0x10, -0x11}}));
  TheDesktop().Input().Accept();
  EXPECT_EQ(sendCtrlShiftF3(), KORVANE_OK);
  Sent();
}

TEST_F(KeyboardTest, SingleKeys) {
  struct Case {
    int key;
    int code;
    Batches sent;
  };
  const Case cases[] = {
      {0, KORVANE_INVALID_ARGUMENT, {}},
      {-1, KORVANE_INVALID_ARGUMENT, {}},
      {INT32_MIN, KORVANE_INVALID_ARGUMENT, {}},
      {1, KORVANE_OK, {{1, -1}}},
      {0x1B, KORVANE_OK, {{0x1B, -0x1B}}},
      {9999, KORVANE_OK, {{0x11, 0x41, -0x41, -0x11}}},
      {9998, KORVANE_OK, {{9998, -9998}}},
      {0x10041, KORVANE_OK, {{0x41, -0x41}}},
      {INT32_MAX, KORVANE_OK, {{0xFFFF, -0xFFFF}}},
  };
  for (const auto& [key, code, sent] : cases) {
    SCOPED_TRACE(key);
    EXPECT_EQ(sendKey(key), code);
    EXPECT_EQ(Sent(), sent);
  }
  for (const std::uint32_t accepted : {0U, 1U}) {
    TheDesktop().Input().Block(accepted);
    EXPECT_EQ(sendKey(0x41), KORVANE_FAILED);
    EXPECT_FALSE(TheDesktop().Input().IsDown(0x41));
  }
  EXPECT_THAT(Log(), IsEmpty());
}

const Keys kA = {0x41, -0x41};
const Keys kShiftA = {0x10, 0x41, -0x41, -0x10};

TEST_F(KeyboardTest, Sequences) {
  TheDesktop().Input().SetKey(u'@', 0x0600 | 0x51);       // Ctrl+Alt+Q
  TheDesktop().Input().SetKey(u'#', 0x0700 | 0x33);       // Ctrl+Alt+Shift+3
  TheDesktop().Input().SetKey(u'\u00A7', 0x0900 | 0x36);  // bits beyond Alt mean other keyboards' states
  TheDesktop().Input().SetKey(u'\u00B5', 0x02FF);         // a key of its own code, though the low byte is all ones
  for (const WCHAR dead : {u'\u4E2D', u'\xD83D', u'\xDE00'}) {
    TheDesktop().Input().SetKey(dead, -1);
  }
  struct Case {
    const char16_t* text;
    int pause;
    Batches sent;
    double sleptMs;
  };
  const Case cases[] = {
      {u"a", 5, {kA}, 0},
      {u"aA", 7, {kA, kShiftA}, 7},
      {u"aaa", 0, {kA, kA, kA}, 2},
      {u"aaa", -20, {kA, kA, kA}, 2},
      {u"@", 1, {{0x11, 0x12, 0x51, -0x51, -0x12, -0x11}}, 0},
      {u"#", 1, {{0x11, 0x12, 0x10, 0x33, -0x33, -0x10, -0x12, -0x11}}, 0},
      {u"\u00A7", 1, {{0x10, 0x36, -0x36, -0x10}}, 0},
      {u"\u00B5", 1, {{0x11, 0xFF, -0xFF, -0x11}}, 0},
      {u"\u4E2D\xD83D\xDE00", 5, {}, 0},
      {u"a\u4E2D", 5, {kA}, 5},  // the pause follows every typed character but the text's last one
      {u"\u4E2Da", 5, {kA}, 0},
      {u"a\u4E2Da", 5, {kA, kA}, 5},
  };
  for (const auto& [text, pause, sent, slept] : cases) {
    SCOPED_TRACE(testing::PrintToString(standin::Text(text)));
    const auto lookedUp = TheDesktop().Calls().Count("VkKeyScanW");
    EXPECT_EQ(Elapsed([&, text = text, pause = pause] { EXPECT_EQ(sendKeySequence(text, pause), KORVANE_OK); }), slept);
    EXPECT_EQ(Sent(), sent);
    EXPECT_EQ(TheDesktop().Calls().Count("VkKeyScanW") - lookedUp, standin::Text(text).size());
  }
  EXPECT_EQ(sendKeySequence(nullptr, 1), KORVANE_INVALID_ARGUMENT);
  EXPECT_EQ(sendKeySequence(u"", 1), KORVANE_INVALID_ARGUMENT);
  EXPECT_EQ(Sent(), Batches{});
  EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(KeyboardTest, SequenceStopsAtTheFirstRefusedCharacter) {
  for (const std::uint32_t accepted : {0U, 1U, 2U, 3U}) {
    SCOPED_TRACE(accepted);
    TheDesktop().Input().Accept();
    const auto before = TheDesktop().Input().Sent().size();
    TheDesktop().Calls().After("SendInput", 1, [accepted] { TheDesktop().Input().Block(accepted); });
    EXPECT_EQ(sendKeySequence(u"aAa", 1), KORVANE_FAILED);
    EXPECT_FALSE(TheDesktop().Input().IsDown(VK_SHIFT));
    EXPECT_FALSE(TheDesktop().Input().IsDown('A'));
    const auto all = TheDesktop().Input().Sent();
    ASSERT_GE(all.size(), before + 2);
    EXPECT_EQ(all[before].ki.wVk, 'A');
    EXPECT_EQ(all[before + 1].ki.wVk, 'A');
  }
}

}  // namespace
}  // namespace tests
