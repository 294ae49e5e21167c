// A delimited file with a fixed seed, on disk as long as an object lives, and what a reader must make of it.
#pragma once

#include <cstdint>
#include <string>

#include "standalone/tables/MemoryTable.h"

namespace orv::bench {

enum class FileKind {
  Numbers,  // whole numbers, numbers with three decimals, numbers with all their digits
  Mixed,    // the same with texts, some of them quoted, dates and empty cells
  Digits,   // numbers with 17 digits each
};

inline constexpr int kFileColumns = 12;

class GeneratedFile {
 public:
  // Writes the file into the folder for temporary files. Throws std::system_error when that fails.
  GeneratedFile(FileKind kind, int cases);
  ~GeneratedFile();
  GeneratedFile(const GeneratedFile&) = delete;
  GeneratedFile& operator=(const GeneratedFile&) = delete;

  const std::string& Path() const { return m_path; }
  std::uint64_t Bytes() const { return m_bytes; }

  // Writes the table in the form of another ending beside the delimited file and takes its place: Path, Bytes and
  // CountLines are of that file then. REQUIRES: IsReadAs(table). Throws OutputError and std::runtime_error.
  void Become(const std::string& ending, const MemoryTable& table);

  // The table holds every value of the file, bit for bit, with its types and labels. Values are made anew, not read.
  bool IsReadAs(const MemoryTable& table) const;
  // Reads the file in blocks and counts its line ends: the least that any reader has to do. Returns them.
  std::uint64_t CountLines() const;

 private:
  FileKind m_kind;
  int m_cases;
  std::string m_path;
  std::uint64_t m_bytes = 0;
};

}  // namespace orv::bench
