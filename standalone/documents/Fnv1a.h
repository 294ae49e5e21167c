// The hash of Fowler, Noll and Vo, FNV-1a with 64 bits.
#pragma once

#include <cstdint>
#include <string_view>

namespace orv {

inline constexpr std::uint64_t Fnv1aOffsetBasis = 14695981039346656037ULL;

// Of the bytes, or of all bytes so far when `hash` is that of the bytes before.
constexpr std::uint64_t Fnv1a(std::string_view bytes, std::uint64_t hash = Fnv1aOffsetBasis) {
  constexpr std::uint64_t Prime = 1099511628211ULL;
  for (const char byte : bytes) hash = (hash ^ static_cast<unsigned char>(byte)) * Prime;
  return hash;
}

}  // namespace orv
