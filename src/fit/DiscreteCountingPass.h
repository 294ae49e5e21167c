// The pass over intervals (start, stop] under the discrete likelihood, with or without strata.
#pragma once

#include <vector>

#include "fit/ActiveDesign.h"
#include "fit/CompensatedSum.h"
#include "fit/DiscreteGroup.h"
#include "fit/IntervalRiskSet.h"
#include "fit/PartialLikelihood.h"
#include "fit/SymmetricSums.h"
#include "fit/TieTable.h"

namespace orv {

// The likelihood of DiscreteSurvivalPass with risk sets of the rows whose interval holds the event time. A risk set is
// no prefix of a list here, so a group of several events gathers its members and sums over their subsets: by
// enumeration, or by the recursion where that is cheaper. A lone event takes the running sums of the walk, which are
// linear in n.
class DiscreteCountingPass : public PartialLikelihood {
 public:
  // `columns.Time` is the stop of the interval.
  DiscreteCountingPass(Host& host,
                       const CaseTable& cases,
                       int n,
                       const CaseColumns& columns,
                       int startColumn,
                       const std::vector<int>& activeColumns);

  bool Failed() const override;
  double Evaluate(const double* beta, double* U, double** H) override;

 private:
  void CloseGroup(int row, CompensatedSum& L, double* U);
  // The rows at risk now, into m_members.
  void GatherMembers();
  SubsetSums SumOverSubsets(int d);
  void AddNumerator(int row, CompensatedSum& L, double* U);

  const CaseTable& m_cases;
  const int m_n;
  const CaseColumns m_columns;
  TieTable m_ties;
  ActiveDesign m_design;
  RiskSums m_running;    // over the rows at risk at the time of the walk
  SymmetricSums m_sums;  // of one group
  RiskList m_atRisk;
  IntervalRiskSet m_riskSet;
  WorkArray<double> m_H;  // packed
  WorkArray<double> m_Q1;
  WorkArray<double> m_Q2;
  std::vector<RiskMember> m_members;    // of one group; both keep their store between groups
  std::vector<double> m_memberDesigns;  // p values a member
};

}  // namespace orv
