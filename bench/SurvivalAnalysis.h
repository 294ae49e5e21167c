// SurvivalAnalysis: an analysis of generated data up to the point that a benchmark times.
#pragma once

#include <memory>
#include <vector>

#include "SurvivalTable.h"
#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "fit/PartialLikelihood.h"
#include "standalone/host/StandaloneHost.h"
#include "support/PlainPass.h"

namespace orv::bench {

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
  // The fit of the last call of Fit.
  CCoxFit& LatestFit() { return *m_analysis.m_pCoxFit; }
  // The pass of a fit over the cases, which must have been read and must outlive it: all design columns, in the scale
  // of the table. Throws std::runtime_error when memory is out.
  std::unique_ptr<PartialLikelihood> MakePass();
  // The same pass in its plain form. REQUIRES: Breslow's or Efron's rule, no effect that changes with time.
  testing::PlainPass MakePlainPass();

  // The options, for what is not of the kind of data.
  CoxSettings& Settings() { return m_analysis.m_Settings; }
  // The options as they were before a selection reduced them.
  void RestoreFullModel() { m_analysis.RestoreFullModelData(); }

  const MemoryTable& Table() const { return m_table; }
  Host& GetHost() { return m_host; }

 private:
  [[noreturn]] void Refuse() const;
  std::unique_ptr<PartialLikelihood> MakeTimeDependentPass();
  CaseColumns Columns() const;

  const SurvivalKind m_kind;
  MemoryTable m_table;
  StandaloneHost m_host;
  CCoxPH m_analysis;
};

}  // namespace orv::bench
