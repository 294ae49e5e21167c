// The tests of convergence on histories written down by hand, and the iteration at which a whole fit stops.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "fit/CCoxFit.h"
#include "fit/TwelveCases.h"

namespace orv {
namespace {

using testing::DotReference;
using testing::EvaluateReference;
using testing::Real;
using testing::RealVector;
using testing::ReferenceCase;
using testing::ReferenceValue;
using testing::SolveReference;
using testing::StandardizedCasesOf;
using testing::TwelveCaseAnalysis;

using Histories = std::vector<std::vector<double>>;

struct HistoryCase {
  const char* what;
  int type;
  double tolerance;
  std::vector<double> likelihoods;
  Histories vectors;
  double stepDotScore;
  bool converged;
};

TEST(HasConverged, ComparesTheLatestEntriesStrictly) {
  const Histories two = {{0.0}, {1.0}};
  const Histories three = {{9.0}, {0.5}, {77.0}};
  // 2 - 1.5 = 0.5 and so on are exact, so a bound of exactly that size tells "greater than" from "at least".
  const HistoryCase cases[] = {
      {"gradient below", 1, 0.25, {-50.0, -9.999999}, two, 2.4, true},
      {"gradient at the bound", 1, 0.25, {-50.0, -(10.0 - 1e-6)}, two, 2.5, false},
      {"gradient above", 1, 0.25, {-50.0, -9.999999}, two, 2.6, false},
      {"gradient, negative and large", 1, 1e-8, {-50.0, -10.0}, two, -1000.0, true},
      {"gradient at a likelihood of 0", 1, 1.5, {-50.0, 0.0}, two, 1e-6, true},
      {"gradient with one likelihood", 1, 0.25, {-10.0}, two, 0.0, false},
      {"gradient with none", 1, 0.25, {}, {}, 0.0, false},

      {"parameter, relative from 0.01", 2, 0.51, {}, {{2.0}, {3.0}, {77.0}}, 0.0, true},
      {"parameter, relative at the bound", 2, 0.5, {}, {{2.0}, {3.0}, {77.0}}, 0.0, false},
      {"parameter, absolute when small", 2, 0.0051, {}, {{0.005}, {0.01}, {77.0}}, 0.0, true},
      {"parameter, relative to 0.01 itself", 2, 0.9, {}, {{0.01}, {0.02}, {77.0}}, 0.0, false},
      {"parameter, relative to the earlier vector", 2, 0.6, {}, {{1.0}, {2.0}, {77.0}}, 0.0, false},
      {"parameter, size of a negative one", 2, 0.51, {}, {{-2.0}, {-3.0}, {77.0}}, 0.0, true},
      {"parameter, the largest counts", 2, 0.1, {}, {{1.0, 1.0, 1.0}, {1.0, 1.2, 1.01}, {7.0, 7.0, 7.0}}, 0.0, false},
      {"parameter, the vector of the new step does not count", 2, 0.1, {}, {{5.0}, {1.0}, {1.0}, {77.0}}, 0.0, true},
      {"parameter with two vectors", 2, 1e9, {-3.0, -2.0}, two, 0.0, false},
      {"parameter with none", 2, 1e9, {}, {}, 0.0, false},
      {"parameter without columns", 2, 1e-8, {-3.0, -3.0}, {{}, {}, {}}, 0.0, true},

      {"relative likelihood below", 3, 0.26, {-7.0, -4.0, -3.0}, three, 0.0, true},
      {"relative likelihood above", 3, 0.24, {-7.0, -4.0, -3.0}, three, 0.0, false},
      {"relative likelihood at 0", 3, 1.0, {0.0, -1e-6}, three, 0.0, false},
      {"relative likelihood, smaller than the offset", 3, 1.0, {0.0, -0.5e-6}, three, 0.0, true},
      {"relative likelihood to the earlier one", 3, 0.4, {-1.0, -2.0}, three, 0.0, false},
      {"relative likelihood with one", 3, 1e9, {-4.0}, three, 0.0, false},

      {"absolute likelihood below", 4, 0.51, {-70.0, -2.0, -1.5}, three, 0.0, true},
      {"absolute likelihood at the bound", 4, 0.5, {-70.0, -2.0, -1.5}, three, 0.0, false},
      {"absolute likelihood, a rejected one counts", 4, 0.5, {-2.0, -9.0, -2.0}, three, 0.0, false},
      {"absolute likelihood, downward", 4, 0.51, {-1.5, -2.0}, three, 0.0, true},
      {"absolute likelihood with one", 4, 1e9, {-4.0}, three, 0.0, false},
  };
  TwelveCaseAnalysis analysis({"a", "b"});
  CCoxFit& fit = analysis.PrepareFit();
  for (const HistoryCase& c : cases) {
    analysis.Settings().ConvergenceType = c.type;
    fit.m_ConvergenceTolerance = c.tolerance;
    fit.m_LogLikHistory = c.likelihoods;
    fit.m_BetaHistory = c.vectors;
    EXPECT_EQ(fit.HasConverged(c.stepDotScore), c.converged) << c.what;
    // The vector of the step just taken has not been evaluated; it leaves the history only when the test holds.
    Histories expected = c.vectors;
    if (c.converged) expected.pop_back();
    EXPECT_EQ(fit.m_BetaHistory, expected) << c.what;
    EXPECT_EQ(fit.m_LogLikHistory, c.likelihoods) << c.what;
  }
}

// ---- Whole fits ---------------------------------------------------------------------------------------------------

// Newton's iteration from zero in long double, one entry per evaluated vector.
struct ReferenceIteration {
  RealVector beta;
  ReferenceValue value;
  Real stepDotScore = 0.0L;
};

std::vector<ReferenceIteration> IterateReference(const std::vector<ReferenceCase>& cases, int count) {
  std::vector<ReferenceIteration> iterations;
  RealVector beta(cases.front().X.size(), 0.0L);
  for (int k = 0; k < count; ++k) {
    ReferenceIteration here{beta, EvaluateReference(cases, beta, false)};
    const RealVector step = SolveReference(here.value.H, here.value.U);
    here.stepDotScore = DotReference(step, here.value.U);
    for (std::size_t j = 0; j < beta.size(); ++j) beta[j] += step[j];
    iterations.push_back(here);
  }
  return iterations;
}

// The measure that one type compares, after the pass of iteration k >= 1.
Real Measure(int type, const std::vector<ReferenceIteration>& iterations, std::size_t k) {
  const ReferenceIteration& now = iterations[k];
  const ReferenceIteration& before = iterations[k - 1];
  const Real change = std::abs(now.value.L - before.value.L);
  if (type == 1) return now.stepDotScore / (std::abs(now.value.L) + 1e-6L);
  if (type == 3) return change / (std::abs(before.value.L) + 1e-6L);
  if (type == 4) return change;
  Real largest = 0.0L;
  for (std::size_t j = 0; j < now.beta.size(); ++j) {
    const Real size = std::abs(before.beta[j]);
    const Real difference = std::abs(now.beta[j] - before.beta[j]);
    largest = std::max(largest, size >= 0.01L ? difference / size : difference);
  }
  return largest;
}

TEST(Convergence, EachTypeStopsAtItsOwnIterationWithTheVectorLastEvaluated) {
  for (int type = 1; type <= 4; ++type) {
    for (const int exponent : {1, 2, 3, 4, 6, 8, 10, 12}) {
      TwelveCaseAnalysis analysis({"a", "b"});
      analysis.Settings().ConvergenceType = type;
      analysis.Settings().ConvergenceExponent = exponent;
      analysis.PrepareFit();
      const std::vector<ReferenceIteration> iterations = IterateReference(StandardizedCasesOf(analysis.Data()), 12);
      std::size_t stop = 1;
      const Real tolerance = std::pow(10.0L, -exponent);
      while (stop < 11 && !(tolerance > Measure(type, iterations, stop))) ++stop;
      ASSERT_LT(stop, 11U);
      // The measure must not be so close to the tolerance that rounding decides.
      ASSERT_GT(std::abs(Measure(type, iterations, stop) / tolerance - 1), 1e-3L);

      ASSERT_EQ(analysis.Run(), 0);
      const CCoxFit& fit = analysis.Fit();
      const std::string what = "type " + std::to_string(type) + ", 1e-" + std::to_string(exponent);
      EXPECT_TRUE(fit.m_Converged) << what;
      EXPECT_EQ(fit.m_FitStatus, 0) << what;
      EXPECT_EQ(fit.m_LogLikHistory.size(), stop + 1) << what;
      ASSERT_EQ(fit.m_BetaHistory.size(), fit.m_LogLikHistory.size()) << what;
      for (std::size_t j = 0; j < 2; ++j) {
        const double raw = static_cast<double>(iterations[stop].beta[j]) / analysis.Data().DesignColumns[j].StdDev;
        EXPECT_NEAR(fit.m_BetaHistory.back()[j], raw, 1e-12) << what << ": the vector last evaluated, not one further";
      }
      EXPECT_NEAR(fit.m_LogLikHistory.back(), static_cast<double>(iterations[stop].value.L), 1e-12) << what;
    }
  }
}

}  // namespace
}  // namespace orv
