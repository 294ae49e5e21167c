// A selection to run, written down once: the program runs it, and the tests recompute it from definitions.
#pragma once

#include <algorithm>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "support/TestAnalysis.h"

namespace orv::testing {

using EffectList = std::vector<std::pair<std::string, std::string>>;  // names with their terms

struct SelectionProblem {
  std::vector<TestColumn> Columns;
  // Chooses everything but the effects: times, status, predictors, likelihood, coding, strata, weights.
  std::function<void(TestAnalysis&)> Define;
  EffectList Effects;
  // Per effect of the design, the start values of its columns; without any there are none.
  std::vector<std::vector<double>> StartValues;
  std::vector<bool> Fixed;  // per effect; empty when none is held
  int Forced = 0;
  double PToEnter = 0.05;
  double PToRemove = 0.15;

  bool IsFixed(int effect) const { return !Fixed.empty() && Fixed[static_cast<std::size_t>(effect - 1)]; }
  int EffectCount() const { return static_cast<int>(Effects.size()); }
};

// The tightest stop that does not depend on rounding: closer to the maximum a step may be rejected for the last bits of
// two likelihoods, and then fits of the same model end at different vectors.
inline void IterateToTheEnd(TestAnalysis& analysis) {
  analysis.Settings().ConvergenceType = ConvergenceTypes::RelativeGradient;
  analysis.Settings().ConvergenceExponent = 12;
}

// Sets an analysis up with some of the effects, counted from 1, in the order given.
inline void DefineEffects(const SelectionProblem& problem, const std::vector<int>& effects, TestAnalysis& analysis) {
  problem.Define(analysis);
  IterateToTheEnd(analysis);
  EffectList chosen;
  std::vector<double> start;
  std::vector<bool> fixed;
  for (const int effect : effects) {
    const auto place = static_cast<std::size_t>(effect - 1);
    chosen.push_back(problem.Effects[place]);
    if (!problem.StartValues.empty()) {
      start.insert(start.end(), problem.StartValues[place].begin(), problem.StartValues[place].end());
    }
    if (!problem.Fixed.empty()) fixed.push_back(problem.Fixed[place]);
  }
  analysis.Design(chosen);
  if (!problem.StartValues.empty()) analysis.StartAt(start);
  if (!problem.Fixed.empty()) analysis.Fix(fixed);
}

// A stepwise selection can go on for ever; the tests cancel one after this many passes. It is more than the cases of
// their tables, whose reading has a bar too.
inline constexpr int kMostPasses = 100;

inline std::vector<int> AllEffectsOf(const SelectionProblem& problem) {
  std::vector<int> all;
  for (int effect = 1; effect <= problem.EffectCount(); ++effect) all.push_back(effect);
  return all;
}

// Sets an analysis up as the selection itself.
inline void DefineSelection(const SelectionProblem& problem, int modelBuilding, TestAnalysis& analysis) {
  DefineEffects(problem, AllEffectsOf(problem), analysis);
  analysis.Settings().ModelBuilding = static_cast<std::int16_t>(modelBuilding);
  analysis.Fields.PToEnter = problem.PToEnter;
  analysis.Fields.PToRemove = problem.PToRemove;
  analysis.Fields.EffectsToForce = problem.Forced;
  analysis.Host.CancelBarAt = kMostPasses;
}

// The variables of an effect, by the name that the user gave it: "a*b" holds a and b.
inline std::set<std::string> VariablesOf(const std::string& name) {
  std::set<std::string> variables;
  std::string::size_type from = 0;
  while (from <= name.size()) {
    const auto end = std::min(name.find('*', from), name.size());
    variables.insert(name.substr(from, end - from));
    from = end + 1;
  }
  return variables;
}

}  // namespace orv::testing
