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

// An expression as a member of a list of variables. Variables count from 0 up, so the two never meet: the second
// expression is not the table's second variable.
std::int32_t ExpressionMember(std::int32_t expression) {
  return -1 - expression;
}

struct TermMembers {
  Numbers Continuous;
  Numbers Categorical;
};

// Adds the first `count` members of a term by role. Its expressions, whose numbers are `expressionIds`, go to a list of
// their own choice.
void Collect(const CoxDesignColumn& term,
             std::int32_t count,
             const Numbers& expressionIds,
             TermMembers& members,
             Numbers& expressions) {
  for (std::size_t k = 0; k < std::min(static_cast<std::size_t>(count), term.VariableRoles.size()); ++k) {
    switch (term.VariableRoles[k]) {
      case VariableRole::Covariate:
        AppendAt(term.Variables, k, members.Continuous);
        break;
      case VariableRole::Factor:
        AppendAt(term.Variables, k, members.Categorical);
        break;
      default:
        if (k < expressionIds.size()) expressions.push_back(ExpressionMember(expressionIds[k]));
        break;
    }
  }
}

}  // namespace

bool TermContains(const CoxDesignColumn& a, const CoxDesignColumn& b) {
  TermMembers membersOfA;
  TermMembers membersOfB;
  // For a pure time-dependent B the count and the expressions are A's, and they count as A's. Kept: it decides which
  // effects of recorded analyses show hazard ratios.
  const std::int32_t countA = a.VariableCount != 0 ? a.VariableCount : a.ExpressionCount;
  const std::int32_t countB = b.VariableCount != 0 ? b.VariableCount : a.ExpressionCount;
  Collect(a, countA, a.ExpressionIds, membersOfA, membersOfA.Continuous);
  Collect(b, countB, a.ExpressionIds, membersOfB, membersOfA.Continuous);
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
