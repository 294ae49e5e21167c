#include "PreparedPass.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

#include "Cases.h"
#include "LatestCase.h"
#include "MachineSpeed.h"
#include "fit/FloatingPointRegime.h"

namespace orv::bench {

namespace {

// Random rounding in a sum of a million terms costs three of sixteen digits, and the standard deviation of such a score
// is three digits below the sizes that it sums. More is lost only by rounding that leans one way.
constexpr double kLeastDigits = 10.0;

}  // namespace

PreparedPass::PreparedPass(const SurvivalKind& kind, int cases, int covariates)
    : m_analysis(kind, cases, covariates),
      m_data(m_analysis.ReadCases()),
      m_beta(m_data.CoefficientCount),
      m_pass(m_analysis.MakePass()),
      m_U(m_beta.size()),
      m_H(m_analysis.GetHost(), m_beta.size()) {
  for (std::size_t j = 0; j < m_beta.size(); ++j) m_beta[j] = j % 2 == 0 ? 0.1 : -0.05;
  if (m_H.Failed()) throw std::runtime_error("out of memory");
}

void PreparedPass::MakeAnew() {
  m_pass.reset();
  m_pass = m_analysis.MakePass();
}

double PreparedPass::DigitsAgainst(const LikelihoodValues& reference) {
  const FloatingPointRegime regime;
  const double L = Evaluate();
  return AgreedDigits(reference, L, m_U.data(), m_H.Rows());
}

LikelihoodValues PreparedPass::Values() {
  const FloatingPointRegime regime;
  LikelihoodValues values;
  values.L = Evaluate();
  values.U.assign(m_U.begin(), m_U.end());
  for (std::size_t j = 0; j < m_beta.size(); ++j) {
    for (std::size_t l = 0; l <= j; ++l) values.H.push_back(m_H[l][j]);
  }
  return values;
}

double PreparedPass::DigitsAgainstPlainForm() {
  constexpr double kEnoughSeconds = 0.6;
  constexpr int kMostEvaluations = 20;
  testing::PlainPass plain = m_analysis.MakePlainPass();
  testing::PlainValue value;
  const double start = ThreadSeconds();
  double end = start;
  for (int k = 0; k < kMostEvaluations && end - start < kEnoughSeconds; ++k) {
    const double before = end;
    value = plain.Evaluate(m_beta.data());
    end = ThreadSeconds();
    PlainSeconds = k == 0 ? end - before : std::min(PlainSeconds, end - before);
  }
  return DigitsAgainst({value.L, {value.U.begin(), value.U.end()}, {value.H.begin(), value.H.end()}});
}

PreparedPass* LatestPass(benchmark::State& state,
                         const std::string& name,
                         const std::function<std::unique_ptr<PreparedPass>()>& make) {
  static LatestCase<PreparedPass> latest;
  try {
    return &latest.Get(name, [&] {
      std::unique_ptr<PreparedPass> pass = make();
      if (!(pass->Digits >= kLeastDigits)) {
        throw std::runtime_error(fmt::format("the pass agrees with the definition to {:.1f} digits", pass->Digits));
      }
      return pass;
    });
  } catch (const std::exception& error) {
    state.SkipWithError(error.what());
    return nullptr;
  }
}

void LeaveFigures(benchmark::State& state, const PreparedPass& pass) {
  state.counters[Figures::Cases] = pass.Data().ValidCaseCount;
  state.counters[Figures::Columns] = static_cast<double>(pass.Beta().size());
  state.counters[Figures::Events] = pass.Data().CompleteCaseCount;
  state.SetLabel(fmt::format("{:.1f} digits", pass.Digits));
}

}  // namespace orv::bench
