#include "standalone/documents/NameRegistry.h"

#include <cstdint>
#include <string_view>

#include "standalone/documents/Fnv1a.h"

namespace orv {
namespace {

constexpr char KeyMark = '\x01';
constexpr int KeyDigits = 7;

// The key that is tried at the given attempt, from 0. A later attempt hashes the attempt's number after the name.
std::string CandidateKey(std::string_view name, unsigned attempt) {
  constexpr std::string_view Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
  std::uint64_t hash = Fnv1a(name);
  for (; attempt > 0; attempt >>= 8U) {
    const char byte = static_cast<char>(attempt & 0xFFU);
    hash = Fnv1a({&byte, 1}, hash);
  }
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
