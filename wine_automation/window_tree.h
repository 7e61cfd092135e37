// The tree of real windows: the desktop window, the visible top-level windows below it, their visible child windows in
// tab order, and the parts of controls, which have no window of their own.
#pragma once

#include <atomic>

#include "standin/uia/tree.h"

namespace wine_automation {

namespace uia = standin::uia;

class WindowTree final : public uia::Tree {
 public:
  uia::Node Root() override;
  bool Exists(uia::Node node) override;
  uia::Node Parent(uia::Node node) override;
  std::vector<uia::Node> Children(uia::Node node) override;
  uia::Node At(POINT point) override;
  uia::Node OfWindow(HWND window) override;
  HWND WindowOf(uia::Node node) override;
  uia::PropertyValue Property(uia::Node node, PROPERTYID property) override;
  HRESULT Rectangle(uia::Node node, RECT* rect) override;
  HRESULT ClickablePoint(uia::Node node, POINT* point, BOOL* gotClickable) override;
  void Made(const void* object, const char* interfaceName) override;
  void Destroyed(const void* object) override;

  // Client objects alive.
  long Objects() const;

 private:
  std::atomic<long> objects_{0};
};

}  // namespace wine_automation
