// Selection of effects computed anew from its definitions: each model is an analysis of its own, fitted from scratch,
// and each test stands alone. It is slow and shares nothing with the searches of the module.
#pragma once

#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "select/SelectionProblem.h"
#include "support/SheetReading.h"

namespace orv::testing {

using PlainMatrix = std::vector<std::vector<double>>;

struct PlainTest {
  double ChiSquare = 0.0;
  int Df = 0;
  double PValue = 1.0;
  bool Fails = false;  // a division by a variance of 0
};

struct PlainStep {
  bool Entry = false;
  int Effect = 0;
  PlainTest Test;
};

struct PlainPath {
  std::vector<int> Taken;  // effects taken in before the search
  std::vector<PlainStep> Steps;
  std::vector<int> Model;  // at the end, in the order in which the search holds them
  bool Failed = false;     // a numerical failure ended the search
  bool Cycle = false;      // the cycle stop ended the search
  bool Recurred = false;   // an earlier state came back and ended the search
  int Passes = 0;          // of a stepwise selection
};

// x'A^-x for a symmetric A, by Gauss-Jordan elimination on unit diagonals; `rank` gets the pivots used. The value does
// not depend on which of dependent rows are used as long as x is in the range of A, as scores are.
inline double PlainQuadraticForm(PlainMatrix A, std::vector<double> x, int& rank) {
  const std::size_t n = x.size();
  std::vector<double> unit(n, 1.0);
  for (std::size_t i = 0; i < n; ++i) unit[i] = A[i][i] > 0.0 ? std::sqrt(A[i][i]) : 1.0;
  for (std::size_t i = 0; i < n; ++i) {
    x[i] /= unit[i];
    for (std::size_t j = 0; j < n; ++j) A[i][j] /= unit[i] * unit[j];
  }
  // What a pivot leaves of a row that depends on those before it is rounding.
  constexpr double kRounding = 1e-10;
  rank = 0;
  double form = 0.0;
  for (std::size_t k = 0; k < n; ++k) {
    if (A[k][k] <= kRounding) continue;
    ++rank;
    form += x[k] * x[k] / A[k][k];
    for (std::size_t i = k + 1; i < n; ++i) {
      const double factor = A[i][k] / A[k][k];
      x[i] -= factor * x[k];
      for (std::size_t j = k + 1; j < n; ++j) A[i][j] -= factor * A[k][j];
    }
  }
  return form;
}

// A model fitted as an analysis of its own. Its columns stand in the order of `effects`.
class PlainFit {
 public:
  PlainFit(const SelectionProblem& problem, const std::vector<int>& effects)
      : m_problem(problem), m_effects(effects), m_analysis(problem.Columns) {
    DefineEffects(problem, effects, m_analysis);
    if (effects.empty()) return;
    EXPECT_EQ(m_analysis.Run(), 0) << "a model of the recomputation cannot be fitted";
  }

  const std::vector<double>& Estimates() { return m_analysis.Fit().m_BetaHistory.back(); }
  int First(int effect) { return m_analysis.Data().EffectFirstColumn[Place(effect)] - 1; }
  int Last(int effect) { return m_analysis.Data().EffectLastColumn[Place(effect)] - 1; }

  // The Wald test of an effect within the model.
  PlainTest Wald(int effect) {
    const auto first = static_cast<std::size_t>(First(effect));
    const auto last = static_cast<std::size_t>(Last(effect));
    int counted = 0;
    for (std::size_t c = first; c <= last; ++c) counted += m_analysis.Data().DesignColumns[c].Dropped ? 0 : 1;
    if (counted == 0) return {};
    const PlainMatrix& V = m_analysis.Fit().m_Covariance;
    const std::vector<double>& b = Estimates();
    // With one column left it is the first column of the effect, whichever column is left.
    if (counted == 1 && !(V[first][first] > 0.0)) return {0.0, 0, 0.0, true};
    if (counted == 1) return WithPValue(b[first] * b[first] / V[first][first], 1);
    if (m_analysis.Settings().Coding == Codings::Overparameterized) return Type3(effect);
    PlainMatrix part;
    std::vector<double> estimates;
    for (std::size_t c = first; c <= last; ++c) {
      estimates.push_back(b[c]);
      part.emplace_back(V[c].begin() + static_cast<std::ptrdiff_t>(first),
                        V[c].begin() + static_cast<std::ptrdiff_t>(last + 1));
    }
    int rank = 0;
    const double chiSquare = PlainQuadraticForm(part, estimates, rank);
    return WithPValue(chiSquare, rank);
  }

