#include "Cases.h"

#include <fmt/format.h>

#include <algorithm>

namespace orv::bench {

std::string CaseName(const std::string& group, const std::string& kind, int cases, int columns) {
  return fmt::format("{}/{}/{}x{}", group, kind, cases, columns);
}

std::string CaseName(const std::string& group, const std::string& kind, int cases, int columns, int tiedEvents) {
  return fmt::format("{}/{}/{}x{}x{}", group, kind, cases, columns, tiedEvents);
}

double MultiplyAddsOfPass(double moves, double events, double groups, double covariates, bool efron) {
  constexpr double kRowsOfBlock = 64.0;
  const double closing = std::min(moves, kRowsOfBlock * groups);
  const bool sumsEvents = efron && groups < events;
  const double products = moves + closing + (sumsEvents ? 2.0 * groups + moves - closing : 0.0);
  constexpr double kVectorsOfCase = 5.0;
  return products * covariates * (covariates + 1.0) / 2.0 + kVectorsOfCase * moves * covariates;
}

}  // namespace orv::bench
