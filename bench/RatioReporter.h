// RatioReporter: one line a case, with its ratios to what the machine can do, and below them the cost against n.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

#include "MachineSpeed.h"

namespace orv::bench {

// The runs of one case.
struct CaseResult {
  std::string Name;      // without the size
  double Seconds = 0.0;  // median over the runs, CPU time of one iteration
  double Spread = 0.0;   // the middle half of the runs, as a share of the median
  std::string Answer;    // how the check before the timing came out
  std::map<std::string, double> Figures;

  double Figure(const char* name) const;  // 0 when the case has no such figure
};

class RatioReporter : public benchmark::BenchmarkReporter {
 public:
  explicit RatioReporter(MachineSpeed speed) : m_speed(std::move(speed)) {}

  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;
  // Prints the table of cost against n.
  void Finalize() override;

  // A case gave a wrong answer or could not be run.
  bool HasFailed() const { return m_hasFailed; }

 private:
  MachineSpeed m_speed;
  std::string m_group;  // of the latest line: read, cases, pass or fit
  std::vector<CaseResult> m_results;
  bool m_hasFailed = false;
};

}  // namespace orv::bench
