// The order form as a Windows program:
//
//   order_form.exe [--at X,Y] [--title TEXT]
#include "samples/order_form/behaviour.h"

// Needs the platform's own headers before it.
#include <shellapi.h>

#include <cstdlib>
#include <cwchar>
#include <map>

namespace order_form {
namespace {

class Form {
 public:
  bool Open(int x, int y, const WCHAR* title);
  int Run();

  void Notified(int id, int code);
  void RememberFocus();
  void RestoreFocus();

 private:
  void AddControl(const Control& control);
  Text TextOf(ControlId id) const;
  void SetText(ControlId id, const Text& text);
  // Puts what the field makes of its content in place of it.
  void Reshape(ControlId id, Text (*shape)(TextView));
  void Submit();
  void Clear();

  HWND window_ = nullptr;
  HWND focus_ = nullptr;
  std::map<int, HWND> controls_;
};

Form theForm;

LRESULT CALLBACK FormProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_COMMAND:
      theForm.Notified(LOWORD(wParam), HIWORD(wParam));
      return 0;
    case WM_ACTIVATE:
      if (LOWORD(wParam) == WA_INACTIVE) {
        theForm.RememberFocus();
        return 0;
      }
      break;
    case WM_SETFOCUS:
      theForm.RestoreFocus();
      return 0;
    case WM_DESTROY:
      PostQuitMessage(0);
      return 0;
    default:
      break;
  }
  return DefWindowProcW(window, message, wParam, lParam);
}

// Controls tell their parent what happens to them: a panel passes it on.
LRESULT CALLBACK PanelProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  return message == WM_COMMAND ? SendMessageW(GetParent(window), message, wParam, lParam)
                               : DefWindowProcW(window, message, wParam, lParam);
}

void RegisterWindowClass(const WCHAR* name, WNDPROC procedure) {
  WNDCLASSEXW windowClass{};
  windowClass.cbSize = sizeof windowClass;
  windowClass.lpfnWndProc = procedure;
  windowClass.hInstance = GetModuleHandleW(nullptr);
  windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  windowClass.hbrBackground = GetSysColorBrush(COLOR_3DFACE);
  windowClass.lpszClassName = name;
  RegisterClassExW(&windowClass);
}

struct Appearance {
  const WCHAR* className;
  DWORD style;
  DWORD extendedStyle;
};

Appearance AppearanceOf(Kind kind) {
  constexpr DWORD kEditStyle = WS_TABSTOP | ES_AUTOHSCROLL;
  switch (kind) {
    case Kind::Panel:
      return {kPanelClass, WS_BORDER, WS_EX_CONTROLPARENT};
    case Kind::Label:
      return {L"Static", SS_LEFT, 0};
    case Kind::Edit:
      return {L"Edit", kEditStyle, WS_EX_CLIENTEDGE};
    case Kind::MultilineEdit:
      return {L"Edit", WS_TABSTOP | ES_MULTILINE | ES_AUTOVSCROLL | ES_WANTRETURN, WS_EX_CLIENTEDGE};
    case Kind::ReadOnlyEdit:
      return {L"Edit", kEditStyle | ES_READONLY, WS_EX_CLIENTEDGE};
    case Kind::Button:
      return {L"Button", WS_TABSTOP | BS_PUSHBUTTON, 0};
    case Kind::List:
      return {L"ListBox", WS_TABSTOP | LBS_NOTIFY | LBS_NOINTEGRALHEIGHT, WS_EX_CLIENTEDGE};
  }
  std::abort();
}

bool Form::Open(int x, int y, const WCHAR* title) {
  RegisterWindowClass(kWindowClass, FormProcedure);
  RegisterWindowClass(kPanelClass, PanelProcedure);
  window_ = CreateWindowExW(WS_EX_CONTROLPARENT, kWindowClass, title,
                            WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX, x, y, kWidth, kHeight, nullptr,
                            nullptr, GetModuleHandleW(nullptr), nullptr);
  if (window_ == nullptr) {
    return false;
  }
  for (const Control& control : kControls) {
    AddControl(control);
  }
  for (const WCHAR* row : kShippingRows) {
    SendMessageW(controls_[kShippingList], LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row));
  }
  focus_ = controls_[kName];
  ShowWindow(window_, SW_SHOWNORMAL);
  SetForegroundWindow(window_);
  return true;
}

