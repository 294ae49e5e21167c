// What both searches for best subsets share, and the exhaustive one.
#include "select/BestSubsets.h"

#include <algorithm>
#include <bit>
#include <cstdint>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "fit/FloatingPointRegime.h"
#include "select/EffectColumns.h"
#include "select/GuardedSearch.h"
#include "select/SweptInformation.h"

namespace orv {

namespace {

constexpr int kProgressSteps = 100;
constexpr std::uint64_t kMasksOfAQuery = 4096;

// The best row for each number of members.
class BestOfCount {
 public:
  explicit BestOfCount(std::size_t columns) : m_scores(columns + 1, kNone), m_members(columns + 1) {}

  void Offer(double score, const std::vector<bool>& members, std::size_t count) {
    if (!(score > m_scores[count])) return;
    m_scores[count] = score;
    m_members[count] = members;
  }

  // The rows found, in the order of their numbers of members.
  void Store(CCoxFit& fit) const {
    for (std::size_t count = 0; count < m_scores.size(); ++count) {
      if (m_scores[count] == kNone) continue;
      fit.m_SubsetScores.push_back(m_scores[count]);
      fit.m_SubsetMembers.push_back(m_members[count]);
    }
    fit.m_SubsetCount = static_cast<int>(fit.m_SubsetScores.size());
  }

 private:
  // Below every score, those that rounding makes negative too.
  static constexpr double kNone = -1.0;

  std::vector<double> m_scores;
  std::vector<std::vector<bool>> m_members;
};

class ExhaustiveSearch {
 public:
  explicit ExhaustiveSearch(CCoxFit& fit)
      : m_fit(fit),
        m_data(*fit.m_pData),
        m_columns(static_cast<int>(fit.m_pData->CoefficientCount)),
        m_forced(std::min(ForcedEffectCount(fit), m_columns)),
        m_best(fit.m_pData->CoefficientCount) {
    for (int column = 0; column < m_columns; ++column) {
      if (!m_data.DesignColumns[static_cast<std::size_t>(column)].Fixed) continue;
      m_fixed.push_back(static_cast<std::size_t>(column));
      if (column >= m_forced) m_fixedMask |= std::uint32_t{1} << (column - m_forced);
    }
  }

  void Run(SearchProgress& progress) {
    m_fit.EvaluateScoreAtStart();
    SweptInformation forced(m_fit);
    forced.SweepIn({0, m_forced - 1});
    const int bits = m_columns - m_forced;
    m_swept.assign(static_cast<std::size_t>(bits) + 1, forced);
    const std::uint64_t masks = std::uint64_t{1} << bits;
    const std::uint64_t masksOfAStep = masks / kProgressSteps + 1;
    for (std::uint64_t mask = 1; mask < masks; ++mask) {
      Score(SweptFor(mask), static_cast<std::uint32_t>(mask));
      if (mask % masksOfAStep == 0 && progress.Advance()) break;
      if (mask % kMasksOfAQuery == 0 && progress.IsCancelled()) break;
    }
    m_best.Store(m_fit);
  }

 private:
  // From one mask to the next in order a run of low bits goes out and the bit above them comes in, with all higher bits
  // as they were. The state with those higher bits swept is still there, so each mask costs one sweep of a copy, and no
  // sweep is ever undone: what rounding leaves does not add up over the masks.
  const SweptInformation& SweptFor(std::uint64_t mask) {
    const int low = std::countr_zero(mask);
    const std::uint64_t higher = mask & (mask - 1);
    const int above = higher == 0 ? m_columns - m_forced : std::countr_zero(higher);
    SweptInformation& swept = m_swept[static_cast<std::size_t>(low)];
    swept = m_swept[static_cast<std::size_t>(above)];
    swept.SweepIn(m_forced + low);
    return swept;
  }

  void Score(const SweptInformation& swept, std::uint32_t mask) {
    // It picks what is held fixed and nothing else.
    if (mask == m_fixedMask) return;
    FloatingPointRegime::ThrowIfFailed();
    ++m_fit.m_SubsetsScored;
    std::vector<bool> members = swept.Swept();
    for (const std::size_t column : m_fixed) members[column] = true;
    m_best.Offer(swept.ChiSquare(), members,
                 static_cast<std::size_t>(std::count(members.begin(), members.end(), true)));
  }

  CCoxFit& m_fit;
  const CCoxData& m_data;
  const int m_columns;
  const int m_forced;
  std::vector<std::size_t> m_fixed;  // columns held at their start values
  std::uint32_t m_fixedMask = 0;     // those of them that are not forced
  // By bit: the state of the latest mask whose lowest bit it is; behind them that of the forced columns alone.
  std::vector<SweptInformation> m_swept;
  BestOfCount m_best;
};

}  // namespace

bool HasBoundedSubsets(const CCoxFit& fit) {
  const CCoxData& data = *fit.m_pData;
  const auto isProduct = [](const CoxDesignColumn& column) { return column.VariableCount > 1; };
  const auto first = data.DesignColumns.begin();
  return ForcedEffectCount(fit) == 0 && data.FixedEffectCount == 0 &&
         std::none_of(first, first + data.CoefficientCount, isProduct);
}

int FreeEffectCount(const CCoxFit& fit) {
  const int columns = static_cast<int>(fit.m_pData->CoefficientCount);
  return columns - std::min(ForcedEffectCount(fit), columns);
}

void BestSubsetsAllModels(CCoxFit& fit) {
  fit.m_SubsetBestPerSize = false;
  const FloatingPointRegime regime;
  SearchProgress progress(fit, kProgressSteps);
  ExhaustiveSearch(fit).Run(progress);
}

}  // namespace orv
