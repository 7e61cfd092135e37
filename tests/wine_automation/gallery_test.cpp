// What the UI Automation server for Wine tells of a program with one control of each class.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "platform/uia.h"

namespace {

template <class Interface>
struct Release {
  void operator()(Interface* object) const {
    object->Release();
  }
};
template <class Interface>
using Ptr = std::unique_ptr<Interface, Release<Interface>>;

template <class Interface, class Call>
Ptr<Interface> Got(Call call) {
  Interface* object = nullptr;
  EXPECT_HRESULT_SUCCEEDED(call(&object));
  return Ptr<Interface>(object);
}

using Element = Ptr<IUIAutomationElement>;
using Elements = std::vector<Element>;

const std::map<int, std::string> kTypes = {
    {50000, "Button"},      {50002, "CheckBox"},    {50003, "ComboBox"},  {50004, "Edit"},       {50006, "Image"},
    {50007, "ListItem"},    {50008, "List"},        {50009, "Menu"},      {50010, "MenuBar"},    {50011, "MenuItem"},
    {50012, "ProgressBar"}, {50013, "RadioButton"}, {50014, "ScrollBar"}, {50015, "Slider"},     {50017, "StatusBar"},
    {50018, "Tab"},         {50019, "TabItem"},     {50020, "Text"},      {50021, "ToolBar"},    {50023, "Tree"},
    {50024, "TreeItem"},    {50026, "Group"},       {50028, "DataGrid"},  {50029, "DataItem"},   {50030, "Document"},
    {50032, "Window"},      {50033, "Pane"},        {50034, "Header"},    {50035, "HeaderItem"}, {50037, "TitleBar"},
    {50038, "Separator"},
};

class GalleryTest : public ::testing::Test {
 protected:
  void TearDown() override {
    automation_.reset();
    if (process_.hProcess != nullptr) {
      TerminateProcess(process_.hProcess, 0);
      WaitForSingleObject(process_.hProcess, 5000);
      CloseHandle(process_.hThread);
      CloseHandle(process_.hProcess);
    }
    CoUninitialize();
  }

  void Start(int rows) {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    std::string command = "gallery.exe " + std::to_string(rows);
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    ASSERT_TRUE(
        CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process_));
    for (int i = 0; i < 300 && !IsWindowVisible(window_); ++i) {
      Sleep(50);
      window_ = FindWindowW(L"Gallery", nullptr);
    }
    if (!IsWindowVisible(window_)) {
      GTEST_FAIL() << "no window";
    }
    SetForegroundWindow(window_);
    // Until it is drawn.
    Sleep(300);
    IUIAutomation* automation = nullptr;
    ASSERT_HRESULT_SUCCEEDED(CoCreateInstance(CLSID_CUIAutomation, nullptr, CLSCTX_INPROC_SERVER, IID_IUIAutomation,
                                              reinterpret_cast<void**>(&automation)));
    automation_.reset(automation);
    // Newer versions of Wine bring a client object of their own.
    ASSERT_NE(GetModuleHandleW(L"wine_automation.dll"), nullptr);
  }

  HWND Control(int id) const {
    return GetDlgItem(window_, id);
  }

  Element Of(HWND window) const {
    return Got<IUIAutomationElement>([&](auto out) { return automation_->ElementFromHandle(window, out); });
  }

  Element At(POINT point) const {
    return Got<IUIAutomationElement>([&](auto out) { return automation_->ElementFromPoint(point, out); });
  }

  Elements Children(IUIAutomationElement& parent) const {
    const auto all = Got<IUIAutomationCondition>([&](auto out) { return automation_->CreateTrueCondition(out); });
    const auto found =
        Got<IUIAutomationElementArray>([&](auto out) { return parent.FindAll(TreeScope_Children, all.get(), out); });
    int count = 0;
    found->get_Length(&count);
    Elements children;
    for (int i = 0; i < count; ++i) {
      children.push_back(Got<IUIAutomationElement>([&](auto out) { return found->GetElement(i, out); }));
    }
    return children;
  }

  Element Above(IUIAutomationElement& element) const {
    const auto walker = Got<IUIAutomationTreeWalker>([&](auto out) { return automation_->get_ControlViewWalker(out); });
    return Got<IUIAutomationElement>([&](auto out) { return walker->GetParentElement(&element, out); });
  }

  bool IsSame(IUIAutomationElement& a, IUIAutomationElement& b) const {
    BOOL same = FALSE;
    automation_->CompareElements(&a, &b, &same);
    return same != FALSE;
  }

  static std::string Text(BSTR text) {
    std::string narrow;
    for (UINT i = 0; i < SysStringLen(text); ++i) {
      narrow += text[i] == L'\t' ? ' ' : text[i] < 0x80 ? static_cast<char>(text[i]) : '?';
    }
    SysFreeString(text);
    return narrow;
  }