void Form::AddControl(const Control& control) {
  const Appearance appearance = AppearanceOf(control.kind);
  const HWND parent = control.parent == 0 ? window_ : controls_[control.parent];
  const HWND made = CreateWindowExW(appearance.extendedStyle, appearance.className, control.text,
                                    WS_CHILD | WS_VISIBLE | appearance.style, control.x, control.y, control.width,
                                    control.height, parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(control.id)),
                                    GetModuleHandleW(nullptr), nullptr);
  SendMessageW(made, WM_SETFONT, reinterpret_cast<WPARAM>(GetStockObject(DEFAULT_GUI_FONT)), FALSE);
  if (control.kind == Kind::Edit || control.kind == Kind::MultilineEdit) {
    // Without the default limit of 32,767 units.
    SendMessageW(made, EM_SETLIMITTEXT, 0, 0);
  }
  if (control.id != 0) {
    controls_[control.id] = made;
  }
}

// Ctrl+A in a field: not every version of the edit control knows it by itself.
bool SelectsAll(const MSG& message) {
  if (message.message != WM_KEYDOWN || message.wParam != 'A' || GetKeyState(VK_CONTROL) >= 0) {
    return false;
  }
  SendMessageW(message.hwnd, EM_SETSEL, 0, -1);
  return true;
}

int Form::Run() {
  MSG message{};
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    if (!SelectsAll(message) && !IsDialogMessageW(window_, &message)) {
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
  }
  return static_cast<int>(message.wParam);
}

void Form::Notified(int id, int code) {
  if (code == EN_CHANGE && id == kPhone) {
    Reshape(kPhone, FormatPhone);
  } else if (code == EN_CHANGE && id == kSecret) {
    Reshape(kSecret, Stars);
  } else if (code == BN_CLICKED && id == kSubmit) {
    Submit();
  } else if (code == BN_CLICKED && id == kClear) {
    Clear();
  }
}

void Form::RememberFocus() {
  if (const HWND focus = GetFocus(); IsChild(window_, focus)) {
    focus_ = focus;
  }
}

void Form::RestoreFocus() {
  SetFocus(focus_);
}

Text Form::TextOf(ControlId id) const {
  const HWND control = controls_.at(id);
  Text text(static_cast<std::size_t>(GetWindowTextLengthW(control)) + 1, L'\0');
  text.resize(static_cast<std::size_t>(GetWindowTextW(control, text.data(), static_cast<int>(text.size()))));
  return text;
}

void Form::SetText(ControlId id, const Text& text) {
  SetWindowTextW(controls_.at(id), text.c_str());
}

void Form::Reshape(ControlId id, Text (*shape)(TextView)) {
  const Text shown = TextOf(id);
  const Text shaped = shape(shown);
  // Setting a text reports a change in its turn.
  if (shaped == shown) {
    return;
  }
  SetText(id, shaped);
  SendMessageW(controls_.at(id), EM_SETSEL, shaped.size(), static_cast<LPARAM>(shaped.size()));
}

void Form::Submit() {
  SetText(kStatus, SubmittedStatus(TextOf(kName), TextOf(kArticle)));
}

void Form::Clear() {
  for (const Control& control : kControls) {
    if (control.kind == Kind::Edit || control.kind == Kind::MultilineEdit) {
      SetText(static_cast<ControlId>(control.id), Text());
    }
  }
  SetText(kStatus, Text(ReadyStatus()));
}

}  // namespace
}  // namespace order_form

int main() {
  int count = 0;
  WCHAR** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  int x = 100;
  int y = 100;
  const WCHAR* title = order_form::kTitle;
  for (int i = 1; i + 1 < count; i += 2) {
    if (std::wcscmp(arguments[i], L"--at") == 0) {
      std::swscanf(arguments[i + 1], L"%d,%d", &x, &y);
    } else if (std::wcscmp(arguments[i], L"--title") == 0) {
      title = arguments[i + 1];
    }
  }
  return order_form::theForm.Open(x, y, title) ? order_form::theForm.Run() : 1;
}
