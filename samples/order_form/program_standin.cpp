#include <filesystem>
#include <memory>

#include "samples/order_form/program.h"
#include "samples/order_form/twin.h"
#include "standin/desktop/desktop.h"

namespace order_form {

namespace {

using standin::TheDesktop;

std::unique_ptr<Twin> g_form;
HWND g_cover = nullptr;

Point CentreOfRect(const RECT& rect) {
  return {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
}

}  // namespace

bool Program::Start(int x, int y) {
  g_form = std::make_unique<Twin>(x, y);
  return true;
}

void Program::Stop() {
  g_form.reset();
}

HWND Program::Window() const {
  return g_form->Window();
}

Point Program::CentreOf(ControlId control) const {
  return CentreOfRect(TheDesktop().RectOf(TheDesktop().ElementOf(g_form->WindowOf(control))));
}

Point Program::CentreOfRow(int row) const {
  const auto list = TheDesktop().ElementOf(g_form->WindowOf(kShippingList));
  return CentreOfRect(TheDesktop().RectOf(TheDesktop().ChildrenOf(list).at(static_cast<std::size_t>(row))));
}

Text Program::TextOf(ControlId control) const {
  return TheDesktop().TextOf(g_form->WindowOf(control));
}

void PressEscapeAfter(int milliseconds) {
  TheDesktop().HoldEscape(milliseconds, 120);
}

void ClickAfter(int milliseconds, Point point) {
  TheDesktop().After(milliseconds, [point] { TheDesktop().ClickAsUser(point.x, point.y); });
}

void SetTextAfter(int milliseconds, ControlId control, const Text& text) {
  TheDesktop().After(milliseconds, [control, text] {
    if (g_form) {
      TheDesktop().SetText(g_form->WindowOf(control), text);
    }
  });
}

void HoldClipboard(int milliseconds) {
  TheDesktop().HoldClipboard(milliseconds);
}

Cover::Cover(Point corner, int width, int height) {
  g_cover = TheDesktop().AddWindow({.className = TEXT("Cover"),
                                    .title = TEXT("Cover"),
                                    .rect = {corner.x, corner.y, corner.x + width, corner.y + height}});
}

Cover::~Cover() {
  TheDesktop().DestroyWindow(g_cover);
}

Clipboard ReadClipboard() {
  const auto html = TheDesktop().ClipboardBytes("HTML Format");
  return {TheDesktop().ClipboardText().value_or(Text()), {html.begin(), html.end()}};
}

Text ScratchFile(const char* name) {
  return (std::filesystem::temp_directory_path() / name).u16string();
}

// The scripted desktop has no screen to take a picture of.
void TakePicture(const char* /*file*/) {}

}  // namespace order_form
