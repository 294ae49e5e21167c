// CaseResult: what the runs of one case of the benchmarks came to.
#pragma once

#include <map>
#include <string>

namespace orv::bench {

struct CaseResult {
  std::string Name;      // without the size
  double Seconds = 0.0;  // least over the runs, CPU time of one iteration
  double Spread = 0.0;   // what the median of the runs is above it, as a share of it
  std::string Answer;    // how the check before the timing came out
  std::map<std::string, double> Figures;

  // 0 when the case has no such figure.
  double Figure(const char* name) const {
    const auto found = Figures.find(name);
    return found != Figures.end() ? found->second : 0.0;
  }
};

}  // namespace orv::bench
