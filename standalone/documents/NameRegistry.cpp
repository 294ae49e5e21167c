// Hash: Fowler, Noll and Vo, FNV-1a with 64 bits.
#include "standalone/documents/NameRegistry.h"

#include <cstdint>
#include <string_view>

namespace orv {
namespace {

constexpr char KeyMark = '\x01';
constexpr int KeyDigits = 7;
constexpr std::uint64_t OffsetBasis = 14695981039346656037ULL;
constexpr std::uint64_t Prime = 1099511628211ULL;

std::uint64_t AddByte(std::uint64_t hash, unsigned char byte) {
  return (hash ^ byte) * Prime;
}

// The key that is tried at the given attempt, from 0. A later attempt hashes the attempt's number after the name.
std::string CandidateKey(std::string_view name, unsigned attempt) {
  constexpr std::string_view Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
  std::uint64_t hash = OffsetBasis;
  for (const char character : name) hash = AddByte(hash, static_cast<unsigned char>(character));
  for (; attempt > 0; attempt >>= 8U) hash = AddByte(hash, static_cast<unsigned char>(attempt));
  std::string key(1, KeyMark);
  for (int digit = 0; digit < KeyDigits; ++digit) {
    key += Alphabet[hash % Alphabet.size()];
    hash /= Alphabet.size();
  }
  return key;
}

}  // namespace

std::string NameRegistry::Get8CharHash(const std::string& name) {
  if (m_nameOfKey.contains(name)) return name;
  for (unsigned attempt = 0;; ++attempt) {
    std::string key = CandidateKey(name, attempt);
    const auto [entry, isNew] = m_nameOfKey.try_emplace(key, name);
    if (isNew || entry->second == name) return key;
  }
}

std::string NameRegistry::Expand(const std::string& text) const {
  const auto entry = m_nameOfKey.find(text);
  return entry == m_nameOfKey.end() ? text : entry->second;
}

}  // namespace orv
