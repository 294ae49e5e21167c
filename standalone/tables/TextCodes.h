// TextCodes: the distinct texts of a column as codes 1..K in sorted order.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "standalone/tables/MemoryTable.h"

namespace orv {

// While a column is read its texts get provisional codes, 1 for the first text met. Sort() then orders the texts by
// their bytes and gives every text its place as its code. A text costs one look-up; only a new one is stored.
class TextCodes {
 public:
  // The provisional code of a text.
  double CodeOf(std::string_view text);

  // Replaces the provisional codes in `values` by the final ones, leaves missing codes as they are, and returns the
  // labels by ascending code. The object is empty afterwards.
  std::vector<ValueLabel> Sort(std::vector<double>& values);

 private:
  // Lets the map be searched for a text without building a string.
  struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
  };
  std::unordered_map<std::string, int, TextHash, std::equal_to<>> m_codes;
};

}  // namespace orv
