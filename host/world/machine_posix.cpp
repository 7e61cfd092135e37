#include <sys/utsname.h>

#include "host/world/machine.h"

namespace host::world {

std::string MachineName() {
  utsname system{};
  return uname(&system) == 0 ? system.nodename : "";
}

std::string SystemName() {
  utsname system{};
  const std::string desktop = "the scripted desktop, whose times are simulated";
  return uname(&system) == 0 ? desktop + ", on " + system.sysname + " " + system.release : desktop;
}

}  // namespace host::world
