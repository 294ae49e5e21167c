// ReadMeter: progress and cancellation while a table is read.
#pragma once

#include <cstdint>

#include "standalone/tables/TableReaders.h"

namespace orv {

// Asks for cancellation at every step and reports progress about a hundred times a pass over the file, however large it
// is. Of a file that is read twice the second pass counts again from 0.
class ReadMeter {
 public:
  // `options` must outlive the meter.
  explicit ReadMeter(const TableReadOptions& options) : m_options(options) {}

  // Bytes read so far in this pass, of so many (0 when not known). Throws TableReadCancelled.
  void Advance(std::uint64_t done, std::uint64_t total);
  // The pass is complete: reports all of it unless that has been done. Throws TableReadCancelled.
  void Finish(std::uint64_t total);
  // Throws TableReadCancelled when the user has asked to stop.
  void CheckCancelled() const;

 private:
  void Report(std::uint64_t done, std::uint64_t total);

  const TableReadOptions& m_options;
  std::uint64_t m_next = 0;      // bytes from which the next report is due
  std::uint64_t m_reported = 0;  // bytes in the last report
};

}  // namespace orv
