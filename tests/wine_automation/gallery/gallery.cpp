// A program of its own with one control of each class, for the tests of the UI Automation server. Takes the number of
// rows of its long lists.
#include <windows.h>
// After it.
#include <commctrl.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "accessible_parts.h"

namespace {

enum Command : WORD { kOpen = 101, kWrap = 102, kGrey = 103, kAbout = 104, kNew = 201, kBold = 202 };

HWND Add(HWND parent, const wchar_t* className, const wchar_t* text, DWORD style, RECT place, int id) {
  return CreateWindowW(className, text, WS_CHILD | WS_VISIBLE | style, place.left, place.top, place.right, place.bottom,
                       parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
}

LRESULT Send(HWND window, UINT message, WPARAM wParam, const void* data) {
  return SendMessageW(window, message, wParam, reinterpret_cast<LPARAM>(data));
}

std::wstring Row(int number) {
  return L"row " + std::to_wstring(number);
}

HMENU Menus() {
  const HMENU recent = CreatePopupMenu();
  AppendMenuW(recent, MF_STRING, kAbout, L"&letter.txt");
  const HMENU file = CreatePopupMenu();
  AppendMenuW(file, MF_STRING, kOpen, L"&Open...\tCtrl+O");
  AppendMenuW(file, MF_STRING | MF_CHECKED, kWrap, L"&Wrap");
  AppendMenuW(file, MF_SEPARATOR, 0, nullptr);
  AppendMenuW(file, MF_STRING | MF_GRAYED, kGrey, L"R&&D");
  AppendMenuW(file, MF_POPUP, reinterpret_cast<UINT_PTR>(recent), L"&Recent");
  const HMENU bar = CreateMenu();
  AppendMenuW(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(file), L"&File");
  AppendMenuW(bar, MF_STRING, kAbout, L"&About");
  return bar;
}

void AddSimpleControls(HWND window) {
  Add(window, L"Static", L"&Name:", 0, {10, 60, 60, 20}, -1);
  Add(window, L"Edit", L"Ada", WS_BORDER, {70, 60, 100, 20}, 11);
  Add(window, L"Button", L"R&&D && &more", BS_AUTOCHECKBOX, {180, 60, 120, 20}, 12);
  Send(GetDlgItem(window, 12), BM_SETCHECK, BST_CHECKED, nullptr);
  Add(window, L"Button", L"Group", BS_GROUPBOX, {310, 50, 200, 60}, 13);
  Add(window, L"Button", L"One", BS_AUTORADIOBUTTON, {320, 70, 80, 20}, 14);
  Add(window, L"Button", L"Two", BS_AUTORADIOBUTTON, {410, 70, 80, 20}, 15);
  Send(GetDlgItem(window, 15), BM_SETCHECK, BST_CHECKED, nullptr);
  // A label that reaches over the button beside it.
  Add(window, L"Static", L"Wide", 0, {10, 90, 250, 24}, 0);
  Add(window, L"Button", L"Under", 0, {100, 90, 80, 24}, 16);
  Add(window, L"Static", L"", SS_ICON, {520, 60, 32, 32}, 17);
  ShowWindow(Add(window, L"Button", L"Hidden", BS_AUTOCHECKBOX, {180, 60, 120, 20}, 18), SW_HIDE);
  Add(window, TRACKBAR_CLASSW, L"", 0, {570, 60, 100, 30}, 19);
  Send(GetDlgItem(window, 19), TBM_SETPOS, TRUE, reinterpret_cast<const void*>(30));
  Add(window, PROGRESS_CLASSW, L"", 0, {570, 95, 100, 20}, 20);
  Send(GetDlgItem(window, 20), PBM_SETPOS, 40, nullptr);
  LoadLibraryW(L"msftedit.dll");
  Add(window, L"RichEdit50W", L"rich", ES_MULTILINE | WS_BORDER, {680, 60, 100, 50}, 21);
  Add(window, L"Own class", L"own", 0, {680, 115, 100, 20}, 22);
}

void AddListsOfText(HWND window, int rows) {
  const HWND list = Add(window, L"ListBox", L"", WS_BORDER | WS_VSCROLL, {10, 140, 120, 100}, 31);
  const HWND drawn = Add(window, L"ListBox", L"", WS_BORDER | LBS_OWNERDRAWFIXED, {140, 140, 80, 60}, 32);
  const HWND combo = Add(window, L"ComboBox", L"", CBS_DROPDOWNLIST | WS_VSCROLL, {230, 140, 120, 200}, 33);
  const HWND edit = Add(window, L"ComboBox", L"", CBS_DROPDOWN, {230, 170, 120, 200}, 34);
  for (int i = 1; i <= rows; ++i) {
    Send(list, LB_ADDSTRING, 0, Row(i).c_str());
  }
  Send(list, LB_SETCURSEL, 1, nullptr);
  // Not texts but data of the program's own.
  Send(drawn, LB_ADDSTRING, 0, reinterpret_cast<const void*>(0x41414141));
  for (const wchar_t* text : {L"red", L"green", L"blue"}) {
    Send(combo, CB_ADDSTRING, 0, text);
    Send(edit, CB_ADDSTRING, 0, text);
  }
  Send(combo, CB_SETCURSEL, 1, nullptr);
}

void AddTree(HWND window, int rows) {
  const HWND tree = Add(window, WC_TREEVIEWW, L"", TVS_HASBUTTONS | TVS_HASLINES | TVS_LINESATROOT | WS_BORDER,
                        {360, 140, 140, 100}, 41);
  TVINSERTSTRUCTW insert{};
  insert.hInsertAfter = TVI_LAST;
  insert.item.mask = TVIF_TEXT;
  HTREEITEM first = nullptr;
  for (int i = 1; i <= rows; ++i) {
    std::wstring text = Row(i);
    insert.item.pszText = text.data();
    const auto item = reinterpret_cast<HTREEITEM>(Send(tree, TVM_INSERTITEMW, 0, &insert));
    first = first == nullptr ? item : first;
  }
  wchar_t leaf[] = L"leaf";
  insert.hParent = first;
  insert.item.pszText = leaf;
  Send(tree, TVM_INSERTITEMW, 0, &insert);
  Send(tree, TVM_EXPAND, TVE_EXPAND, first);
}

void AddListView(HWND window, int rows) {
  const HWND list = Add(window, WC_LISTVIEWW, L"", LVS_REPORT | WS_BORDER, {510, 140, 270, 100}, 51);
  for (int column = 0; column < 2; ++column) {
    LVCOLUMNW described{};
    described.mask = LVCF_TEXT | LVCF_WIDTH;
    described.cx = 100;
    std::wstring text = column == 0 ? L"Key" : L"Value";
    described.pszText = text.data();
    Send(list, LVM_INSERTCOLUMNW, static_cast<WPARAM>(column), &described);
  }
  for (int i = 0; i < rows; ++i) {
    std::wstring text = Row(i + 1);
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = i;
    item.pszText = text.data();
    Send(list, LVM_INSERTITEMW, 0, &item);
    text = L"v" + std::to_wstring(i + 1);
    item.iSubItem = 1;
    item.pszText = text.data();
    Send(list, LVM_SETITEMTEXTW, static_cast<WPARAM>(i), &item);
  }
}

void AddTabs(HWND window) {
  const HWND tabs = Add(window, WC_TABCONTROLW, L"", WS_CLIPSIBLINGS, {10, 250, 300, 60}, 61);
  for (const wchar_t* text : {L"First", L"&Second"}) {
    TCITEMW item{};
    item.mask = TCIF_TEXT;
    item.pszText = const_cast<wchar_t*>(text);
    Send(tabs, TCM_INSERTITEMW, static_cast<WPARAM>(Send(tabs, TCM_GETITEMCOUNT, 0, nullptr)), &item);
  }
}

void AddToolBar(HWND window, int rows) {
  const HWND bar = Add(window, TOOLBARCLASSNAMEW, L"", TBSTYLE_LIST | TBSTYLE_WRAPABLE, {0, 0, 0, 0}, 71);
  Send(bar, TB_BUTTONSTRUCTSIZE, sizeof(TBBUTTON), nullptr);
  std::vector<TBBUTTON> buttons;
  const auto add = [&buttons](int command, const wchar_t* text, BYTE style, BYTE state) {
    TBBUTTON button{};
    button.iBitmap = I_IMAGENONE;
    button.idCommand = command;
    button.fsState = state;
    button.fsStyle = static_cast<BYTE>(style | BTNS_AUTOSIZE);
    button.iString = reinterpret_cast<INT_PTR>(text);
    buttons.push_back(button);
  };
  add(kNew, L"&New", BTNS_BUTTON, TBSTATE_ENABLED);
  add(0, L"", BTNS_SEP, 0);
  add(kBold, L"Bold", BTNS_CHECK, TBSTATE_ENABLED | TBSTATE_CHECKED);
  for (int i = 0; rows > 100 && i < rows; ++i) {
    add(1000 + i, L"n", BTNS_BUTTON, TBSTATE_ENABLED);
  }
  Send(bar, TB_ADDBUTTONSW, buttons.size(), buttons.data());
  Send(bar, TB_AUTOSIZE, 0, nullptr);
}

void AddStatusBar(HWND window) {
  const HWND bar = Add(window, STATUSCLASSNAMEW, L"", 0, {}, 81);
  const int ends[] = {200, -1};
  Send(bar, SB_SETPARTS, 2, ends);
  Send(bar, SB_SETTEXTW, 0, L"ready");
  Send(bar, SB_SETTEXTW, 1, L"line 1");
}

LRESULT CALLBACK ServeOwn(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  return message == WM_GETOBJECT ? AnswerAccessible(window, wParam, lParam)
                                 : DefWindowProcW(window, message, wParam, lParam);
}

LRESULT CALLBACK Serve(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_DESTROY) {
    PostQuitMessage(0);
  }
  if (message == WM_COMMAND && lParam == 0) {
    if (LOWORD(wParam) == kAbout) {
      MessageBoxW(window, L"A program of controls.", L"About", MB_OK);
    }
    SetWindowTextW(window, (L"Command " + std::to_wstring(LOWORD(wParam))).c_str());
  }
  // A program that hangs.
  if (message == WM_APP) {
    Sleep(static_cast<DWORD>(wParam));
  }
  return DefWindowProcW(window, message, wParam, lParam);
}

void Register(const wchar_t* name, WNDPROC procedure) {
  WNDCLASSW described{};
  described.lpfnWndProc = procedure;
  described.lpszClassName = name;
  described.hInstance = GetModuleHandleW(nullptr);
  described.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
  RegisterClassW(&described);
}

}  // namespace

int main(int count, char** arguments) {
  const int rows = count > 1 ? std::atoi(arguments[1]) : 3;
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  INITCOMMONCONTROLSEX controls = {sizeof controls, 0xFFFF};
  InitCommonControlsEx(&controls);
  Register(L"Gallery", Serve);
  Register(L"Own class", ServeOwn);
  const HWND window = CreateWindowW(L"Gallery", L"Gallery", WS_OVERLAPPEDWINDOW, 40, 40, 820, 420, nullptr, Menus(),
                                    GetModuleHandleW(nullptr), nullptr);
  AddToolBar(window, rows);
  AddSimpleControls(window);
  AddListsOfText(window, rows);
  AddTree(window, rows);
  AddListView(window, rows);
  AddTabs(window);
  AddStatusBar(window);
  ShowWindow(window, SW_SHOW);
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  return 0;
}
