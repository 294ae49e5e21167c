#include "standalone/tables/VariableHints.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "data/AlmostEqual.h"

namespace orv {
namespace {

constexpr std::size_t kMostWholeCodes = 10;
constexpr std::size_t kFewTimes = 20;
constexpr std::size_t kMostLabelledCodes = 500;  // of a factor, by the module

struct ValueProfile {
  std::set<double> Distinct;  // at most one more than is of interest
  std::size_t Valid = 0;
  bool AllWhole = true;
  bool NoneNegative = true;
  bool CountsCases = true;  // 1, 2, 3 and so on
};

ValueProfile ProfileOf(const TableVariable& variable) {
  ValueProfile profile;
  for (const double value : variable.Values) {
    if (AlmostEqual(value, variable.MissingCode)) continue;
    ++profile.Valid;
    profile.AllWhole = profile.AllWhole && value == std::floor(value);
    profile.NoneNegative = profile.NoneNegative && value >= 0.0;
    profile.CountsCases = profile.CountsCases && value == static_cast<double>(profile.Valid);
    if (profile.Distinct.size() <= kMostLabelledCodes) profile.Distinct.insert(value);
  }
  return profile;
}

}  // namespace

std::string_view HintOnVariable(const TableVariable& variable) {
  const ValueProfile profile = ProfileOf(variable);
  const std::size_t distinct = profile.Distinct.size();
  if (distinct == 0) return "";
  if (variable.Type == VariableType::Date) return "date?";
  if (distinct == 2 && profile.AllWhole) return "status or factor?";
  const std::size_t mostCodes = variable.Labels.empty() ? kMostWholeCodes : kMostLabelledCodes;
  if (distinct > 1 && profile.AllWhole && distinct <= mostCodes && 2 * distinct <= profile.Valid) return "factor?";
  const bool isMany = distinct > kFewTimes || (distinct > 1 && 2 * distinct > profile.Valid);
  if (isMany && variable.Labels.empty() && profile.NoneNegative && !profile.CountsCases) return "time?";
  return "";
}

}  // namespace orv
