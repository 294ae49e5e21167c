#include "fit/PassKernels.h"

namespace orv {

double LinearPredictor(const double* x, const double* beta, int p) {
  double eta = 0.0;
  for (int j = 0; j < p; ++j) eta += x[j] * beta[j];
  return eta;
}

void AddWeighted(double* S1, double* S2, const double* x, double weight, int p) {
  for (int j = 0; j < p; ++j) {
    const double weighted = weight * x[j];
    S1[j] += weighted;
    for (int l = 0; l <= j; ++l) S2[l] += weighted * x[l];
    S2 += j + 1;
  }
}

void CopyPackedToUpper(const double* packed, double** H, int p) {
  for (int j = 0; j < p; ++j) {
    for (int l = 0; l <= j; ++l) H[l][j] = *packed++;
  }
}

void SubtractEventTerm(const EventTerm& term, double* U, double* H, double* mean, int p) {
  const double D = term.Denominator;
  const double m = term.Weight;
  const double f = term.Fraction;
  const double* S2 = term.S2;
  const double* E2 = term.E2;
  for (int j = 0; j < p; ++j) {
    // With no share taken out the sums over the events are not read: most groups hold one event.
    const double s = f == 0.0 ? term.S1[j] : term.S1[j] - f * term.E1[j];
    mean[j] = s / D;
    U[j] -= mean[j] * m;
  }
  const double q = 1.0 / D;
  for (int j = 0; j < p; ++j) {
    const double a = mean[j];
    if (f == 0.0) {
      for (int l = 0; l <= j; ++l) H[l] += (S2[l] * q - mean[l] * a) * m;
    } else {
      for (int l = 0; l <= j; ++l) H[l] += ((S2[l] - f * E2[l]) * q - mean[l] * a) * m;
    }
    H += j + 1;
    S2 += j + 1;
    E2 += j + 1;
  }
}

}  // namespace orv
