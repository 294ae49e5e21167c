#include "data/EffectTerm.h"

#include <algorithm>
#include <cstdlib>

#include "core/CoxSettings.h"

namespace orv {

namespace {

bool IsSeparator(char character) {
  return character == '*' || character == '(' || character == ')';
}

void PushVariable(const CoxSettings& settings, int variable, CoxDesignColumn& record) {
  const auto& covariates = settings.CovariateVariables;
  const bool isCovariate = std::find(covariates.begin(), covariates.end(), variable) != covariates.end();
  record.Variables.push_back(variable);
  record.VariableRoles.push_back(isCovariate ? VariableRole::Covariate : VariableRole::Factor);
  ++record.VariableCount;
}

// The digits of an expression symbol, read one character at a time.
int ExpressionNumber(std::string_view text) {
  std::string digits;
  for (const char character : text) {
    const bool isZero = character == '0' && !digits.empty();
    if (std::atoi(std::string(1, character).c_str()) != 0 || isZero) digits += character;
  }
  return std::atoi(digits.c_str());
}

void PushExpression(std::string_view text, CoxDesignColumn& record) {
  record.ExpressionIds.push_back(ExpressionNumber(text));
  record.VariableRoles.push_back(VariableRole::TimeExpression);
  ++record.ExpressionCount;
}

}  // namespace

std::string VariableSymbol(int variable) {
  return "v" + std::to_string(variable);
}

std::string TimeExpressionSymbol(int position) {
  return std::string(kTimeExpressionSymbol) + std::to_string(position);
}

void ParseEffect(const CoxSettings& settings, std::string_view term, CoxDesignColumn& record) {
  std::string gathered;
  for (std::size_t at = 1; at < term.size(); ++at) {
    const char character = term[at];
    if (character == 'v') continue;
    if (IsSeparator(character)) {
      PushVariable(settings, std::atoi(gathered.c_str()), record);
      gathered.clear();
    } else {
      gathered += character;
    }
  }
  if (std::atoi(gathered.c_str()) > 0) PushVariable(settings, std::atoi(gathered.c_str()), record);
}

void ParseTimeEffect(const CoxSettings& settings, std::string_view term, CoxDesignColumn& record) {
  std::string gathered;
  const auto push = [&] {
    const int variable = std::atoi(gathered.c_str());
    if (variable != 0) {
      PushVariable(settings, variable, record);
    } else {
      PushExpression(gathered, record);
    }
    gathered.clear();
  };
  for (const char character : term) {
    if (character == 'v') continue;
    if (IsSeparator(character)) {
      push();
    } else {
      gathered += character;
    }
  }
  push();
}

}  // namespace orv
