// The scripted desktop: windows, focus and elements.
#include "tests/native/desktop_fixture.h"

namespace tests {
namespace {

TEST_F(StandinTest, TopmostShownWindowIsHit) {
  auto& desktop = TheDesktop();
  const HWND below = AddWindow({0, 0, 100, 100});
  const HWND above = AddWindow({50, 50, 150, 150});
  const HWND child = AddChild(above, Behaviour::Edit, {60, 60, 80, 80});
  const auto row = desktop.Elements().Add(above, {.name = u"Row", .rect = {80, 80, 100, 100}});
  EXPECT_EQ(WindowFromPoint({70, 70}), child);
  EXPECT_EQ(WindowFromPoint({90, 90}), above) << "a part without a window has none";
  desktop.Windows().BringToTop(below);
  EXPECT_EQ(WindowFromPoint({70, 70}), below);
  desktop.Windows().Minimize(below);
  EXPECT_EQ(WindowFromPoint({70, 70}), child);
  desktop.Windows().SetVisible(child, false);
  EXPECT_EQ(WindowFromPoint({70, 70}), above);
  EXPECT_EQ(WindowFromPoint({10, 10}), nullptr);
  EXPECT_EQ(WindowFromPoint({150, 150}), nullptr) << "right and bottom lie outside";
  desktop.Windows().MoveTo(above, 500, 50);
  RECT rect{};
  EXPECT_TRUE(GetWindowRect(child, &rect));
  EXPECT_EQ(rect.left, 510);
  desktop.Windows().Destroy(above);
  EXPECT_FALSE(IsWindow(child));
  EXPECT_FALSE(GetWindowRect(child, &rect));
  desktop.Elements().SetProperty(row, UIA_NamePropertyId, u"nobody");
}

TEST_F(StandinTest, OwnedWindowsStayAboveTheirOwner) {
  const HWND owner = AddWindow({0, 0, 100, 100});
  const HWND owned = AddWindow({0, 0, 50, 50}, owner);
  AddWindow({0, 0, 100, 100});
  TheDesktop().Windows().SetForeground(owner);
  EXPECT_EQ(WindowFromPoint({10, 10}), owned);
  EXPECT_EQ(WindowFromPoint({60, 60}), owner);
  EXPECT_EQ(GetParent(owned), owner);
  EXPECT_EQ(GetAncestor(owned, GA_ROOT), owned);
  TheDesktop().Windows().Destroy(owner);
  EXPECT_FALSE(IsWindow(owned));
}

TEST_F(StandinTest, KeysGoToTheWindowInFront) {
  auto& desktop = TheDesktop();
  const HWND first = AddWindow({0, 0, 100, 100});
  const HWND second = AddWindow({200, 0, 300, 100});
  const HWND edit = AddChild(first, Behaviour::Edit);
  desktop.User().Click(20, 20);
  EXPECT_EQ(desktop.Windows().Focus(), edit);
  EXPECT_EQ(desktop.Windows().Foreground(), first);
  EXPECT_TRUE(SetForegroundWindow(second));
  EXPECT_EQ(desktop.Windows().Focus(), second);
  EXPECT_TRUE(SetForegroundWindow(edit));
  EXPECT_EQ(GetForegroundWindow(), first) << "a control is never in front itself";
  EXPECT_EQ(desktop.Windows().Focus(), edit) << "as it was left";

  desktop.Windows().RefuseForeground(1);
  EXPECT_FALSE(SetForegroundWindow(second));
  EXPECT_EQ(SetActiveWindow(second), nullptr) << "not of this thread's queue";
  const DWORD theirs = GetWindowThreadProcessId(second, nullptr);
  EXPECT_FALSE(AttachThreadInput(GetCurrentThreadId(), 0, TRUE));
  EXPECT_TRUE(AttachThreadInput(GetCurrentThreadId(), theirs, TRUE));
  EXPECT_THAT(desktop.Ledger().Outstanding(), ElementsAre("attached input queue"));
  EXPECT_TRUE(SetForegroundWindow(second));
  EXPECT_TRUE(AttachThreadInput(GetCurrentThreadId(), theirs, FALSE));
  EXPECT_EQ(desktop.Windows().Foreground(), second);
  const HWND own = desktop.Host().AddWindow({.rect = {0, 0, 10, 10}});
  EXPECT_EQ(SetActiveWindow(own), second);
  EXPECT_EQ(desktop.Windows().Foreground(), own);
}

class StandinElementsTest : public StandinTest {
 protected:
  void SetUp() override {
    StandinTest::SetUp();
    void* object = nullptr;
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    ASSERT_EQ(CoCreateInstance(CLSID_CUIAutomation, nullptr, CLSCTX_INPROC_SERVER, IID_IUIAutomation, &object), S_OK);
    automation_ = static_cast<IUIAutomation*>(object);
  }
  void TearDown() override {
    automation_->Release();
    CoUninitialize();
    StandinTest::TearDown();
  }

