#include "standalone/tables/TableWriters.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <filesystem>
#include <system_error>

#include "standalone/documents/WriteFileAtomically.h"
#include "standalone/tables/DelimitedWriter.h"
#include "standalone/tables/OrvWriter.h"
#include "standalone/tables/TableMessages.h"
#include "standalone/tables/TableReaders.h"

namespace orv {
namespace {

using Write = std::vector<std::string> (*)(const MemoryTable&, const std::string&, const std::function<void()>&);

struct TableWriter {
  std::string_view Ending;
  Write Function;
  bool IntoPipes;  // writes from first byte to last, as pipes and devices need it
};

constexpr std::array<TableWriter, 2> kWriters = {
    TableWriter{".orv",
                [](const MemoryTable& table, const std::string& file, const std::function<void()>& checkpoint) {
                  WriteOrv(table, file, checkpoint);
                  return std::vector<std::string>();
                },
                false},
    TableWriter{".csv", WriteDelimited, true},
};

const TableWriter* FindWriter(std::string_view ending) {
  const auto* found = std::find_if(kWriters.begin(), kWriters.end(),
                                   [ending](const TableWriter& writer) { return writer.Ending == ending; });
  return found == kWriters.end() ? nullptr : &*found;
}

bool IsPipeOrDevice(const std::string& path) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  return std::filesystem::exists(status) && !std::filesystem::is_regular_file(status) &&
         !std::filesystem::is_directory(status);
}

}  // namespace

std::vector<std::string_view> WritableEndings() {
  std::vector<std::string_view> endings;
  for (const TableWriter& writer : kWriters) endings.push_back(writer.Ending);
  return endings;
}

bool IsWritableEnding(std::string_view ending) {
  return FindWriter(ending) != nullptr;
}

std::vector<std::string> WriteTable(const MemoryTable& table,
                                    const std::string& path,
                                    const std::function<void()>& checkpoint) {
  const TableWriter* writer = FindWriter(LowerCaseEnding(path));
  assert(writer != nullptr);
  if (!writer->IntoPipes && IsPipeOrDevice(path)) throw OutputError(IntoPipeMessage(path));
  std::vector<std::string> notes;
  WriteFileAtomically(path, [&](const std::string& file) { notes = writer->Function(table, file, checkpoint); });
  return notes;
}

}  // namespace orv
