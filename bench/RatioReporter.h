// RatioReporter: one line a case, with its ratios to what the machine can do, and below them how costs grow.
#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "CaseResult.h"
#include "MachineSpeed.h"
#include "ReportGroups.h"

namespace orv::bench {

class RatioReporter : public benchmark::BenchmarkReporter {
 public:
  explicit RatioReporter(MachineSpeed speed) : m_speed(std::move(speed)) {}

  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;
  // Prints the tables of growing costs.
  void Finalize() override;

  // A case gave a wrong answer or could not be run.
  bool HasFailed() const { return m_hasFailed; }

 private:
  // The lines of one growth: a case at a size, and at the first size it was run at.
  std::string LinesOf(const Growth& growth) const;

  MachineSpeed m_speed;
  const Group* m_group = nullptr;  // of the latest line
  std::vector<CaseResult> m_results;
  bool m_hasFailed = false;
};

}  // namespace orv::bench
