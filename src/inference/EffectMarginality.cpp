#include "inference/EffectMarginality.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "data/CCoxData.h"
#include "fit/CCoxFit.h"

namespace orv {

namespace {

struct TermParts {
  std::vector<std::int32_t> Continuous;
  std::vector<std::int32_t> Categorical;  // a time expression is -1 minus its number, so that it equals no variable
};

// The roles stand in the order of the term; variables and expressions each have a list of their own.
TermParts PartsOf(const CoxDesignColumn& term) {
  TermParts parts;
  auto variable = term.Variables.begin();
  auto expression = term.ExpressionIds.begin();
  for (const std::int32_t role : term.VariableRoles) {
    if (role == VariableRole::TimeExpression) {
      if (expression != term.ExpressionIds.end()) parts.Categorical.push_back(-1 - *expression++);
    } else if (variable != term.Variables.end()) {
      (role == VariableRole::Covariate ? parts.Continuous : parts.Categorical).push_back(*variable++);
    }
  }
  return parts;
}

}  // namespace

bool TermMarginalTo(const CoxDesignColumn& a, const CoxDesignColumn& b) {
  const TermParts partsOfA = PartsOf(a);
  const TermParts partsOfB = PartsOf(b);
  const auto isInB = [&](std::int32_t member) {
    return std::find(partsOfB.Categorical.begin(), partsOfB.Categorical.end(), member) != partsOfB.Categorical.end();
  };
  return partsOfA.Continuous == partsOfB.Continuous && partsOfA.Categorical.size() < partsOfB.Categorical.size() &&
         std::all_of(partsOfA.Categorical.begin(), partsOfA.Categorical.end(), isInB);
}

bool EffectMarginalTo(const CCoxFit& fit, int effectA, int effectB) {
  const CCoxData& data = *fit.m_pData;
  const auto record = [&data](int effect) -> const CoxDesignColumn& {
    return data.DesignColumns[static_cast<std::size_t>(data.EffectFirstColumn[static_cast<std::size_t>(effect)] - 1)];
  };
  return TermMarginalTo(record(effectA), record(effectB));
}

}  // namespace orv
