#include "host/world/outline.h"

#include <windows.h>

#include <algorithm>

#include "host/base/text.h"

namespace host::world {

namespace {

constexpr const wchar_t* kClassName = L"KorvaneOutline";
constexpr int kThickness = 3;
constexpr int kTextHeight = 18;
constexpr int kTextMargin = 6;

COLORREF ColourOf(OutlineColour colour) {
  switch (colour) {
    case OutlineColour::Green:
      return RGB(0x1B, 0x7F, 0x3B);
    case OutlineColour::Yellow:
      return RGB(0xB2, 0x6A, 0x00);
    case OutlineColour::Red:
      break;
  }
  return RGB(0xB3, 0x26, 0x1E);
}

}  // namespace

struct Outline::State {
  HWND window = nullptr;
  HBRUSH brush = nullptr;
  WideText text;
  int textWidth = 0;

  ~State() {
    if (window != nullptr) {
      DestroyWindow(window);
    }
    DeleteObject(brush);
  }
  void Paint();
};

namespace {

// Points pass through it also where its frame is.
LRESULT CALLBACK OutlineProcedure(HWND window, UINT message, WPARAM first, LPARAM second) {
  return message == WM_NCHITTEST ? HTTRANSPARENT : DefWindowProcW(window, message, first, second);
}

}  // namespace

// Drawn at once: its thread has other things to do than to wait until it is asked to paint.
void Outline::State::Paint() {
  const HDC context = GetDC(window);
  RECT all{};
  GetClientRect(window, &all);
  FillRect(context, &all, brush);
  SelectObject(context, GetStockObject(DEFAULT_GUI_FONT));
  SetBkMode(context, TRANSPARENT);
  SetTextColor(context, RGB(0xFF, 0xFF, 0xFF));
  RECT line{kTextMargin, 0, textWidth, kTextHeight};
  DrawTextW(context, text.c_str(), static_cast<int>(text.size()), &line,
            DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
  ReleaseDC(window, context);
}

Outline::Outline() : state_(std::make_unique<State>()) {
  WNDCLASSW outlineClass{};
  outlineClass.lpfnWndProc = OutlineProcedure;
  outlineClass.hInstance = GetModuleHandleW(nullptr);
  outlineClass.lpszClassName = kClassName;
  RegisterClassW(&outlineClass);
  state_->window =
      CreateWindowExW(WS_EX_LAYERED | WS_EX_TRANSPARENT | WS_EX_TOPMOST | WS_EX_NOACTIVATE | WS_EX_TOOLWINDOW,
                      kClassName, L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, outlineClass.hInstance, nullptr);
  SetLayeredWindowAttributes(state_->window, 0, 0xFF, LWA_ALPHA);
}

Outline::~Outline() = default;

void Outline::Show(const Rect& rect, OutlineColour colour, const std::string& text) {
  if (state_->window == nullptr) {
    return;
  }
  state_->text = Wide(text);
  SIZE size{};
  const HDC context = GetDC(state_->window);
  SelectObject(context, GetStockObject(DEFAULT_GUI_FONT));
  GetTextExtentPoint32W(context, state_->text.c_str(), static_cast<int>(state_->text.size()), &size);
  ReleaseDC(state_->window, context);
  const int width = rect.right - rect.left + 2 * kThickness;
  const int height = rect.bottom - rect.top + 2 * kThickness;
  constexpr int kWidestText = 400;
  state_->textWidth = std::min(static_cast<int>(size.cx) + 2 * kTextMargin, kWidestText);
  DeleteObject(state_->brush);
  state_->brush = CreateSolidBrush(ColourOf(colour));
  // The text's box, and the frame below it without what it surrounds. The window owns the region then.
  const HRGN region = CreateRectRgn(0, 0, state_->textWidth, kTextHeight);
  const HRGN frame = CreateRectRgn(0, kTextHeight, width, kTextHeight + height);
  const HRGN inside =
      CreateRectRgn(kThickness, kTextHeight + kThickness, width - kThickness, kTextHeight + height - kThickness);
  CombineRgn(frame, frame, inside, RGN_DIFF);
  CombineRgn(region, region, frame, RGN_OR);
  DeleteObject(frame);
  DeleteObject(inside);
  SetWindowRgn(state_->window, region, FALSE);
  SetWindowPos(state_->window, HWND_TOPMOST, rect.left - kThickness, rect.top - kThickness - kTextHeight,
               std::max(width, state_->textWidth), height + kTextHeight, SWP_NOACTIVATE | SWP_SHOWWINDOW);
  state_->Paint();
}

void Outline::Hide() {
  ShowWindow(state_->window, SW_HIDE);
}

bool IsOurWindow(HWND window) {
  DWORD process = 0;
  GetWindowThreadProcessId(window, &process);
  return process == GetCurrentProcessId() || window == GetConsoleWindow();
}

}  // namespace host::world
