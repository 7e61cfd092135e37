#include "tests/native/allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

#include "standin/desktop/desktop.h"

namespace tests::allocations {
namespace {

thread_local bool t_counting = false;
thread_local std::size_t t_count = 0;
thread_local std::size_t t_untilFailure = 0;
thread_local bool t_failsOn = false;

std::atomic<std::size_t> g_blocksInUse{0};

// Whether this allocation is the one that fails.
bool Passes() {
  if (!t_counting || standin::InsidePlatformCall()) {
    return true;
  }
  ++t_count;
  if (t_untilFailure == 0 || --t_untilFailure != 0) {
    return true;
  }
  t_untilFailure = t_failsOn ? 1 : 0;
  return false;
}

}  // namespace

void StartCounting() {
  t_count = 0;
  t_counting = true;
}

std::size_t StopCounting() {
  t_counting = false;
  return t_count;
}

std::size_t BlocksInUse() {
  return g_blocksInUse;
}

void FailNth(std::size_t n) {
  t_untilFailure = n;
  t_counting = true;
}

void FailFromNth(std::size_t n) {
  FailNth(n);
  t_failsOn = true;
}

void StopFailing() {
  t_untilFailure = 0;
  t_failsOn = false;
  t_counting = false;
}

}  // namespace tests::allocations

// The linker option --wrap=malloc makes calls of malloc arrive in the second function; the first one is the real
// malloc.
extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __wrap_malloc(std::size_t size) {
  return tests::allocations::Passes() ? __real_malloc(size) : nullptr;
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  void* const block = std::malloc(size == 0 ? 1 : size);
  tests::allocations::g_blocksInUse += block != nullptr ? 1 : 0;
  return block;
}

void* operator new(std::size_t size) {
  if (void* block = operator new(size, std::nothrow)) {
    return block;
  }
  throw std::bad_alloc();
}

void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
  return operator new(size, tag);
}

void* operator new[](std::size_t size) {
  return operator new(size);
}

void operator delete(void* block) noexcept {
  tests::allocations::g_blocksInUse -= block != nullptr ? 1 : 0;
  std::free(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept {
  operator delete(block);
}

void operator delete[](void* block) noexcept {
  operator delete(block);
}

void operator delete[](void* block, std::size_t /*size*/) noexcept {
  operator delete(block);
}
