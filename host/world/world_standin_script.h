// What stands on the scripted desktop and what happens there, as the environment tells.
#pragma once

#include <memory>
#include <string>

#include "samples/order_form/twin.h"

namespace host::world {

inline constexpr const char* kScript = "KORVANE_DESKTOP";

struct Scene {
  std::unique_ptr<order_form::Twin> form;
  bool clicks = false;  // a user's click is to come
  bool locked = false;
  bool elevated = false;
  int dpi = 96;
};
Scene& TheScene();

// Puts an order form on the desktop and follows the instructions. Failure: Usage
void SetScene(const std::string& instructions);
std::string AllInstructions();

}  // namespace host::world
