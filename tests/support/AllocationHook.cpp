#include "support/AllocationHook.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace {

long g_count = 0;
std::size_t g_limit = std::numeric_limits<std::size_t>::max();

void* Allocate(std::size_t size) {
  ++g_count;
  if (size >= g_limit) throw std::bad_alloc();
  void* block = std::malloc(size > 0 ? size : 1);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

}  // namespace

void* operator new(std::size_t size) {
  return Allocate(size);
}
void* operator new[](std::size_t size) {
  return Allocate(size);
}
// The library's own form would do the same, but a sanitizer's does not.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return Allocate(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete[](void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  std::free(block);
}

namespace orv::testing {

long AllocationCount() {
  return g_count;
}

LargeAllocationsFail::LargeAllocationsFail(std::size_t size) {
  g_limit = size;
}

LargeAllocationsFail::~LargeAllocationsFail() {
  g_limit = std::numeric_limits<std::size_t>::max();
}

}  // namespace orv::testing
