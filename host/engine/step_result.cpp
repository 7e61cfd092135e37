#include "host/engine/step_result.h"

namespace host {

const char* WordOf(StepState state) {
  constexpr const char* kWords[] = {"ok", "healed", "failed", "not run"};
  return kWords[static_cast<int>(state)];
}

}  // namespace host
