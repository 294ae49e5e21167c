// NameRegistry: keys of 8 bytes for names that are too long for a field of the module, and the names back.
//
// A key depends on the name alone, unless two names meet in one key: then the one registered later gets another key.
#pragma once

#include <string>
#include <unordered_map>

namespace orv {

class NameRegistry {
 public:
  // The key of a name: the byte 1, which no name of a variable or value starts with, and 7 characters of A-Z a-z 0-9
  // - _ from the name's 64-bit FNV-1a hash. Remembers the name. A key that this registry has given stays as it is.
  std::string Get8CharHash(const std::string& name);
  // The name that a key stands for; any other text unchanged.
  std::string Expand(const std::string& text) const;

 private:
  std::unordered_map<std::string, std::string> m_nameOfKey;
};

}  // namespace orv
