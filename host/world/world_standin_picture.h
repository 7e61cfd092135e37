// A drawing of the order form as the scripted desktop has it now.
#pragma once

#include "host/world/world.h"
#include "samples/order_form/twin.h"

namespace host::world {

Picture DrawForm(const order_form::Twin& form);
// Other windows are drawn as boxes with their titles. `form`: null when there is none.
Picture DrawScreen(Rect area, const order_form::Twin* form);

}  // namespace host::world
