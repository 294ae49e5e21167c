// XlsxNames: names of the sheets of a workbook, and of its cells.
#pragma once

#include <set>
#include <string>
#include <string_view>

namespace orv {

// Gives each sheet a name of its own.
class XlsxSheetNames {
 public:
  // The text as a name that the format allows: at most 31 characters of UTF-16; "_" for the signs [ ] : * ? / \, and
  // for quotes at the ends; "Sheet" for nothing. "History", which spreadsheet programs keep for themselves, gets a "_".
  // A name that is taken, capitals or not, gets " (2)", " (3)" and so on.
  std::string Take(std::string_view text);

 private:
  std::set<std::string> m_taken;  // in lower case
};

// "A" for 0, "Z" for 25, "AA" for 26.
std::string XlsxColumnName(std::size_t column);

}  // namespace orv
