// A search for best subsets over random survival times, and the best scores by trying every subset.
#pragma once

#include <cmath>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "select/BestSubsets.h"
#include "select/SubsetScores.h"
#include "support/TestAnalysis.h"

namespace orv::testing {

// What random cases are like. Covariates are x1, x2, ...; the first `Effects` of them shorten the times.
struct SubsetCases {
  int Rows = 40;
  int Columns = 4;
  int Effects = 2;
  bool Aliases = false;  // some columns repeat others, add others up or are constant
  bool Ties = false;
  bool Weights = false;
  bool Strata = false;
  bool Intervals = false;
  int Likelihood = Likelihoods::Breslow;
};

inline std::string CovariateName(int number) {
  return "x" + std::to_string(number);
}

inline std::vector<TestColumn> RandomCases(const SubsetCases& of, unsigned seed) {
  TestRandom random(seed);
  std::vector<TestColumn> columns;
  for (int c = 0; c < of.Columns; ++c) {
    TestColumn column{CovariateName(c + 1), {}};
    const int kind = of.Aliases && c > 0 ? random.Integer(5) : -1;
    const auto first = static_cast<std::size_t>(c > 0 ? random.Integer(c) : 0);
    const auto second = static_cast<std::size_t>(c > 0 ? random.Integer(c) : 0);
    for (std::size_t row = 0; row < static_cast<std::size_t>(of.Rows); ++row) {
      double value = random.Value();
      if (kind == 0) value = columns[first].Values[row];
      if (kind == 1) value = columns[first].Values[row] - 3.0 * columns[second].Values[row];
      if (kind == 2) value = 1.5;
      column.Values.push_back(value);
    }
    columns.push_back(column);
  }
  std::vector<TestColumn> others = {{"time", {}}, {"status", {}}, {"w", {}}, {"stratum", {}}, {"start", {}}};
  for (std::size_t row = 0; row < static_cast<std::size_t>(of.Rows); ++row) {
    double risk = 0.0;
    for (int c = 0; c < std::min(of.Effects, of.Columns); ++c) risk += columns[static_cast<std::size_t>(c)].Values[row];
    const double time = 10.0 * std::exp(-2.0 * risk) * (1.2 + random.Value());
    others[0].Values.push_back(of.Ties ? std::ceil(time / 5.0) : time);
    others[1].Values.push_back(random.Integer(4) > 0 ? 1.0 : 0.0);
    others[2].Values.push_back(of.Weights ? 1.5 + random.Value() : 1.0);
    others[3].Values.push_back(1.0 + static_cast<double>(row % 2));
    others[4].Values.push_back(of.Intervals ? others[0].Values.back() * 0.3 * (1.0 + random.Value()) : 0.0);
  }
  columns.insert(columns.end(), others.begin(), others.end());
  return columns;
}

// An analysis of these cases with all covariates as effects, and the fit that a search works on.
class SubsetSearch {
 public:
  explicit SubsetSearch(const SubsetCases& of, unsigned seed = 1)
      : Analysis(RandomCases(of, seed)), m_columns(of.Columns) {
    std::vector<std::string> names;
    for (int c = 1; c <= of.Columns; ++c) names.push_back(CovariateName(c));
    Analysis.Status("status").Covariates(names).DefaultDesign();
    of.Intervals ? Analysis.Interval("start", "time") : Analysis.Time({"time"});
    if (of.Strata) Analysis.Strata("stratum", {1, 2});
    if (of.Weights) Analysis.Weights("w");
    Analysis.Settings().Likelihood = static_cast<std::int16_t>(of.Likelihood);
    Analysis.Settings().ModelBuilding = ModelBuildings::BestSubsets;
  }

  // The fits of earlier calls are gone afterwards.
  CCoxFit& Bounded() {
    CCoxFit& fit = Prepared();
    BestSubsetsBounded(fit);
    return fit;
  }
  CCoxFit& Exhaustive() {
    CCoxFit& fit = Prepared();
    BestSubsetsAllModels(fit);
    return fit;
  }
  // An empty fit of all effects. Scores that are asked for later leave it in place.
  CCoxFit& Prepared() {
    Evaluate();
    return Analysis.PrepareFit();
  }

  // The score of one set by the elimination of these tests.
  double ScoreOf(const std::vector<bool>& set) {
    Evaluate();
    return ScoreOfSet(m_score, m_packed, set).Value;
  }
  // The best score of each size, of all sets of columns that hold the first `forced` ones; -1 for sizes below that.
  std::vector<double> BestOfEverySize(int forced = 0) {
    Evaluate();
    std::vector<double> best(static_cast<std::size_t>(m_columns) + 1, -1.0);
    for (unsigned mask = 0; mask < 1U << m_columns; ++mask) {
      std::vector<bool> set;
      std::size_t size = 0;
      bool holdsForced = true;
      for (int c = 0; c < m_columns; ++c) {
        set.push_back(((mask >> c) & 1U) != 0);
        size += set.back() ? 1 : 0;
        holdsForced = holdsForced && (c >= forced || set.back());
      }
      if (holdsForced) best[size] = std::max(best[size], ScoreOfSet(m_score, m_packed, set).Value);
    }
    return best;
  }
  // How many columns say something beyond the others.
  int Rank() {
    Evaluate();
    return ScoreOfSet(m_score, m_packed, std::vector<bool>(m_score.size(), true)).Rank;
  }

  TestAnalysis Analysis;

 private:
  void Evaluate() {
    if (!m_score.empty()) return;
    CCoxFit& fit = Analysis.PrepareFit();
    fit.EvaluateScoreAtStart();
    m_score = fit.m_ScoreVector;
    m_packed = fit.m_PackedInformation;
  }

  int m_columns;
  std::vector<double> m_score;
  std::vector<double> m_packed;
};

}  // namespace orv::testing
