// Newton-Raphson runs of the reference cases, vector by vector, at the settings that each trace states.
#include <gtest/gtest.h>

#include <cmath>
#include <iostream>
#include <map>

#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "reference/AgreedDigits.h"
#include "reference/ReferenceCase.h"

namespace orv::testing {

namespace {

using nlohmann::json;

struct Trace {
  ReferenceCase Case;
  std::size_t Number = 0;

  const json& Expected() const { return Case.Content.at("trace")[Number]; }
};

void PrintTo(const Trace& trace, std::ostream* out) {
  *out << trace.Case.Name << ", trace " << trace.Number + 1;
}

std::vector<Trace> LoadTraces() {
  std::vector<Trace> traces;
  for (const ReferenceCase& reference : LoadReferenceCases()) {
    if (!reference.Content.contains("trace")) continue;
    for (std::size_t k = 0; k < reference.Content.at("trace").size(); ++k) traces.push_back({reference, k});
  }
  return traces;
}

StoppingRule RuleOf(const json& trace) {
  static const std::map<std::string, std::string> kWords = {{"relative_gradient", "gradient"},
                                                            {"relative_parameter", "parameter"},
                                                            {"relative_likelihood", "likelihood"},
                                                            {"absolute_likelihood", "absolute"}};
  StoppingRule rule;
  rule.Converge = kWords.at(trace.at("convergence"));
  rule.Exponent = trace.at("exponent");
  rule.MaxIterations = trace.at("max_iterations");
  if (!trace.at("start_values").is_null()) rule.StartValues = trace.at("start_values").get<std::vector<double>>();
  if (!trace.at("fixed").is_null()) {
    const auto fixed = trace.at("fixed").get<std::vector<bool>>();
    for (std::size_t j = 0; j < fixed.size(); ++j) {
      if (fixed[j]) rule.Fixed.push_back(static_cast<int>(j) + 1);
    }
  }
  return rule;
}

class Traces : public ::testing::TestWithParam<Trace> {};

// Where the histories of program and reference can be the same: once a step gains less than the rounding of the log
// likelihood, whether it counts as a loss is chance, and so are the vectors that follow.
std::size_t StepsAboveRounding(const std::vector<double>& history) {
  constexpr double kRounding = 1e-11;
  std::size_t steps = 1;
  while (steps < history.size() &&
         std::abs(history[steps] - history[steps - 1]) > kRounding * std::abs(history[steps])) {
    ++steps;
  }
  return std::min(steps + 1, history.size());
}

TEST_P(Traces, HistoryAgreesVectorByVector) {
  const json& expected = GetParam().Expected();
  const ReferenceRun run = RunReferenceCase(GetParam().Case, RuleOf(expected));
  const CCoxFit& fit = *run.Analysis->m_pCoxFit;
  const auto likelihoods = expected.at("loglik_history").get<std::vector<double>>();
  const DenseMatrix vectors = expected.at("coef_history");
  const DenseMatrix covariance = expected.at("covariance");
  const bool isDefault = expected.at("convergence") == "relative_gradient";
  const std::size_t comparable = isDefault ? likelihoods.size() : StepsAboveRounding(likelihoods);

  if (comparable == likelihoods.size()) {
    EXPECT_EQ(fit.m_LogLikHistory.size(), likelihoods.size());
    EXPECT_EQ(fit.m_BetaHistory.size(), vectors.size());
    EXPECT_EQ(fit.m_FitStatus, expected.at("status").get<int>());
    EXPECT_EQ(fit.m_Converged, expected.at("converged").get<bool>());
  }
  constexpr double kDigits = 10.0;
  EXPECT_GE(DigitsAgreed(fit.m_NullLogLik, expected.at("loglik_null"), std::abs(fit.m_NullLogLik)), kDigits);
  EXPECT_GE(DigitsAgreed(fit.m_ScoreStatistic, expected.at("score_statistic"), fit.m_ScoreStatistic), kDigits);
  const auto scale = [&](std::size_t j) { return covariance[j][j] > 0.0 ? std::sqrt(covariance[j][j]) : 1.0; };
  for (std::size_t step = 0; step < comparable; ++step) {
    ASSERT_LT(step, fit.m_LogLikHistory.size());
    EXPECT_GE(DigitsAgreed(fit.m_LogLikHistory[step], likelihoods[step], std::abs(likelihoods[step])), kDigits)
        << "log likelihood of step " << step + 1;
    for (std::size_t j = 0; j < vectors[step].size(); ++j) {
      EXPECT_GE(DigitsAgreed(fit.m_BetaHistory[step][j], vectors[step][j], scale(j)), kDigits)
          << "coefficient " << j + 1 << " of step " << step + 1;
    }
  }
  const auto last = expected.at("coef").get<std::vector<double>>();
  const auto dropped = expected.at("dropped").get<std::vector<bool>>();
  // A reference that went on by chance stands where chance left it.
  const double lastDigits = comparable == likelihoods.size() ? kDigits : kDigits - 1.0;
  for (std::size_t j = 0; j < last.size(); ++j) {
    EXPECT_GE(DigitsAgreed(fit.m_BetaHistory.back()[j], last[j], scale(j)), lastDigits) << "coefficient " << j + 1;
    EXPECT_EQ(run.Analysis->m_pCoxData->DesignColumns[j].Dropped, dropped[j]) << "coefficient " << j + 1;
    for (std::size_t k = 0; k < last.size(); ++k) {
      EXPECT_GE(DigitsAgreed(fit.m_Covariance[j][k], covariance[j][k], scale(j) * scale(k)), kDigits)
          << "covariance " << j + 1 << ", " << k + 1;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Cases, Traces, ::testing::ValuesIn(LoadTraces()), [](const auto& test) {
  return test.param.Case.Name + "_" + std::to_string(test.param.Number + 1);
});

}  // namespace

}  // namespace orv::testing
