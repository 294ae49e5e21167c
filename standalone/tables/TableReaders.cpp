#include "standalone/tables/TableReaders.h"

#include <algorithm>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <system_error>

#include "standalone/tables/DelimitedReader.h"
#include "standalone/tables/OrvReader.h"
#include "standalone/tables/SqliteAddress.h"
#include "standalone/tables/SqliteReader.h"
#include "standalone/tables/StatisticsReader.h"
#include "standalone/tables/TableError.h"
#include "standalone/tables/TableMessages.h"

namespace orv {
namespace {

const TableReader* FindReader(std::string_view ending) {
  for (const TableReader& reader : TableReaders()) {
    if (std::find(reader.Endings.begin(), reader.Endings.end(), ending) != reader.Endings.end()) return &reader;
  }
  return nullptr;
}

MemoryTable ReadByEnding(const std::string& path, const TableReadOptions& options) {
  if (path == "-") return ReadDelimitedStream(options);
  if (IsSqliteAddress(path)) return ReadSqliteAddress(path, options);
  // A name that is wrong altogether is told as such before its ending is looked at.
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  if (status.type() == std::filesystem::file_type::not_found) throw TableError(MissingFileMessage(path));
  if (std::filesystem::is_directory(status)) throw TableError(FolderMessage(path));
  const std::string ending = LowerCaseEnding(path);
  const TableReader* reader = FindReader(ending);
  if (ending == ".xlsx" || ending == ".xls" || ending == ".ods") throw TableError(WorkbookMessage(path));
  if (reader == nullptr) {
    std::vector<std::string_view> readable;
    for (const TableReader& known : TableReaders())
      readable.insert(readable.end(), known.Endings.begin(), known.Endings.end());
    throw TableError(UnknownEndingMessage(path, ending, readable));
  }
  return reader->Read(path, options);
}

}  // namespace

const std::vector<TableReader>& TableReaders() {
  static const std::vector<TableReader> kReaders = {
      {{".csv", ".tsv", ".txt"}, ReadDelimitedFile},
      {{".orv"}, ReadOrvFile},
      {{".db", ".sqlite", ".sqlite3"}, ReadSqliteFile},
      {{".sas7bdat"}, ReadSasFile},
      {{".xpt"}, ReadSasTransportFile},
      {{".sav", ".zsav"}, ReadSpssFile},
      {{".por"}, ReadSpssPortableFile},
      {{".dta"}, ReadStataFile},
  };
  return kReaders;
}

std::string LowerCaseEnding(const std::string& path) {
  std::string ending = std::filesystem::path(path).extension().string();
  for (char& c : ending) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return ending;
}

std::string FileOfTable(const std::string& path) {
  if (path == "-") return {};
  return IsSqliteAddress(path) ? ParseSqliteAddress(path).File : path;
}

MemoryTable ReadTable(const std::string& path, const TableReadOptions& options) {
  const std::string source = path == "-" ? std::string(kStandardInputName) : path;
  try {
    return ReadByEnding(path, options);
  } catch (const std::bad_alloc&) {
    throw TableError(OutOfMemoryMessage(source));
  } catch (const std::length_error&) {
    // A vector that would pass the largest size there is.
    throw TableError(OutOfMemoryMessage(source));
  }
}

}  // namespace orv
