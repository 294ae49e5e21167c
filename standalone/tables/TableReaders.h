// ReadTable: a table from a file, by the reader that the file's ending asks for.
//
// A new format is one more record in TableReaders() and one more function.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/tables/MemoryTable.h"

namespace orv {

struct TableReadOptions {
  // Bytes done and bytes in all (0 when not known), at most about 200 times a table; of an .orv file, values. A file
  // that has to be read a second time starts again at 0.
  std::function<void(std::uint64_t, std::uint64_t)> Progress;
  // Asked for every block of the file. True stops the reading with TableReadCancelled.
  std::function<bool()> Cancelled;
  // What "-" reads. Stays the caller's.
  std::FILE* StandardInput = stdin;
  // A table of more cases is refused: the module counts cases in an int.
  int MaximumCases = std::numeric_limits<int>::max();
};

struct TableReader {
  std::vector<std::string_view> Endings;  // in lower case, with the point
  MemoryTable (*Read)(const std::string& path, const TableReadOptions& options);
};

// All readers, in the order in which messages name their endings.
const std::vector<TableReader>& TableReaders();

// The ending of a file's name with its point, in lower case; empty when it has none.
std::string LowerCaseEnding(const std::string& path);

// The file that reading a table opens: `path` itself or the FILE of an address; empty for "-". Throws TableError for an
// address that cannot be understood.
std::string FileOfTable(const std::string& path);

// Reads a table. `path` is a file name, whose ending in upper or lower case decides on the reader, "-" for delimited
// text from standard input, or an address such as "sqlite:FILE?table=NAME" (see SqliteAddress.h). Throws TableError, or
// TableReadCancelled.
MemoryTable ReadTable(const std::string& path, const TableReadOptions& options = {});

}  // namespace orv
