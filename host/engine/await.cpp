#include "host/engine/await.h"

#include "host/world/interruption.h"

namespace host {

bool IsCancelled() {
  return isCancelled() == 1 || world::IsInterrupted();
}

int Cancelled(int otherwise) {
  return IsCancelled() ? KORVANE_CANCELLED : otherwise;
}

}  // namespace host
