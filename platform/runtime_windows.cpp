// Parts of the C++ runtime that would bring much more into the library than they are worth.
#include <cstdlib>
#include <new>

namespace __gnu_cxx {

// The report of an uncaught exception, which nothing of ours can raise: a name demangler of 45 KB.
void __verbose_terminate_handler();
void __verbose_terminate_handler() {
  std::abort();
}

}  // namespace __gnu_cxx

namespace std {

// What the standard containers throw for a size or position that cannot be: the exception classes with texts, and both
// kinds of std::string behind them, 50 KB. Our own code does not provoke them but by sizes beyond all memory, and an
// export answers every exception as one of that kind.
void __throw_length_error(const char* /*what*/) {
  throw bad_alloc();
}

void __throw_logic_error(const char* /*what*/) {
  throw bad_alloc();
}

void __throw_out_of_range_fmt(const char* /*format*/, ...) {
  throw bad_alloc();
}

void __throw_bad_alloc() {
  throw bad_alloc();
}

void __throw_bad_array_new_length() {
  throw bad_alloc();
}

}  // namespace std
