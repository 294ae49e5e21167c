// The innermost loops of a pass, on plain pointers. Symmetric sums are lower triangles packed by rows: element (j, l)
// with l <= j stands at j (j + 1) / 2 + l.
//
// Results do not depend on how a compiler vectorises them: every element has its own sum, and each sum takes its terms
// in the order of the calls.
#pragma once

#include <cstddef>

namespace orv {

constexpr std::size_t PackedSize(std::size_t order) {
  return order * (order + 1) / 2;
}

// The linear predictor: sum of x_j beta_j, j ascending.
double LinearPredictor(const double* x, const double* beta, int p);

// S1 += weight x and S2 += weight x x', with weight x_j formed first.
void AddWeighted(double* S1, double* S2, const double* x, double weight, int p);

// A packed lower triangle into the upper triangle of a matrix.
void CopyPackedToUpper(const double* packed, double** H, int p);

// The members of a tied group that are events, and the risk set, as one event of the group sees them.
struct EventTerm {
  const double* S1 = nullptr;  // over the risk set: sum of w r x
  const double* S2 = nullptr;  // and of w r x x', packed
  const double* E1 = nullptr;  // the same over the events of the group
  const double* E2 = nullptr;
  double Denominator = 1.0;  // S0 - fraction E0
  double Fraction = 0.0;     // share of the events already taken out: 0 under Breslow
  double Weight = 1.0;       // mean case weight of the events of the group
};

// Takes one event's term into score and information:
//   a = (S1 - f E1) / D;  U -= a m;  H += ((S2 - f E2) / D - a a') m
//   U      p elements
//   H      packed lower triangle
//   mean   work area of p elements: receives a
// Source: Cox (1972) with Breslow's (1974) and Efron's (1977) treatment of ties.
void SubtractEventTerm(const EventTerm& term, double* U, double* H, double* mean, int p);

}  // namespace orv