  IUIAutomation* automation_ = nullptr;
};

TEST_F(StandinElementsTest, AnswerForTheirWindowUntilItIsDestroyed) {
  auto& desktop = TheDesktop();
  const HWND window = AddWindow({0, 0, 100, 100});
  const HWND edit = AddChild(window, Behaviour::Edit, {50, 50, 150, 70});
  desktop.Controls().SetText(edit, u"text");
  EXPECT_THAT(desktop.Ledger().Outstanding(), ElementsAre("COM initialisation", "IUIAutomation"));

  IUIAutomationElement* element = nullptr;
  ASSERT_EQ(automation_->ElementFromPoint({60, 60}, &element), S_OK);
  UIA_HWND handle = nullptr;
  EXPECT_EQ(element->get_CurrentNativeWindowHandle(&handle), S_OK);
  EXPECT_EQ(handle, edit);
  VARIANT value{};
  EXPECT_EQ(element->GetCurrentPropertyValue(UIA_ValueValuePropertyId, &value), S_OK);
  EXPECT_EQ(standin::Text(value.bstrVal), u"text");
  EXPECT_THAT(desktop.Ledger().Outstanding(),
              ElementsAre("BSTR", "COM initialisation", "IUIAutomation", "IUIAutomationElement"));
  EXPECT_EQ(VariantClear(&value), S_OK);
  EXPECT_EQ(element->GetCurrentPropertyValue(UIA_LegacyIAccessibleValuePropertyId, &value), S_OK);
  EXPECT_EQ(value.vt, VT_EMPTY);
  POINT point{};
  BOOL got = FALSE;
  EXPECT_EQ(element->GetClickablePoint(&point, &got), S_OK);
  EXPECT_EQ(point.x, 75) << "the middle of the part that the parent does not cut off";
  desktop.Windows().Minimize(window);
  EXPECT_LT(element->GetClickablePoint(&point, &got), 0);

  desktop.Windows().Destroy(edit);
  EXPECT_EQ(element->get_CurrentNativeWindowHandle(&handle), static_cast<HRESULT>(0x80040201));
  element->Release();
}

TEST_F(StandinElementsTest, FailAndCountAsCallsOfTheirOwn) {
  AddWindow({0, 0, 100, 100});
  IUIAutomationElement* element = nullptr;
  TheDesktop().Calls().SetCrossProcessCost(2.5);
  TheDesktop().Faults().FailWith("IUIAutomation::ElementFromPoint", E_OUTOFMEMORY);
  TheDesktop().Faults().FailNth("IUIAutomation::ElementFromPoint", 2);
  const double start = TheDesktop().Clock().Now();
  ASSERT_EQ(automation_->ElementFromPoint({60, 60}, &element), S_OK);
  element->Release();
  EXPECT_EQ(automation_->ElementFromPoint({60, 60}, &element), E_OUTOFMEMORY);
  EXPECT_EQ(element, nullptr);
  EXPECT_EQ(TheDesktop().Clock().Now(), start + 5);
  EXPECT_EQ(TheDesktop().Calls().CrossProcessCount(), 2U);

  TheDesktop().Faults().FailNth("NewString", 1);
  ASSERT_EQ(automation_->ElementFromPoint({60, 60}, &element), S_OK);
  BSTR name = nullptr;
  EXPECT_EQ(element->get_CurrentName(&name), E_OUTOFMEMORY);
  EXPECT_FALSE(standin::InsidePlatformCall());
  TheDesktop().Calls().After("IUIAutomationElement::get_CurrentName", 1,
                             [&] { EXPECT_EQ(standin::Text(name), u"Title"); });
  EXPECT_EQ(element->get_CurrentName(&name), S_OK);
  SysFreeString(name);
  element->Release();
}

}  // namespace
}  // namespace tests
