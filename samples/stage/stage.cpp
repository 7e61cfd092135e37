#include "samples/stage/stage.h"

#include <algorithm>
#include <cstdlib>

#include "samples/order_form/program.h"

namespace {

order_form::Program g_form;
bool g_open = false;

constexpr bool Same(int published, order_form::ControlId control) {
  return published == control;
}
static_assert(Same(STAGE_NAME, order_form::kName) && Same(STAGE_ARTICLE, order_form::kArticle) &&
              Same(STAGE_NOTE, order_form::kNote) && Same(STAGE_SUBMIT, order_form::kSubmit) &&
              Same(STAGE_STATUS, order_form::kStatus));

}  // namespace

int stageOpenForm(int x, int y) {
  stageCloseForm();
  g_open = g_form.Start(x, y);
  // A host that leaves the form open: it has to go before the desktop that it is on.
  static const int closedAtExit = std::atexit(&stageCloseForm);
  static_cast<void>(closedAtExit);
  return g_open ? 0 : -1;
}

void stageCloseForm() {
  g_form.Stop();
  g_open = false;
}

HWND stageFormWindow() {
  return g_open ? g_form.Window() : nullptr;
}

int stageCentreOf(int control, int32_t* x, int32_t* y) {
  const bool known =
      control != 0 && std::ranges::any_of(order_form::kControls, [=](const auto& each) { return each.id == control; });
  if (!g_open || !known) {
    return -1;
  }
  const order_form::Point centre = g_form.CentreOf(static_cast<order_form::ControlId>(control));
  *x = centre.x;
  *y = centre.y;
  return 0;
}
