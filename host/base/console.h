// What is said on the terminal. No text that is printed can make the terminal do anything: whatever goes to std::cout
// and std::cerr is escaped on its way, but for line breaks.
#pragma once

#include <ostream>

namespace host {

// While it lives; the streams are as they were when it goes. One at a time.
class Console {
 public:
  Console();
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;
  ~Console();

  // Standard output for what this program itself means the terminal to obey, and for JSON.
  static std::ostream& Unescaped();
  // False: not everything that was said could be written.
  static bool Flush();
};

}  // namespace host
