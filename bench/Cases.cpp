#include "Cases.h"

#include <fmt/format.h>

namespace orv::bench {

std::string CaseName(const std::string& group, const std::string& kind, int cases, int columns) {
  return fmt::format("{}/{}/{}x{}", group, kind, cases, columns);
}

std::string CaseName(const std::string& group, const std::string& kind, int cases, int columns, int tiedEvents) {
  return fmt::format("{}/{}/{}x{}x{}", group, kind, cases, columns, tiedEvents);
}

double MultiplyAddsOfPass(double moves, double events, double covariates, bool efron) {
  const double each = covariates * (covariates + 1.0) / 2.0 + covariates;
  return each * (moves + (efron ? events : 0.0) + events);
}

}  // namespace orv::bench