 private:
  std::size_t Place(int effect) const {
    return static_cast<std::size_t>(std::find(m_effects.begin(), m_effects.end(), effect) - m_effects.begin());
  }
  PlainTest WithPValue(double chiSquare, int df) {
    if (df == 0) return {};
    return {chiSquare, df, 1.0 - m_analysis.Host.ChiSquareCdf(chiSquare, df), false};
  }
  // The row of the effect in the table of Type 3 tests of the model.
  PlainTest Type3(int effect) {
    m_analysis.Analysis.CreateType3Spreadsheet(0.95);
    if (m_analysis.Host.Documents().Size() == 0) return {};
    const SheetView sheet = LastSheet(m_analysis.Host);
    const std::string& name = m_problem.Effects[static_cast<std::size_t>(effect - 1)].first;
    const auto& rows = sheet.RowNames();
    const auto found = std::find(rows.begin(), rows.end(), name);
    if (sheet.Titles().empty() || sheet.Titles()[0] != "Type 3 Tests" || found == rows.end()) return {};
    const int row = static_cast<int>(found - rows.begin());
    return {sheet.Value(row, "Wald"), static_cast<int>(sheet.Value(row, "df")), sheet.Value(row, "P value"), false};
  }

  const SelectionProblem& m_problem;
  std::vector<int> m_effects;
  TestAnalysis m_analysis;
};

// Score tests beyond a set of effects, from one evaluation of score and information over the full design.
class PlainScores {
 public:
  explicit PlainScores(const SelectionProblem& problem) : m_problem(problem), m_analysis(problem.Columns) {
    DefineEffects(problem, AllEffectsOf(problem), m_analysis);
    m_analysis.PrepareFit();
  }

  // Evaluates at the estimates of a model; its other coefficients are 0. Null stands for the model without effects.
  void EvaluateAt(PlainFit* fit, const std::vector<int>& effects) {
    std::vector<double> beta(m_analysis.Data().CoefficientCount, 0.0);
    for (const int effect : effects) {
      const std::vector<int> columns = ColumnsOf({effect});
      for (std::size_t k = 0; k < columns.size(); ++k) {
        beta[static_cast<std::size_t>(columns[k])] = fit->Estimates()[static_cast<std::size_t>(fit->First(effect)) + k];
      }
    }
    m_analysis.Fit().EvaluateScoreAt(beta.data());
  }

  // The statistic of the columns of `within` and of the effect; the effect's degrees of freedom are the rank it adds.
  PlainTest Test(std::vector<int> within, int effect) {
    int rankWithin = 0;
    int rank = 0;
    Form(within, rankWithin);
    within.push_back(effect);
    const double chiSquare = Form(within, rank);
    const int df = rank - rankWithin;
    if (df == 0) return {};
    return {chiSquare, df, 1.0 - m_analysis.Host.ChiSquareCdf(chiSquare, df), false};
  }

 private:
  // Columns that are held have neither score nor information of their own.
  std::vector<int> ColumnsOf(const std::vector<int>& effects) {
    std::vector<int> columns;
    for (const int effect : effects) {
      const auto place = static_cast<std::size_t>(effect - 1);
      for (int c = m_analysis.Data().EffectFirstColumn[place]; c <= m_analysis.Data().EffectLastColumn[place]; ++c) {
        columns.push_back(c - 1);
      }
    }
    return columns;
  }
  double Form(const std::vector<int>& effects, int& rank) {
    std::vector<int> free;
    for (const int effect : effects) {
      if (!m_problem.IsFixed(effect)) free.push_back(effect);
    }
    const std::vector<int> columns = ColumnsOf(free);
    const CCoxFit& fit = m_analysis.Fit();
    PlainMatrix information;
    std::vector<double> score;
    for (const int i : columns) {
      score.push_back(fit.m_ScoreVector[static_cast<std::size_t>(i)]);
      information.emplace_back();
      for (const int j : columns) {
        const auto high = static_cast<std::size_t>(std::max(i, j));
        const auto low = static_cast<std::size_t>(std::min(i, j));
        information.back().push_back(fit.m_PackedInformation[high * (high + 1) / 2 + low]);
      }
    }
    return PlainQuadraticForm(information, score, rank);
  }

  const SelectionProblem& m_problem;
  TestAnalysis m_analysis;
};

// The three procedures.
class PlainSelection {
 public:
  explicit PlainSelection(const SelectionProblem& problem)
      : m_problem(problem), m_forced(std::min(problem.Forced, problem.EffectCount())) {}

  PlainPath Forward() {
    TakeForced();
    if (!m_path.Model.empty() && static_cast<int>(m_path.Model.size()) == m_problem.EffectCount()) return m_path;
    PlainScores scores(m_problem);
    // The first step sees the effects forced by number in the matrix.
    std::vector<int> within(m_path.Taken.begin(), m_path.Taken.begin() + m_forced);
    for (int entered = 0; entered < m_problem.EffectCount(); ++entered) {
      PlainFit fit(m_problem, m_path.Model);
      scores.EvaluateAt(&fit, m_path.Model);
      if (entered > 0) {
        // Later steps see the entries of the list from the number of forced effects up to the number of steps.
        within.clear();
        for (int k = m_forced; k < entered; ++k) within.push_back(m_path.Model[static_cast<std::size_t>(k)]);
      }
      if (!TryEntry(scores, within)) break;
    }
    return m_path;
  }

