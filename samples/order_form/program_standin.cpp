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
  return CentreOfRect(TheDesktop().Elements().RectangleOf(TheDesktop().Elements().Of(g_form->WindowOf(control))));
}

Point Program::CentreOfRow(int row) const {
  const auto list = TheDesktop().Elements().Of(g_form->WindowOf(kShippingList));
  return CentreOfRect(
      TheDesktop().Elements().RectangleOf(TheDesktop().Elements().ChildrenOf(list).at(static_cast<std::size_t>(row))));
}

Text Program::TextOf(ControlId control) const {
  return TheDesktop().Controls().TextOf(g_form->WindowOf(control));
}

void PressEscapeAfter(int milliseconds) {
  TheDesktop().User().HoldEscape(milliseconds, 120);
}

void ClickAfter(int milliseconds, Point point) {
  TheDesktop().Clock().After(milliseconds, [point] { TheDesktop().User().Click(point.x, point.y); });
}

void SetTextAfter(int milliseconds, ControlId control, const Text& text) {
  TheDesktop().Clock().After(milliseconds, [control, text] {
    if (g_form) {
      TheDesktop().Controls().SetText(g_form->WindowOf(control), text);
    }
  });
}

void HoldClipboard(int milliseconds) {
  TheDesktop().Clipboard().Hold(milliseconds);
}

Cover::Cover(Point corner, int width, int height) {
  g_cover = TheDesktop().Windows().Add({.className = TEXT("Cover"),
                                        .title = TEXT("Cover"),
                                        .rect = {corner.x, corner.y, corner.x + width, corner.y + height}});
}

Cover::~Cover() {
  TheDesktop().Windows().Destroy(g_cover);
}

Clipboard ReadClipboard() {
  const auto html = TheDesktop().Clipboard().Bytes("HTML Format");
  return {TheDesktop().Clipboard().Text().value_or(Text()), {html.begin(), html.end()}};
}

Text ScratchFile(const char* name) {
  return (std::filesystem::temp_directory_path() / name).u16string();
}

// The scripted desktop has no screen to take a picture of.
void TakePicture(const char* /*file*/) {}

}  // namespace order_form
