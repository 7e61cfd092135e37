// The scripted desktop: counting calls, and making them fail.
#include <new>

#include "korvane/korvane.h"
#include "tests/native/desktop_fixture.h"

namespace tests {
namespace {

// The example at the top of desktop.h.
TEST_F(StandinTest, ExampleOfItsUse) {
  auto& desktop = TheDesktop();
  desktop.Reset();
  const HWND form = desktop.Windows().Add({.title = u"Order", .rect = {100, 100, 500, 400}});
  const HWND edit = desktop.Windows().Add(
      {.rect = {120, 120, 320, 150}, .parent = form, .controlId = 7, .behaviour = Behaviour::Edit});
  desktop.User().Click(150, 130);
  desktop.Clipboard().Hold(3);
  EXPECT_EQ(setClipboardText(u"4711"), KORVANE_OK);
  EXPECT_EQ(sendCtrlV(), KORVANE_OK);
  EXPECT_EQ(desktop.Controls().TextOf(edit), u"4711");
  desktop.Faults().FailNth("SetClipboardData", 1);
  EXPECT_EQ(setClipboardText(u"4712"), KORVANE_FAILED);
  EXPECT_THAT(desktop.Ledger().Outstanding(), IsEmpty());
}

TEST_F(StandinTest, GateFailsTheCallsItIsToldTo) {
  const HWND window = AddWindow({0, 0, 10, 10});
  const auto answers = [window](int calls) {
    std::string all;
    for (int i = 0; i < calls; ++i) {
      all += IsWindow(window) ? 'y' : 'n';
    }
    return all;
  };
  TheDesktop().Faults().FailNth(2);
  EXPECT_EQ(answers(4), "ynyy");
  EXPECT_EQ(GetLastError(), 31U);
  TheDesktop().Faults().FailPair(1, 3);
  EXPECT_EQ(answers(4), "nyny");
  EXPECT_EQ(TheDesktop().Faults().Injected(), 2U);
  TheDesktop().Faults().FailFromNth(3);
  EXPECT_EQ(answers(4), "yynn");
  Sleep(1);
  EXPECT_EQ(TheDesktop().Faults().Injected(), 2U) << "Sleep cannot fail";
  TheDesktop().Faults().FailNth("IsWindow", 2);
  TheDesktop().Faults().Stop();
  EXPECT_EQ(answers(2), "yy");
  TheDesktop().Faults().FailNth("IsWindow", 2);
  EXPECT_EQ(GetParent(window), nullptr);
  EXPECT_EQ(answers(3), "yny");
  TheDesktop().Faults().FailFromNth("IsWindow", 2);
  EXPECT_EQ(answers(3), "ynn");

  TheDesktop().Calls().After("IsWindow", 2, [&] { TheDesktop().Windows().Destroy(window); });
  TheDesktop().Faults().Stop();
  EXPECT_EQ(answers(3), "yyn");
  const auto counted = TheDesktop().Calls().Count();
  const Lines sequence = TheDesktop().Calls().Sequence();
  EXPECT_EQ(sequence.size(), counted);
  EXPECT_EQ(sequence.back(), "IsWindow");
  TheDesktop().Calls().SetTracing(false);
  answers(1);
  EXPECT_EQ(TheDesktop().Calls().Sequence().size(), counted);
  EXPECT_EQ(TheDesktop().Calls().Count(), counted + 1);
}

TEST_F(StandinTest, MemoryEndsWhereItIsToldTo) {
  TheDesktop().Faults().EndMemoryAt("IsWindow", 2);
  EXPECT_FALSE(IsWindow(nullptr));
  EXPECT_THROW(IsWindow(nullptr), std::bad_alloc);
  EXPECT_FALSE(standin::InsidePlatformCall());
  EXPECT_FALSE(IsWindow(nullptr)) << "once, and nothing is left locked";
}

// A failing call changes nothing, with one exception: a call that gives something back has given it back.
TEST_F(StandinTest, FailingCallsHaveNoEffectButReleasesRelease) {
  auto& desktop = TheDesktop();
  const HWND window = AddWindow({0, 0, 100, 100});
  desktop.Clipboard().Set(u"before");
  const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 2);
  const HANDLE process = OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, desktop.Windows().AddProcess(u"C:\\a.exe"));
  const HHOOK hook = SetWindowsHookExW(WH_MOUSE_LL, [](int, WPARAM, LPARAM) -> LRESULT { return 0; }, nullptr, 0);
  SetPropW(window, u"Property", process);
  AttachThreadInput(GetCurrentThreadId(), GetWindowThreadProcessId(window, nullptr), TRUE);
  OpenClipboard(nullptr);
  GlobalLock(block);
  VARIANT value{};
  value.vt = VT_BSTR;
  value.bstrVal = SysAllocString(u"x");
  TheDesktop().Faults().FailFromNth(1);

  EXPECT_FALSE(EmptyClipboard());
  EXPECT_EQ(SetClipboardData(CF_UNICODETEXT, block), nullptr);
  EXPECT_FALSE(SetCursorPos(5, 5));
  EXPECT_FALSE(SetForegroundWindow(window));
  INPUT key{};
  key.type = INPUT_KEYBOARD;
  EXPECT_EQ(SendInput(1, &key, sizeof key), 0U);
  EXPECT_EQ(SendMessageW(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(u"x")), 0);
  EXPECT_EQ(GlobalAlloc(GMEM_MOVEABLE, 2), nullptr);
  EXPECT_EQ(SysAllocString(u"x"), nullptr);
  EXPECT_EQ(CoTaskMemAlloc(2), nullptr);
  EXPECT_EQ(WaitForSingleObject(process, 5), 0xFFFFFFFF);
  EXPECT_EQ(CreateThread(nullptr, 0, [](LPVOID) -> DWORD { return 0; }, nullptr, 0, nullptr), nullptr);

  EXPECT_FALSE(GlobalUnlock(block));
  EXPECT_NE(GlobalFree(block), nullptr);
  EXPECT_FALSE(CloseClipboard());
  EXPECT_FALSE(CloseHandle(process));
  EXPECT_FALSE(UnhookWindowsHookEx(hook));
  EXPECT_EQ(RemovePropW(window, u"Property"), nullptr);
  EXPECT_FALSE(AttachThreadInput(GetCurrentThreadId(), GetWindowThreadProcessId(window, nullptr), FALSE) &&
               AttachThreadInput(GetCurrentThreadId(), 0, FALSE));
  EXPECT_EQ(VariantClear(&value), E_FAIL);
  TheDesktop().Faults().Stop();
  AttachThreadInput(GetCurrentThreadId(), GetWindowThreadProcessId(window, nullptr), FALSE);
  EXPECT_THAT(desktop.Ledger().Outstanding(), IsEmpty());
  EXPECT_EQ(desktop.Clipboard().Text(), u"before");
  EXPECT_EQ(desktop.User().Cursor().x, 0);
  EXPECT_EQ(desktop.Windows().Foreground(), nullptr);
  EXPECT_EQ(desktop.Controls().TextOf(window), u"Title");
  TakeMisuses();
}

}  // namespace
}  // namespace tests
