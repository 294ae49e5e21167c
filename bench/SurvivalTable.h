// Survival data with a fixed seed, and an analysis of them up to the point that a benchmark times.
#pragma once

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "standalone/host/StandaloneHost.h"
#include "standalone/tables/MemoryTable.h"

namespace orv::bench {

// The kinds of data that cost differently.
struct SurvivalKind {
  const char* Name;
  bool Efron;
  bool HeavyTies;  // at most kTimes distinct times, however many cases
  int Strata;      // 0 for none
};

inline constexpr int kTimes = 100;
inline constexpr int kStrata = 20;

// Variables in this order: `covariates` predictors (every third is 0 or 1, the others standard normal), "time",
// "status" (1 complete, about 60 of 100; 0 censored) and, with strata, "stratum". Times are exponential with
// proportional hazards.
MemoryTable MakeSurvivalTable(const SurvivalKind& kind, int cases, int covariates);

// The analysis of such a table, with every predictor as a main effect and the default options. Not copied or moved: the
// parts refer to each other.
class SurvivalAnalysis {
 public:
  SurvivalAnalysis(const SurvivalKind& kind, int cases, int covariates);
  SurvivalAnalysis(const SurvivalAnalysis&) = delete;
  SurvivalAnalysis& operator=(const SurvivalAnalysis&) = delete;

  // Builds the design and reads and sorts the cases. Throws std::runtime_error when the module refuses them.
  CCoxData& ReadCases();
  // From the table in memory to the fitted model. Throws std::runtime_error unless the fit converges.
  CCoxFit& Fit();

  const MemoryTable& Table() const { return m_table; }
  Host& GetHost() { return m_host; }

 private:
  [[noreturn]] void Refuse() const;

  MemoryTable m_table;
  StandaloneHost m_host;
  CCoxPH m_analysis;
};

}  // namespace orv::bench
