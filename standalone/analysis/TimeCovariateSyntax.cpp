#include "standalone/analysis/TimeCovariateSyntax.h"

#include <set>

#include "data/TimeExpressions.h"
#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/analysis/DefinitionMessages.h"

namespace orv {

namespace {

namespace Messages = DefinitionMessages;

std::string_view WithoutBlanksAround(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

}  // namespace

TimeCovariate ParseTimeCovariate(std::string_view text) {
  const std::size_t sign = text.find('=');
  const std::string_view name = WithoutBlanksAround(text.substr(0, sign));
  const std::string_view formula = sign < text.size() ? WithoutBlanksAround(text.substr(sign + 1)) : std::string_view{};
  if (name.empty() || formula.empty()) {
    throw DefinitionError(
        Messages::MalformedAssignment("--time-covariate", std::string(text), "NAME=FORMULA, such as late=age*(T_>30)"));
  }
  return {std::string(name), std::string(formula)};
}

std::vector<TimeCovariate> ParseTimeCovariates(const std::vector<std::string>& texts) {
  std::vector<TimeCovariate> covariates;
  std::set<std::string> names;
  for (const std::string& text : texts) {
    TimeCovariate covariate = ParseTimeCovariate(text);
    if (!names.insert(covariate.Name).second) {
      throw DefinitionError(Messages::DuplicateVariable("--time-covariate", covariate.Name));
    }
    covariates.push_back(std::move(covariate));
  }
  constexpr std::size_t kMost = ExpressionStore::kMostExpressions;
  if (covariates.size() > kMost) throw DefinitionError(Messages::TooManyTimeCovariates(covariates.size(), kMost));
  return covariates;
}

}  // namespace orv
