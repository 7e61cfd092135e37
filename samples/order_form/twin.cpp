#include "samples/order_form/twin.h"

#include "standin/desktop/desktop.h"

namespace order_form {

namespace {

using standin::Behaviour;
using standin::TheDesktop;

// Where the real window's frame leaves room for its content.
constexpr int kFrame = 3;
constexpr int kCaption = 26;
constexpr int kRowHeight = 16;

struct Looks {
  const WCHAR* className;
  Behaviour behaviour;
};

Looks LooksOf(Kind kind) {
  switch (kind) {
    case Kind::Panel:
      return {kPanelClass, Behaviour::Window};
    case Kind::Label:
      return {TEXT("Static"), Behaviour::Label};
    case Kind::Button:
      return {TEXT("Button"), Behaviour::Button};
    case Kind::List:
      return {TEXT("ListBox"), Behaviour::List};
    case Kind::Edit:
    case Kind::MultilineEdit:
    case Kind::ReadOnlyEdit:
      break;
  }
  return {TEXT("Edit"), Behaviour::Edit};
}

// Puts what the field makes of its content in place of it.
void Reshape(HWND edit, Text (*shape)(TextView)) {
  TheDesktop().Controls().SetText(edit, shape(TheDesktop().Controls().TextOf(edit)));
}

}  // namespace

Twin::Twin(int x, int y)
    : window_(TheDesktop().Windows().Add(
          {.className = kWindowClass,
           .title = kTitle,
           .rect = {x, y, x + kWidth, y + kHeight},
           .process = TheDesktop().Windows().AddProcess(TEXT("C:\\Programs\\order_form.exe"))})) {
  for (const Control& control : kControls) {
    AddControl(control, x + kFrame, y + kCaption);
  }
  const HWND list = controls_[kShippingList];
  RECT row = TheDesktop().Elements().RectangleOf(TheDesktop().Elements().Of(list));
  for (const WCHAR* text : kShippingRows) {
    row.bottom = row.top + kRowHeight;
    TheDesktop().Elements().Add(list, {.name = text, .rect = row});
    row.top = row.bottom;
  }
  TheDesktop().Controls().OnEdited(controls_[kPhone], [](HWND edit) { Reshape(edit, FormatPhone); });
  TheDesktop().Controls().OnEdited(controls_[kSecret], [](HWND edit) { Reshape(edit, Stars); });
  TheDesktop().Controls().OnPress(controls_[kSubmit], [this] { Submit(); });
  TheDesktop().Controls().OnPress(controls_[kClear], [this] { Clear(); });
  TheDesktop().Windows().SetForeground(window_);
}

Twin::~Twin() {
  TheDesktop().Windows().Destroy(window_);
}

void Twin::AddControl(const Control& control, int x, int y) {
  const Looks looks = LooksOf(control.kind);
  POINT corner{x + control.x, y + control.y};
  for (const Control& panel : kControls) {
    if (control.parent != 0 && panel.id == control.parent) {
      corner = {corner.x + panel.x, corner.y + panel.y};
    }
  }
  const HWND made =
      TheDesktop().Windows().Add({.className = looks.className,
                                  .title = control.text,
                                  .rect = {corner.x, corner.y, corner.x + control.width, corner.y + control.height},
                                  .parent = control.parent == 0 ? window_ : controls_.at(control.parent),
                                  .controlId = control.id,
                                  .behaviour = looks.behaviour,
                                  .readOnly = control.kind == Kind::ReadOnlyEdit});
  if (control.id != 0) {
    controls_[control.id] = made;
  }
}

void Twin::Submit() {
  auto& desktop = TheDesktop();
  desktop.Controls().SetText(controls_[kStatus], SubmittedStatus(desktop.Controls().TextOf(controls_[kName]),
                                                                 desktop.Controls().TextOf(controls_[kArticle])));
}

void Twin::Clear() {
  for (const Control& control : kControls) {
    if (control.kind == Kind::Edit || control.kind == Kind::MultilineEdit) {
      TheDesktop().Controls().SetText(controls_[control.id], Text());
    }
  }
  TheDesktop().Controls().SetText(controls_[kStatus], ReadyStatus());
}

}  // namespace order_form
