// ReadOutcome: what became of reading a table, and what must hold for every table and every message.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "standalone/tables/MemoryTable.h"

namespace orv::fuzz {

// A table, or the message why there is none.
struct ReadOutcome {
  std::optional<MemoryTable> Table;
  std::string Message;
};

// Runs `read` and checks what it gives. A table: columns of one length with at least one case, names that are distinct
// and not empty, labels 1..K in the order of their texts, of which every one occurs and every code of a text column has
// one, dates that can be written, finite numbers. A TableError: a message in UTF-8 without control characters. Any
// other exception passes through and so counts as a crash.
ReadOutcome CheckedRead(const std::function<MemoryTable()>& read);

// The same names, types, labels and values, bit for bit.
bool IsSameTable(const MemoryTable& a, const MemoryTable& b);

}  // namespace orv::fuzz
