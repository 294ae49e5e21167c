// Require: what must hold for every input of a fuzz target.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace orv::fuzz {

// Ends the process when the condition does not hold; libFuzzer then keeps the input. Always compiled in, unlike assert.
inline void Require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

}  // namespace orv::fuzz