  // "CheckBox 'R&D & more' #12 toggle=1"
  static std::string Described(IUIAutomationElement& element) {
    CONTROLTYPEID type = 0;
    element.get_CurrentControlType(&type);
    BSTR name = nullptr;
    BSTR id = nullptr;
    EXPECT_HRESULT_SUCCEEDED(element.get_CurrentName(&name));
    EXPECT_HRESULT_SUCCEEDED(element.get_CurrentAutomationId(&id));
    const auto known = kTypes.find(type);
    std::string line = known == kTypes.end() ? std::to_string(type) : known->second;
    line += " '" + Text(name) + "'";
    const std::string shownId = Text(id);
    line += shownId.empty() ? "" : " #" + shownId;
    static const std::pair<PROPERTYID, const char*> kShown[] = {
        {UIA_ValueValuePropertyId, "value"},
        {30047, "range"},
        {30086, "toggle"},
        {30079, "selected"},
        {30070, "expanded"},
    };
    for (const auto& [property, label] : kShown) {
      VARIANT value{};
      EXPECT_HRESULT_SUCCEEDED(element.GetCurrentPropertyValue(property, &value)) << line << ' ' << label;
      if (value.vt == VT_BSTR) {
        line += std::string(" ") + label + "='" + Text(value.bstrVal) + "'";
      } else if (value.vt == VT_R8) {
        line += std::string(" ") + label + "=" + std::to_string(static_cast<int>(value.dblVal));
      } else if (value.vt != VT_EMPTY) {
        line += std::string(" ") + label + "=" + std::to_string(value.vt == VT_BOOL ? value.boolVal : value.lVal);
      }
    }
    VARIANT enabled{};
    element.GetCurrentPropertyValue(30010, &enabled);
    line += enabled.vt == VT_BOOL && enabled.boolVal == VARIANT_FALSE ? " disabled" : "";
    return line;
  }

  // The tree below an element, one line each, children indented.
  std::string Tree(IUIAutomationElement& element, int depth = 0) const {
    std::string lines(static_cast<std::size_t>(depth) * 2, ' ');
    lines += Described(element) + "\n";
    for (const Element& child : Children(element)) {
      lines += Tree(*child, depth + 1);
    }
    return lines;
  }

  // The elements below one whose clickable point leads elsewhere, or to none.
  std::vector<std::string> Unreachable(IUIAutomationElement& element) const {
    std::vector<std::string> lost;
    for (const Element& child : Children(element)) {
      POINT point{};
      BOOL clickable = FALSE;
      const HRESULT result = child->GetClickablePoint(&point, &clickable);
      const Elements below = Children(*child);
      if (below.empty() && (FAILED(result) || !IsSame(*At(point), *child))) {
        lost.push_back(Described(*child) + (FAILED(result) ? " has no point" : " is " + Described(*At(point))));
      }
      for (std::string& other : Unreachable(*child)) {
        lost.push_back(std::move(other));
      }
    }
    return lost;
  }

  static void Click(IUIAutomationElement& element) {
    POINT point{};
    BOOL clickable = FALSE;
    ASSERT_HRESULT_SUCCEEDED(element.GetClickablePoint(&point, &clickable));
    SetCursorPos(point.x, point.y);
    mouse_event(MOUSEEVENTF_LEFTDOWN, 0, 0, 0, 0);
    mouse_event(MOUSEEVENTF_LEFTUP, 0, 0, 0, 0);
  }

  static std::wstring TitleOf(HWND window) {
    wchar_t title[100] = {};
    GetWindowTextW(window, title, 100);
    return title;
  }

  // A window that shows within a while; null when there is none.
  template <class Find>
  static HWND Await(Find find) {
    HWND window = nullptr;
    for (int i = 0; i < 100 && window == nullptr; ++i) {
      Sleep(50);
      window = find();
    }
    return window;
  }

  HWND window_ = nullptr;
  PROCESS_INFORMATION process_{};
  Ptr<IUIAutomation> automation_;
};

double Milliseconds() {
  LARGE_INTEGER now;
  LARGE_INTEGER frequency;
  QueryPerformanceCounter(&now);
  QueryPerformanceFrequency(&frequency);
  return static_cast<double>(now.QuadPart) * 1000 / static_cast<double>(frequency.QuadPart);
}