  PlainPath Backward() {
    m_path.Model = AllEffectsOf(m_problem);
    if (m_forced == m_problem.EffectCount()) return m_path;
    while (static_cast<int>(m_path.Model.size()) > m_forced && TryRemoval()) continue;
    return m_path;
  }

  PlainPath Stepwise() {
    TakeForced();
    if (m_forced == m_problem.EffectCount()) return m_path;
    PlainScores scores(m_problem);
    // What a pass does and what follows from it:  tries entry?  action  ->  next pass tries entry, or the end.
    enum Action { kNone, kEntry, kRemoval };
    bool triesEntry = true;
    std::set<std::pair<bool, std::vector<int>>> states = {{triesEntry, m_path.Model}};
    while (!m_path.Failed && m_path.Passes < kMostPasses) {
      ++m_path.Passes;
      Action action = kNone;
      if (triesEntry) {
        PlainFit fit(m_problem, m_path.Model);
        scores.EvaluateAt(&fit, m_path.Model);
        if (TryEntry(scores, m_path.Model)) action = kEntry;
      }
      if (TryRemoval()) action = kRemoval;
      if (m_path.Failed) break;
      if (action == kRemoval && UndoesTheLastEntry()) {
        m_path.Cycle = true;
        break;
      }
      if (action == kNone && triesEntry) break;
      if (action != kEntry) triesEntry = action == kNone;
      // A state that was there before would come back for ever.
      m_path.Recurred = !states.emplace(triesEntry, m_path.Model).second;
      if (m_path.Recurred) break;
    }
    return m_path;
  }

 private:
  bool InModel(int effect) const {
    return std::find(m_path.Model.begin(), m_path.Model.end(), effect) != m_path.Model.end();
  }
  // True when the variables of one effect are among those of the other.
  bool IsPart(int part, int whole) const {
    const auto a = VariablesOf(m_problem.Effects[static_cast<std::size_t>(part - 1)].first);
    const auto b = VariablesOf(m_problem.Effects[static_cast<std::size_t>(whole - 1)].first);
    return part != whole && std::includes(b.begin(), b.end(), a.begin(), a.end());
  }

  void TakeForced() {
    for (int effect = 1; effect <= m_problem.EffectCount(); ++effect) {
      if (effect <= m_forced) m_path.Taken.push_back(effect);
    }
    for (int effect = m_forced + 1; effect <= m_problem.EffectCount(); ++effect) {
      if (m_problem.IsFixed(effect)) m_path.Taken.push_back(effect);
    }
    m_path.Model = m_path.Taken;
  }

  bool MayEnter(int effect) const {
    if (InModel(effect) || m_problem.IsFixed(effect)) return false;
    for (const int other : AllEffectsOf(m_problem)) {
      if (!InModel(other) && IsPart(other, effect)) return false;
    }
    return true;
  }
  bool MayLeave(int effect) const {
    if (effect <= m_forced || !InModel(effect) || m_problem.IsFixed(effect)) return false;
    for (const int other : m_path.Model) {
      if (IsPart(effect, other)) return false;
    }
    return true;
  }

  bool TryEntry(PlainScores& scores, const std::vector<int>& within) {
    std::vector<PlainStep> tests;
    for (const int effect : AllEffectsOf(m_problem)) {
      if (MayEnter(effect)) tests.push_back({true, effect, scores.Test(within, effect)});
    }
    const PlainStep* best = Choose(tests, [](double a, double b) { return a < b; });
    if (best == nullptr || best->Test.PValue > m_problem.PToEnter) return false;
    m_path.Steps.push_back(*best);
    m_path.Model.push_back(best->Effect);
    return true;
  }

  bool TryRemoval() {
    std::vector<PlainStep> tests;
    PlainFit fit(m_problem, m_path.Model);
    for (const int effect : AllEffectsOf(m_problem)) {
      if (MayLeave(effect)) tests.push_back({false, effect, fit.Wald(effect)});
    }
    m_path.Failed = std::any_of(tests.begin(), tests.end(), [](const PlainStep& t) { return t.Test.Fails; });
    if (m_path.Failed) return false;
    const PlainStep* best = Choose(tests, [](double a, double b) { return a > b; });
    if (best == nullptr || best->Test.PValue <= m_problem.PToRemove) return false;
    m_path.Steps.push_back(*best);
    std::erase(m_path.Model, best->Effect);
    return true;
  }

  template <typename Better>
  const PlainStep* Choose(const std::vector<PlainStep>& tests, Better better) {
    const PlainStep* best = nullptr;
    for (const PlainStep& test : tests) {
      if (best == nullptr || better(test.Test.PValue, best->Test.PValue)) best = &test;
    }
    return best;
  }

  bool UndoesTheLastEntry() const {
    const std::vector<PlainStep>& steps = m_path.Steps;
    return steps.size() >= 2 && steps[steps.size() - 2].Entry && steps[steps.size() - 2].Effect == steps.back().Effect;
  }

  const SelectionProblem& m_problem;
  const int m_forced;
  PlainPath m_path;
};

}  // namespace orv::testing
