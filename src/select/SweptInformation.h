// SweptInformation: score and information of the full design, swept on the columns of a model. It gives the score test
// of any set of columns from one evaluation, without fitting them.
//
// With U the score and I the information at a point, the statistic of a set of columns is U_S' (I_SS)^- U_S. Sweeping
// the columns of S inverts I_SS in place and leaves, for each other column, what it adds beyond S. Sources: Goodnight,
// The American Statistician 33 (1979) 149-158; Cox and Hinkley, Theoretical Statistics, section 9.3.
#pragma once

#include <vector>

#include "select/EffectColumns.h"

namespace orv {

class CCoxFit;

// Columns count from 0.
class SweptInformation {
 public:
  // Takes what the latest evaluation left in m_ScoreVector and m_PackedInformation, with no column swept. Both are
  // copied, brought to a diagonal from 1 to 4 by powers of two: this changes no digit of a statistic, and the bounds of
  // the sweep, which are absolute, become shares of a column's own information. So a combination of other columns is
  // found out whatever the unit of the data. Throws NumericalFailure when there is no evaluation.
  //   order  the design column that stands at each place, when the columns are to be counted in another order; empty
  //          for the order of the design
  explicit SweptInformation(const CCoxFit& fit, const std::vector<int>& order = {});

  // Sweeps a column in. Returns false, with nothing changed, when it says nothing beyond those that are in.
  bool SweepIn(int column);
  // Takes a column that is swept out again.
  void SweepOut(int column);
  // Sweeps the columns of an effect in, first to last.
  void SweepIn(EffectColumns columns);

  const std::vector<bool>& Swept() const { return m_swept; }
  bool IsSwept(int column) const { return m_swept[static_cast<std::size_t>(column)]; }

  // The statistic of the swept columns; 0 when there is none.
  double ChiSquare() const;
  // The statistic of the swept columns and those of an effect that is not in: what ChiSquare gives after sweeping them
  // in, first to last, but without the sweeps. About (columns) * (swept columns) multiplications.
  //   df  out: the columns of the effect that say something beyond those before them
  double ChiSquareWith(EffectColumns columns, int& df) const;
  // By how much the statistic falls when a column is taken out; 0 for one that is not in.
  double LossWithout(int column) const;

 private:
  double ScoreBeyond(int column) const;

  int m_count = 0;
  std::vector<double> m_score;
  std::vector<double> m_packed;  // lower triangle by rows, see SweepPacked
  std::vector<bool> m_swept;
  std::vector<int> m_sweptColumns;  // ascending
};

}  // namespace orv