TEST_F(GalleryTest, EveryControlIsTold) {
  Start(3);
  EXPECT_EQ(1 + R"(
Window 'Gallery'
  ToolBar '' #71
    Button 'New' #Item 201
    Separator ''
    Button 'Bold' #Item 202 toggle=1
  Text 'Name:'
  Edit 'Name:' #11 value='Ada'
  CheckBox 'R&D & more' #12 toggle=1
  Group 'Group' #13
  RadioButton 'One' #14 selected=0
  RadioButton 'Two' #15 selected=-1
  Text 'Wide'
  Button 'Under' #16
  Image '' #17
  Slider '' #19 range=30
  ProgressBar '' #20 range=40
  Document '' #21 value='rich'
  Pane 'own' #22
    Button 'Left' disabled
    CheckBox 'Right' toggle=1
  List '' #31
    ListItem 'row 1' selected=0
    ListItem 'row 2' selected=-1
    ListItem 'row 3' selected=0
  List '' #32
    ListItem '' selected=0
  ComboBox '' #33 value='green' expanded=0
    Button 'Open' #DropDown
  ComboBox '' #34 value='' expanded=0
    Edit '' #1001 value=''
    Button 'Open' #DropDown
  Tree '' #41
    TreeItem 'row 1' selected=0 expanded=1
      TreeItem 'leaf' selected=0 expanded=3
    TreeItem 'row 2' selected=0 expanded=3
    TreeItem 'row 3' selected=0 expanded=3
  DataGrid '' #51
    Header ''
      HeaderItem 'Key'
      HeaderItem 'Value'
    DataItem 'row 1' selected=0
      Text 'row 1'
      Text 'v1'
    DataItem 'row 2' selected=0
      Text 'row 2'
      Text 'v2'
    DataItem 'row 3' selected=0
      Text 'row 3'
      Text 'v3'
  Tab '' #61
    TabItem 'First' selected=-1
    TabItem 'Second' selected=0
  StatusBar '' #81
    Text 'ready'
    Text 'line 1'
  TitleBar '' #TitleBar
    Button 'Minimize' #Minimize
    Button 'Maximize' #Maximize
    Button 'Close' #Close
  MenuBar 'Application' #MenuBar
    MenuItem 'File'
    MenuItem 'About' #Item 104
)",
            Tree(*Of(window_)));
}

TEST_F(GalleryTest, EveryPartIsWhereItsPointLeads) {
  Start(3);
  // A separator takes no click; a group box and a label give way to the controls that lie on them.
  EXPECT_THAT(
      Unreachable(*Of(window_)),
      ::testing::ElementsAre("Separator '' is ToolBar '' #71", "Group 'Group' #13 is RadioButton 'Two' #15 selected=-1",
                             "Text 'Wide' is Button 'Under' #16"));
}

TEST_F(GalleryTest, OpenMenuIsAWindowOfItems) {
  Start(3);
  const Element bar = std::move(Children(*Of(window_)).back());
  Click(*Children(*bar).front());
  const HWND popup = Await([] { return FindWindowW(L"#32768", nullptr); });
  ASSERT_NE(popup, nullptr);
  EXPECT_EQ(1 + R"(
Menu ''
  MenuItem 'Open... Ctrl+O' #Item 101
  MenuItem 'Wrap' #Item 102 toggle=1
  Separator ''
  MenuItem 'R&D' #Item 103 disabled
  MenuItem 'Recent'
)",
            Tree(*Of(popup)));
  EXPECT_THAT(Unreachable(*Of(popup)), ::testing::ElementsAre());

  EXPECT_TRUE(IsSame(*Children(*Of(window_)).front(), *Of(popup)));
  EXPECT_TRUE(IsSame(*Above(*Of(popup)), *Of(window_)));

  Click(*Children(*Of(popup)).front());
  EXPECT_TRUE(Await([&] { return TitleOf(window_) == L"Command 101" ? window_ : nullptr; }));
  EXPECT_FALSE(IsWindowVisible(popup));
}

TEST_F(GalleryTest, DroppedListIsBelowItsComboBox) {
  Start(3);
  const Element combo = Of(Control(33));
  Click(*Children(*combo).front());
  const HWND list = Await([] {
    const HWND found = FindWindowW(L"ComboLBox", nullptr);
    return IsWindowVisible(found) ? found : nullptr;
  });
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(1 + R"(
ComboBox '' #33 value='green' expanded=1
  List '' #1000
    ListItem 'red' selected=0
    ListItem 'green' selected=-1
    ListItem 'blue' selected=0
  Button 'Close' #DropDown
)",
            Tree(*combo));
  EXPECT_TRUE(IsSame(*Above(*Of(list)), *combo));
  EXPECT_THAT(Unreachable(*Of(list)), ::testing::ElementsAre());

  Click(*Children(*Of(list)).back());
  EXPECT_TRUE(Await([&] { return SendMessageW(Control(33), CB_GETCURSEL, 0, 0) == 2 ? list : nullptr; }));
}

