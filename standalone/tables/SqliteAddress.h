// SqliteAddress: what "sqlite:FILE?table=NAME" and "sqlite:FILE?query=SELECT..." say.
#pragma once

#include <string>
#include <string_view>

namespace orv {

struct SqliteAddress {
  std::string File;
  std::string Table;  // empty when a query is given, or neither
  std::string Query;  // empty when a table is given, or neither
};

// True when a table's name begins with "sqlite:".
bool IsSqliteAddress(std::string_view name);

// Reads an address. %20 stands for the byte 0x20 anywhere behind "sqlite:"; the first question mark ends FILE. Throws
// TableError for a missing file, an unknown key, an empty value, and a percent sign without two hexadecimal digits.
SqliteAddress ParseSqliteAddress(const std::string& address);

}  // namespace orv
