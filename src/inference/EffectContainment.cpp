#include "inference/EffectContainment.h"

#include <algorithm>
#include <vector>

#include "data/CCoxData.h"
#include "fit/CCoxFit.h"

namespace orv {

namespace {

using Numbers = std::vector<std::int32_t>;

bool IsSubset(const Numbers& part, const Numbers& whole) {
  return std::all_of(part.begin(), part.end(),
                     [&](std::int32_t number) { return std::find(whole.begin(), whole.end(), number) != whole.end(); });
}

void AppendAt(const Numbers& from, std::size_t k, Numbers& to) {
  if (k < from.size()) to.push_back(from[k]);
}

struct TermMembers {
  Numbers Continuous;
  Numbers Categorical;
};

}  // namespace

bool TermContains(const CoxDesignColumn& a, const CoxDesignColumn& b) {
  TermMembers membersOfA;
  TermMembers membersOfB;
  const auto countA = static_cast<std::size_t>(a.VariableCount != 0 ? a.VariableCount : a.ExpressionCount);
  // For a pure time-dependent B the count and the expressions are A's. Kept: it decides which effects of recorded
  // analyses show hazard ratios.
  const auto countB = static_cast<std::size_t>(b.VariableCount != 0 ? b.VariableCount : a.ExpressionCount);
  for (std::size_t k = 0; k < std::min(countA, a.VariableRoles.size()); ++k) {
    switch (a.VariableRoles[k]) {
      case VariableRole::Covariate:
        AppendAt(a.Variables, k, membersOfA.Continuous);
        break;
      case VariableRole::Factor:
        AppendAt(a.Variables, k, membersOfA.Categorical);
        break;
      default:
        AppendAt(a.ExpressionIds, k, membersOfA.Continuous);
        break;
    }
  }
  for (std::size_t k = 0; k < std::min(countB, b.VariableRoles.size()); ++k) {
    switch (b.VariableRoles[k]) {
      case VariableRole::Covariate:
        AppendAt(b.Variables, k, membersOfB.Continuous);
        break;
      case VariableRole::Factor:
        AppendAt(b.Variables, k, membersOfB.Categorical);
        break;
      default:
        AppendAt(a.ExpressionIds, k, membersOfA.Continuous);
        break;
    }
  }
  return IsSubset(membersOfA.Continuous, membersOfB.Continuous) &&
         IsSubset(membersOfA.Categorical, membersOfB.Categorical);
}

bool EffectContains(const CCoxFit& fit, int effectA, int effectB) {
  const CCoxData& data = *fit.m_pData;
  const auto record = [&data](int effect) -> const CoxDesignColumn& {
    return data.DesignColumns[static_cast<std::size_t>(data.EffectFirstColumn[static_cast<std::size_t>(effect)] - 1)];
  };
  return TermContains(record(effectA), record(effectB));
}

}  // namespace orv
