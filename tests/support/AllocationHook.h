// Counts what the program takes from the free store, and lets large requests fail. Needs AllocationHook.cpp in the
// same program.
#pragma once

#include <cstddef>

namespace orv::testing {

// Calls of operator new so far.
long AllocationCount();

// While one lives, operator new throws std::bad_alloc for requests of at least `size` bytes.
class LargeAllocationsFail {
 public:
  explicit LargeAllocationsFail(std::size_t size);
  ~LargeAllocationsFail();
  LargeAllocationsFail(const LargeAllocationsFail&) = delete;
  LargeAllocationsFail& operator=(const LargeAllocationsFail&) = delete;
};

}  // namespace orv::testing
