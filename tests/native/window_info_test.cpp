// What is told of a window.
#include "tests/native/fixture.h"

namespace tests {
namespace {

class WindowInfoTest : public DesktopTest {};

TEST_F(WindowInfoTest, TitleAndProgram) {
  const standin::Text longText(300, u'n');
  const standin::Text cut(255, u'n');
  struct Case {
    standin::Text title;
    standin::Text path;
    standin::Text shownTitle;
    standin::Text shownName;
  };
  const Case cases[] = {
      {u"Orders", u"C:\\Program Files\\Office\\orders.exe", u"Orders", u"orders.exe"},
      {u"", u"orders.exe", u"", u"orders.exe"},
      {u"\xD83D \u4E2D", u"\\\\server\\share\\\u4E2D.exe", u"\xD83D \u4E2D", u"\u4E2D.exe"},
      {u"folder", u"C:\\folder\\", u"folder", u""},
      {standin::Text(255, u'n'), u"C:\\a/b.exe", cut, u"a/b.exe"},
      {longText, u"C:\\" + longText, cut, cut},
  };
  for (const auto& [title, path, shownTitle, shownName] : cases) {
    SCOPED_TRACE(testing::PrintToString(path));
    const HWND window = TheDesktop().Windows().Add(
        {.className = u"C", .title = title, .process = TheDesktop().Windows().AddProcess(path)});
    WindowInfo info;
    std::memset(&info, 0xAB, sizeof info);
    EXPECT_EQ(getWindowInfo(window, &info), KORVANE_OK);
    EXPECT_EQ(info.title, shownTitle);
    EXPECT_EQ(info.processName, shownName);
    EXPECT_EQ(info.window, window);
    EXPECT_EQ(info.title[255], 0);
    EXPECT_EQ(info.processName[255], 0);
  }
  EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(WindowInfoTest, WhatCannotBeHadIsUnknownOrEmpty) {
  const DWORD process = TheDesktop().Windows().AddProcess(u"C:\\orders.exe");
  const HWND window = TheDesktop().Windows().Add({.className = u"C", .title = u"Orders", .process = process});
  const auto expect = [&](HWND asked, const char16_t* title, const char16_t* name) {
    WindowInfo info;
    EXPECT_EQ(getWindowInfo(asked, &info), KORVANE_OK);
    EXPECT_EQ(info.title, standin::Text(title));
    EXPECT_EQ(info.processName, standin::Text(name));
    EXPECT_EQ(info.window, asked);
  };
  const std::tuple<const char*, const char16_t*, const char16_t*> failures[] = {
      {"GetWindowTextW", u"", u"orders.exe"},
      {"GetWindowThreadProcessId", u"Orders", u"Unknown"},
      {"OpenProcess", u"Orders", u"Unknown"},
      {"K32GetModuleFileNameExW", u"Orders", u"Unknown"},
  };
  for (const auto& [call, title, name] : failures) {
    SCOPED_TRACE(call);
    TheDesktop().Faults().FailNth(call, 1);
    expect(window, title, name);
    TheDesktop().Faults().Stop();
  }
  TheDesktop().Windows().ForbidOpening(process);
  expect(window, u"Orders", u"Unknown");
  TheDesktop().Windows().Destroy(window);
  expect(window, u"", u"Unknown");
  EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(WindowInfoTest, MissingArguments) {
  const HWND window = TheDesktop().Windows().Add({.className = u"C", .title = u"Orders"});
  WindowInfo info;
  WindowInfo untouched;
  std::memset(&info, 0xAB, sizeof info);
  std::memset(&untouched, 0xAB, sizeof untouched);
  EXPECT_EQ(getWindowInfo(nullptr, &info), KORVANE_INVALID_ARGUMENT);
  EXPECT_EQ(getWindowInfo(window, nullptr), KORVANE_INVALID_ARGUMENT);
  EXPECT_EQ(std::memcmp(&info, &untouched, sizeof info), 0);
  EXPECT_EQ(Log(), (Lines{"ERROR getWindowInfo Code:-2 Details:Invalid parameters",
                          "ERROR getWindowInfo Code:-2 Details:Invalid parameters"}));
}

}  // namespace
}  // namespace tests
