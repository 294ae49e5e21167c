#include "standalone/tables/ReadMeter.h"

#include <algorithm>

#include "standalone/tables/TableError.h"

namespace orv {
namespace {

constexpr std::uint64_t kReports = 100;                       // a pass, when the size is known
constexpr std::uint64_t kFirstStep = std::uint64_t{1} << 20;  // bytes between reports when it is not
constexpr std::uint64_t kGrowth = 16;                         // and a sixteenth of what has been read later on

}  // namespace

void ReadMeter::Advance(std::uint64_t done, std::uint64_t total) {
  CheckCancelled();
  if (done < m_next) return;
  Report(done, total);
  m_next = done + (total > 0 ? std::max<std::uint64_t>(total / kReports, 1) : std::max(kFirstStep, done / kGrowth));
}

void ReadMeter::Finish(std::uint64_t total) {
  CheckCancelled();
  if (m_reported != total) Report(total, total);
  m_next = m_reported = 0;
}

void ReadMeter::CheckCancelled() const {
  if (m_options.Cancelled && m_options.Cancelled()) throw TableReadCancelled();
}

void ReadMeter::Report(std::uint64_t done, std::uint64_t total) {
  m_reported = done;
  if (m_options.Progress) m_options.Progress(done, total);
}

}  // namespace orv