TEST_F(GalleryTest, DialogIsBelowTheWindowThatOwnsIt) {
  Start(3);
  Click(*Children(*Children(*Of(window_)).back())[1]);
  const HWND dialog = Await([] { return FindWindowW(L"#32770", L"About"); });
  ASSERT_NE(dialog, nullptr);
  Sleep(200);
  EXPECT_TRUE(IsSame(*Children(*Of(window_)).front(), *Of(dialog)));
  EXPECT_TRUE(IsSame(*Above(*Of(dialog)), *Of(window_)));
  for (const Element& top : Children(*Above(*Of(window_)))) {
    EXPECT_FALSE(IsSame(*top, *Of(dialog)));
  }
  const Element button = Of(GetDlgItem(dialog, IDOK));
  EXPECT_EQ("Button 'OK' #1", Described(*button));
  EXPECT_THAT(Unreachable(*Of(dialog)), ::testing::ElementsAre());
  Click(*button);
  EXPECT_TRUE(Await([&] { return TitleOf(window_) == L"Command 104" ? window_ : nullptr; }));
}

TEST_F(GalleryTest, TitleBarTakesClicks) {
  Start(3);
  Elements bars = Children(*Of(window_));
  const Element title = std::move(bars[bars.size() - 2]);
  Click(*Children(*title)[1]);
  EXPECT_TRUE(Await([&] { return IsZoomed(window_) ? window_ : nullptr; }));
  EXPECT_EQ("Button 'Restore' #Restore", Described(*Children(*title)[1]));
  Click(*Children(*title)[2]);
  EXPECT_TRUE(Await([&] { return IsWindow(window_) ? nullptr : GetDesktopWindow(); }));
}

TEST_F(GalleryTest, ControlThatDoesNotAnswerOffersNoPartAndNoPoint) {
  Start(3);
  RECT rect{};
  GetWindowRect(Control(31), &rect);
  const Element list = Of(Control(31));
  EXPECT_THAT(Described(*At({rect.left + 20, rect.top + 10})), ::testing::StartsWith("ListItem 'row 1'"));

  PostMessageW(window_, WM_APP, 20000, 0);
  EXPECT_TRUE(IsSame(*At({rect.left + 20, rect.top + 10}), *list));
  EXPECT_EQ(0u, Children(*list).size());
  POINT point{};
  BOOL clickable = TRUE;
  EXPECT_HRESULT_FAILED(list->GetClickablePoint(&point, &clickable));
}

// Not a test: what a level and a hit cost. Run with --gtest_also_run_disabled_tests.
TEST_F(GalleryTest, DISABLED_Costs) {
  Start(1000);
  const auto all = Got<IUIAutomationCondition>([&](auto out) { return automation_->CreateTrueCondition(out); });
  const auto request = Got<IUIAutomationCacheRequest>([&](auto out) { return automation_->CreateCacheRequest(out); });
  request->AddProperty(UIA_ControlTypePropertyId);
  request->AddProperty(UIA_ClassNamePropertyId);
  for (const auto& [id, name] : {std::pair{31, "list box"}, {41, "tree"}, {51, "list view"}, {71, "tool bar"}}) {
    const Element control = Of(Control(id));
    for (int i = 0; i < 3; ++i) {
      const double start = Milliseconds();
      const auto found = Got<IUIAutomationElementArray>(
          [&](auto out) { return control->FindAllBuildCache(TreeScope_Children, all.get(), request.get(), out); });
      const double end = Milliseconds();
      int count = 0;
      found->get_Length(&count);
      std::printf("%s: %d parts in %.2f ms", name, count, end - start);
      const double walk = Milliseconds();
      for (int k = 0; k < count; ++k) {
        const auto element = Got<IUIAutomationElement>([&](auto out) { return found->GetElement(k, out); });
        IsSame(*element, *control);
      }
      std::printf(", compared one by one in %.2f ms\n", Milliseconds() - walk);
    }
  }
  for (const int id : {11, 31, 41, 51, 61, 71}) {
    RECT rect{};
    GetWindowRect(Control(id), &rect);
    const POINT point{rect.left + 20, rect.top + 10};
    std::vector<double> plain;
    std::vector<double> hit;
    for (int i = 0; i < 200; ++i) {
      const double start = Milliseconds();
      WindowFromPoint(point);
      const double middle = Milliseconds();
      At(point);
      plain.push_back(middle - start);
      hit.push_back(Milliseconds() - middle);
    }
    std::sort(plain.begin(), plain.end());
    std::sort(hit.begin(), hit.end());
    std::printf("%d: WindowFromPoint %.3f ms, hit test %.3f ms (medians), p90 %.3f and %.3f\n", id, plain[100],
                hit[100], plain[180], hit[180]);
  }
  std::fflush(stdout);
}

}  // namespace
