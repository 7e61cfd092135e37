// Runs a function of this library in the thread that a window belongs to, in whatever process. The library is loaded
// there by a hook, and stays. What is asked and answered lies in memory that both sides share: a visit costs one
// message, however much is asked in it.
#pragma once

#include <cstddef>

#include "platform/uia.h"

namespace wine_automation {

inline constexpr std::size_t kSheetBytes = std::size_t{16} << 20;

class Visit {
 public:
  Visit();
  ~Visit();
  Visit(const Visit&) = delete;
  Visit& operator=(const Visit&) = delete;

  // The shared memory, of kSheetBytes, of which only what is touched is used; null when there is none to be had.
  void* Memory() const;
  // False when the window is gone, hangs, or belongs to a 32-bit program, which cannot load this library.
  bool Run(HWND window, void (*function)(void* memory));

 private:
  struct Section* section_;
};

// Frees the memory that is kept for the next visit.
void FreeVisits();

}  // namespace wine_automation
