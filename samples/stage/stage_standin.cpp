// What the shared library has that stands in for both korvane.dll and the system.
#include <string_view>

#include "samples/order_form/layout.h"
#include "samples/stage/stage.h"
#include "standin/desktop/desktop.h"

// The function of Windows with which bindings look for windows by name: the form is the only one here.
extern "C" HWND FindWindowExW(HWND parent, HWND after, const KorvaneChar* className, const KorvaneChar* title) {
  WindowInfo form;
  if (parent != nullptr || after != nullptr || getWindowInfo(stageFormWindow(), &form) != KORVANE_OK) {
    return nullptr;
  }
  using Text = std::basic_string_view<KorvaneChar>;
  const bool sameClass = className == nullptr || Text(className) == order_form::kWindowClass;
  const bool sameTitle = title == nullptr || Text(title) == form.title;
  return sameClass && sameTitle ? form.window : nullptr;
}

// For hosts that call from threads of their own making: in virtual time only one thread may wait.
extern "C" void stageUseRealTime() {
  standin::TheDesktop().Clock().UseRealTime();
}
