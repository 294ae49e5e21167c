#include "core/TimeCovariates.h"

#include "core/CCoxPH.h"
#include "host/TextIds.h"

namespace orv {

namespace {

constexpr std::size_t kLongestText = 32000;

bool MentionsTime(const std::string& expression) {
  return expression.find("T_") != std::string::npos || expression.find("t_") != std::string::npos;
}

}  // namespace

int SetTimeCovariate(CCoxPH& analysis, int position, const std::string& name, const std::string& expression) {
  CoxSettings& s = analysis.m_Settings;
  int problem = 0;
  if (name.empty()) {
    problem = TextIds::NoTimeCovariateName;
  } else if (expression.empty()) {
    problem = TextIds::EmptyExpression;
  } else if (!MentionsTime(expression.substr(0, kLongestText))) {
    problem = TextIds::NotAFunctionOfTime;
  }
  if (problem != 0) {
    analysis.ShowText(problem);
    return 1;
  }
  if (position < 1) {
    s.TimeDependentCovariateNames.emplace_back();
    s.TimeDependentCovariateExpressions.emplace_back();
    position = static_cast<int>(s.TimeDependentCovariateNames.size());
  }
  const auto place = static_cast<std::size_t>(position) - 1;
  s.TimeDependentCovariateNames[place] = name.substr(0, kLongestText);
  s.TimeDependentCovariateExpressions[place] = expression.substr(0, kLongestText);
  return 0;
}

}  // namespace orv
