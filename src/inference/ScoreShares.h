// What a group of tied events takes from the score residuals of its risk set.
#pragma once

#include <cstddef>
#include <vector>

namespace orv {

// A row of the risk set loses (H x - A) times its risk; an event gains x - Mean, and under Efron's rule loses
// (EventH x - EventA) times its risk instead.
struct ScoreShares {
  int FirstRow = 0;               // the row on which the group closed, from 1
  bool CarriesRowWeight = false;  // the risk of a row is taken with its case weight
  double H = 0.0;
  std::vector<double> A;
  std::vector<double> Mean;
  double EventH = 0.0;
  std::vector<double> EventA;  // empty when events lose what the others lose
};

// For one event, or under a rule that gives each event the whole risk set.
//   W       weight of the events
//   S0, S1  sums of risk and risk times x over the risk set, S1 of p elements
ScoreShares BreslowShares(double W, double S0, const double* S1, std::size_t p);

// For d >= 2 events under Efron's rule.
//   E, T  sums of risk and risk times x over the events
ScoreShares EfronShares(int d, double W, double S0, double E, const double* S1, const double* T, std::size_t p);

}  // namespace orv
