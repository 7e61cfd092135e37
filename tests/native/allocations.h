// Heap allocations of the library, counted and failed. Allocations inside a platform function are the stand-in's own
// and stay out of it.
#pragma once

#include <cstddef>

namespace tests::allocations {

// Counts the calling thread's allocations from here on.
void StartCounting();
// How many there were.
std::size_t StopCounting();

// Blocks of all threads that were allocated and not given back.
std::size_t BlocksInUse();

// Makes the nth allocation from now fail, 1-based.
void FailNth(std::size_t n);
// And every later one.
void FailFromNth(std::size_t n);
void StopFailing();

}  // namespace tests::allocations
