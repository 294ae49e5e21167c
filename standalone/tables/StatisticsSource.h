// StatisticsSource: a file as ReadStat reads it.
#pragma once

#include <readstat.h>

#include <cstdint>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>

#include "standalone/tables/ReadMeter.h"

namespace orv {

// Serves the reads and seeks of a parser, counts them and asks for cancellation. A damaged file may make the parser
// read the same place for ever, so that reading ends once many times the file's size has been served.
class StatisticsSource {
 public:
  // Throws TableError when the file cannot be opened. `meter` must outlive the source.
  StatisticsSource(const std::string& path, ReadMeter& meter);

  // The source must outlive the parser's run.
  void Attach(readstat_parser_t& parser);
  std::uint64_t TotalBytes() const { return m_total; }
  // Throws what stopped the reading, if anything did: TableReadCancelled, or TableError for a failing disk.
  void ThrowFailure() const;

 private:
  ssize_t Read(void* buffer, std::size_t size);
  readstat_off_t Seek(readstat_off_t offset, readstat_io_flags_t whence);

  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::string m_path;
  ReadMeter& m_meter;
  std::unique_ptr<std::FILE, Closer> m_file;
  std::uint64_t m_total = 0;
  std::uint64_t m_place = 0;
  std::uint64_t m_served = 0;
  std::uint64_t m_nextQuery = 0;
  std::exception_ptr m_failure;
};

}  // namespace orv
