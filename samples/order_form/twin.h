// The order form on the scripted desktop.
#pragma once

#include <map>

#include "samples/order_form/behaviour.h"

namespace order_form {

class Twin {
 public:
  Twin(int x, int y);
  ~Twin();
  Twin(const Twin&) = delete;
  Twin& operator=(const Twin&) = delete;

  HWND Window() const {
    return window_;
  }
  HWND WindowOf(ControlId control) const {
    return controls_.at(control);
  }

 private:
  void AddControl(const Control& control, int x, int y);
  void Submit();
  void Clear();

  HWND window_;
  std::map<int, HWND> controls_;
};

}  // namespace order_form
