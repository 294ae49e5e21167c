#include "apps/orvcox/ReadWithProgress.h"

#include <memory>

#include "standalone/host/Interrupt.h"
#include "standalone/host/TerminalProgress.h"
#include "standalone/tables/TableReaders.h"

namespace orv {

MemoryTable ReadWithProgress(const std::string& path, std::ostream* progress) {
  TableReadOptions options;
  std::unique_ptr<TerminalProgress> bar;
  options.Progress = [&](std::uint64_t done, std::uint64_t total) {
    if (total == 0) return;
    if (!bar) bar = std::make_unique<TerminalProgress>(progress, static_cast<double>(total), "Reading " + path);
    bar->MoveTo(static_cast<double>(done));
  };
  options.Cancelled = [] { return WasInterrupted(); };
  return ReadTable(path, options);
}

}  // namespace orv
