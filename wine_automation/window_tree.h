// The tree of real windows: the desktop window, the visible top-level windows below it, their visible child windows in
// tab order, and the parts of controls, which have no window of their own.
#pragma once

#include <atomic>
#include <optional>
#include <unordered_map>

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
  void Leave() override;
  void Made(const void* object, const char* interfaceName) override;
  void Destroyed(const void* object) override;

  // Client objects alive.
  long Objects() const;

 private:
  struct Facts {
    DWORD thread;
    CONTROLTYPEID type;
    uia::Text automationId;
  };

  std::optional<uia::PropertyValue> Remembered(uia::Node node, PROPERTYID property);

  std::atomic<long> objects_{0};
  // What came with the lists of parts that a client's call asked for, until that call ends: a search then asks the
  // control once for a list, not once for each part.
  SRWLOCK lock_ = SRWLOCK_INIT;
  std::unordered_map<uia::Node, Facts> facts_;
};

}  // namespace wine_automation
