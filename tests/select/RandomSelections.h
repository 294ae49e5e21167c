// Random selections: data with ties, effects of every kind, in any order, with and without forced and held effects.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "select/SelectionProblem.h"
#include "support/TestMatrix.h"

namespace orv::testing {

// What all selections of a row have in common.
struct SelectionForm {
  const char* What = "";
  int Likelihood = Likelihoods::Breslow;
  int Coding = Codings::SigmaRestricted;
  bool Intervals = false;
  bool Strata = false;
  bool Weights = false;
  int Cases = 60;
};

// Columns time, start, status, a, b, c, d, f, h, g, w. Times are whole numbers from 1. d is twice a; f has the levels 1
// to 3 and h tells its third level from the others; g are strata 1 and 2. The hazard depends on a, b, and f.
inline std::vector<TestColumn> SelectionColumns(unsigned seed, int n) {
  TestRandom random(seed);
  std::vector<TestColumn> columns = {{"time", {}}, {"start", {}}, {"status", {}}, {"a", {}}, {"b", {}}, {"c", {}},
                                     {"d", {}},    {"f", {}},     {"h", {}},      {"g", {}}, {"w", {}}, {"e", {}}};
  for (int i = 0; i < n; ++i) {
    const double a = random.Value();
    const double b = random.Value();
    const int f = 1 + random.Integer(3);
    const double hazard = std::exp(0.8 * a + 0.4 * b + (f == 2 ? 0.6 : 0.0));
    const double wait = -std::log(0.5 + 0.499 * random.Value()) / hazard;
    const double time = std::min(4.0 + std::floor(wait * 8.0), 16.0);
    const double status = random.Integer(5) > 0 ? 1.0 : 0.0;
    const double values[] = {time,
                             std::max(0.0, time - 2.0 - random.Integer(9)),
                             status,
                             a,
                             b,
                             random.Value(),
                             2.0 * a,
                             static_cast<double>(f),
                             f == 3 ? 2.0 : 1.0,
                             static_cast<double>(1 + i % 2),
                             1.25 + random.Value(),
                             static_cast<double>(1 + random.Integer(2))};
    for (std::size_t c = 0; c < columns.size(); ++c) columns[c].Values.push_back(values[c]);
  }
  return columns;
}

// The variables of SelectionColumns that effects are made of. Variable numbers in terms count from 1.
inline void DefineSelectionForm(const SelectionForm& form, TestAnalysis& analysis) {
  CoxSettings& settings = analysis.Settings();
  settings.Likelihood = static_cast<std::int16_t>(form.Likelihood);
  settings.Coding = static_cast<std::int16_t>(form.Coding);
  if (form.Intervals) {
    analysis.Interval("start", "time");
  } else {
    analysis.Time({"time"});
  }
  analysis.Status("status").Covariates({"a", "b", "c", "d"});
  analysis.Factor("f", {1, 2, 3}).Factor("h", {1, 2}).Factor("e", {1, 2});
  if (form.Strata) analysis.Strata("g", {1, 2});
  if (form.Weights) analysis.Weights("w");
}

// An effect of these variables, such as "a*f".
inline std::pair<std::string, std::string> SelectionEffect(const std::string& name) {
  static const std::map<char, std::string> kTerms = {{'a', "v4"}, {'b', "v5"}, {'c', "v6"}, {'d', "v7"},
                                                     {'f', "v8"}, {'h', "v9"}, {'e', "v12"}};
  std::string term;
  for (const char letter : name) term += letter == '*' ? "*" : kTerms.at(letter);
  return {name, term};
}

inline EffectList SelectionEffects(const std::vector<std::string>& names) {
  EffectList effects;
  for (const std::string& name : names) effects.push_back(SelectionEffect(name));
  return effects;
}

// The number of columns of an effect.
inline int SelectionColumnCount(const std::string& name, int coding) {
  int count = 1;
  for (const char letter : name) {
    const int levels = letter == 'f' ? 3 : (letter == 'h' || letter == 'e') ? 2 : 0;
    if (levels > 0) count *= coding == Codings::Overparameterized ? levels : levels - 1;
  }
  return count;
}

// Four to seven effects in any order.
inline std::vector<std::string> RandomEffectNames(TestRandom& random) {
  std::vector<std::string> pool = {"a", "b", "c", "d", "f", "h", "e", "a*b", "a*f", "b*e", "f*e", "a*c"};
  std::vector<std::string> names;
  const int count = 4 + random.Integer(4);
  while (static_cast<int>(names.size()) < count) {
    const auto place = static_cast<std::size_t>(random.Integer(static_cast<int>(pool.size())));
    names.push_back(pool[place]);
    pool.erase(pool.begin() + static_cast<std::ptrdiff_t>(place));
  }
  return names;
}

inline SelectionProblem RandomSelection(const SelectionForm& form, unsigned seed) {
  TestRandom random(seed * 7919U);
  SelectionProblem problem;
  problem.Columns = SelectionColumns(seed, form.Cases);
  problem.Define = [form](TestAnalysis& analysis) { DefineSelectionForm(form, analysis); };
  const std::vector<std::string> names = RandomEffectNames(random);
  problem.Effects = SelectionEffects(names);
  constexpr double kLimits[] = {0.05, 0.15, 0.3, 0.6, 0.9};
  problem.PToEnter = kLimits[random.Integer(5)];
  problem.PToRemove = kLimits[random.Integer(5)];
  if (random.Integer(2) == 0) problem.Forced = random.Integer(problem.EffectCount() + 1);
  const int starts = random.Integer(4);
  if (starts == 0) return problem;
  // One in four starts elsewhere; two in four hold effects.
  if (starts > 1) {
    for (std::size_t k = 0; k < names.size(); ++k) problem.Fixed.push_back(random.Integer(4) == 0);
  }
  for (const std::string& name : names) {
    problem.StartValues.emplace_back();
    for (int c = SelectionColumnCount(name, form.Coding); c > 0; --c) {
      problem.StartValues.back().push_back(0.3 * random.Value());
    }
  }
  return problem;
}

}  // namespace orv::testing
