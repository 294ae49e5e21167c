// The sums over the rows at risk of one stratum of intervals, as a walk goes from its last row to its first.
#pragma once

#include <cstddef>
#include <vector>

#include "fit/CompensatedSum.h"
#include "inference/StratumRows.h"

namespace orv {

class CCoxData;

// A row joins at its stop and leaves at its start. What leaves is subtracted; when that has taken most digits of the
// sums, they are built anew from the rows at risk.
class IntervalSums {
 public:
  // `risks`: relative risk of every sorted row, from 0. `p`: design columns whose moments are kept, the first ones.
  IntervalSums(const CCoxData& data, const StratumRows& stratum, const std::vector<double>& risks, std::size_t p);

  // Takes the rows down to `row` in, which is not above any row of an earlier call: afterwards the sums are over the
  // rows from `row` to the end of the stratum whose start lies below the stop of `row`.
  void WalkTo(int row);

  // The rows in the order in which the walk loses them: from the latest start to the earliest.
  const std::vector<int>& ByStart() const { return m_byStart; }
  double S0() const { return m_S0.Value(); }
  const std::vector<double>& S1() const { return m_S1; }

 private:
  double Start(int row) const;
  double Stop(int row) const;
  void Add(int row, double sign);
  void FetchAhead() const;
  void RemoveLeavers(double time);
  void RestoreDigits(double time);

  const CCoxData& m_data;
  const StratumRows m_stratum;
  const std::vector<double>& m_risks;
  std::vector<int> m_byStart;
  std::size_t m_left = 0;  // so many have left
  int m_next;              // the next row to join
  int m_atRisk = 0;
  CompensatedSum m_S0;
  std::vector<double> m_S1;
  double m_peak = 0.0;  // the largest S0 since the sums were last exact
};

}  // namespace orv
