// Replaces the C++ runtime's report of an uncaught exception, which nothing of ours can raise: it would bring a name
// demangler of 45 KB into the library.
#include <cstdlib>

namespace __gnu_cxx {

void __verbose_terminate_handler();
void __verbose_terminate_handler() {
  std::abort();
}

}  // namespace __gnu_cxx
