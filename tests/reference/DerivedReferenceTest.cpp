// What follows from a fit, against the reference: residuals, influence, robust variance, baselines and curves.
//
// The fit stops by the relative-parameter test at 1e-10, so estimates are exact to 9 digits at least. Vectors are
// compared relative to their largest element, and matrices relative to the diagonal, since an element near 0 has no
// digits of its own.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>

#include "core/VariableSelection.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "inference/BreslowBaseline.h"
#include "inference/InfluenceMeasures.h"
#include "inference/ScoreResiduals.h"
#include "inference/SurvivorFunctions.h"
#include "reference/ReferenceComparison.h"
#include "ui/CCoxPHResults.h"

namespace orv::testing {

namespace {

using nlohmann::json;

constexpr double kDigits = 8.0;
constexpr double kProductLimitDigits = 6.0;  // the root of an equation, to 1e-12 of a number near 1
constexpr double kLmaxDigits = 7.0;          // a singular vector: as exact as the gap to the next value allows

class DerivedReference : public ReferenceComparison {
 protected:
  void Compare(const std::string& quantity, double value, double expected, double scale, double leastDigits = kDigits) {
    ReferenceComparison::Compare(quantity, value, expected, leastDigits, scale);
  }

  void CompareVector(const std::string& quantity,
                     const std::vector<double>& values,
                     const json& expected,
                     double leastDigits = kDigits) {
    ASSERT_EQ(values.size(), expected.size()) << quantity;
    double largest = 0.0;
    for (const json& element : expected) {
      if (!element.is_null()) largest = std::max(largest, std::abs(element.get<double>()));
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (expected[i].is_null()) continue;
      Compare(quantity, values[i], expected[i], largest, leastDigits);
    }
  }

  // Values by sorted row in the order of the reference, which is that of the cases.
  static std::vector<double> ByCase(const CCoxData& data, const std::vector<double>& values) {
    std::map<double, double> ordered;
    for (std::size_t i = 0; i < values.size(); ++i) {
      ordered[data.CaseTable.GetRow(static_cast<int>(i) + 1)[data.CaseNumberColumn]] = values[i];
    }
    std::vector<double> result;
    for (const auto& [number, value] : ordered) result.push_back(value);
    return result;
  }

  // A matrix of the reference has a row for each case, one of the fit a vector for each parameter.
  void CompareResiduals(const std::string& quantity,
                        const CCoxData& data,
                        const DenseMatrix& matrix,
                        const json& expected) {
    ASSERT_EQ(matrix.size(), data.CoefficientCount) << quantity;
    for (std::size_t k = 0; k < matrix.size(); ++k) {
      // The reference leaves out what a column that took no part in the fit has.
      if (data.DesignColumns[k].Dropped) continue;
      json column = json::array();
      for (const json& row : expected) column.push_back(row[k]);
      CompareVector(quantity, ByCase(data, matrix[k]), column);
    }
  }
};

class ResidualReference : public DerivedReference {};
class RobustReference : public DerivedReference {};
class BaselineReference : public DerivedReference {};
class ProductLimitReference : public DerivedReference {};
class CurveReference : public DerivedReference {};

TEST_P(ResidualReference, ResidualsAgree) {
  const ReferenceRun run = RunReferenceCase(GetParam(), {});
  CCoxFit& fit = *run.Analysis->m_pCoxFit;
  const CCoxData& data = *fit.m_pData;
  const json& expected = Content().at("residuals");
  CompareVector("linear predictor", ByCase(data, fit.m_LinearPredictor), expected.at("linear_predictor"));
  ComputeStdErrorXBeta(fit);
  CompareVector("se of linear predictor", ByCase(data, fit.m_StdErrorXBeta), expected.at("se_linear_predictor"));
  CompareVector("martingale", ByCase(data, fit.m_MartingaleResiduals), expected.at("martingale"));
  if (expected.contains("deviance")) {
    CompareVector("deviance", ByCase(data, fit.m_DevianceResiduals), expected.at("deviance"));
  }
  const std::string suffix = expected.at("score_basis") == "kernel" ? "_kernel" : "";
  ComputeScoreResiduals(fit);
  CompareResiduals("score residual" + suffix, data, fit.m_ScoreResiduals, expected.at("score" + suffix));
  fit.ComputeDfBeta();
  CompareResiduals("dfbeta" + suffix, data, fit.m_DfBeta, expected.at("dfbeta" + suffix));
  if (expected.contains("likelihood_displacement" + suffix)) {
    ComputeLikelihoodDisplacement(fit);
    CompareVector("displacement" + suffix, ByCase(data, fit.m_LikelihoodDisplacement),
                  expected.at("likelihood_displacement" + suffix));
  }
  if (expected.contains("lmax" + suffix)) {
    ASSERT_TRUE(ComputeLmax(fit));
    CompareVector("lmax" + suffix, ByCase(data, fit.m_Lmax), expected.at("lmax" + suffix), kLmaxDigits);
  }
}

TEST_P(RobustReference, RobustVarianceAgrees) {
  const ReferenceRun run = RunReferenceCase(GetParam(), {}, Variance::Robust);
  CCoxFit& fit = *run.Analysis->m_pCoxFit;
  const json& expected = Content().at("robust");
  const json& matrix = expected.at("covariance");
  ASSERT_EQ(fit.m_RobustCovariance.size(), matrix.size());
  for (std::size_t i = 0; i < matrix.size(); ++i) {
    for (std::size_t j = 0; j < matrix.size(); ++j) {
      const double scale = std::sqrt(matrix[i][i].get<double>() * matrix[j][j].get<double>());
      Compare("robust covariance", fit.m_RobustCovariance[i][j], matrix[i][j], scale);
    }
  }
  const double wald = expected.at("wald");
  Compare("robust wald", fit.RobustWaldStatistic(), wald, wald);
  const double score = expected.at("score");
  Compare("robust score", fit.RobustScoreStatistic(), score, score);
}

TEST_P(BaselineReference, BaselineAgrees) {
  const ReferenceRun run = RunReferenceCase(GetParam(), {});
  const CCoxFit& fit = *run.Analysis->m_pCoxFit;
  const json& expected = Content().at("baseline");
  ASSERT_TRUE(fit.m_BreslowValid);
  ASSERT_EQ(fit.m_BreslowCurves.size(), expected.size());
  for (std::size_t g = 0; g < expected.size(); ++g) {
    CompareVector("baseline time", fit.m_BreslowCurves[g].Times, expected[g].at("time"));
    CompareVector("baseline hazard", fit.m_BreslowCurves[g].Values, expected[g].at("cumulative_hazard"));
    CompareVector("event weight", fit.m_EventWeightSums[g], expected[g].at("event_weight"));
    CompareVector("risk sum", fit.m_EventRiskSums[g], expected[g].at("risk_sum"));
  }
}

TEST_P(ProductLimitReference, ProductLimitBaselineAgrees) {
  const ReferenceRun run = RunReferenceCase(GetParam(), {});
  const CCoxFit& fit = *run.Analysis->m_pCoxFit;
  EXPECT_EQ(fit.m_KaplanMeierValid, Content().value("product_limit_valid", true));
  const json& expected = Content().at("product_limit_baseline");
  ASSERT_EQ(fit.m_KaplanMeierCurves.size(), expected.size());
  for (std::size_t g = 0; g < expected.size(); ++g) {
    CompareVector("product-limit time", fit.m_KaplanMeierCurves[g].Times, expected[g].at("time"));
    CompareVector("product-limit survivor", fit.m_KaplanMeierCurves[g].Values, expected[g].at("value"),
                  kProductLimitDigits);
  }
}

std::vector<double> LimitsOf(const std::vector<CurvePoint>& points, bool upper) {
  std::vector<double> limits;
  for (const CurvePoint& point : points) {
    limits.push_back(!point.Limits ? std::nan("") : upper ? point.Limits->Upper : point.Limits->Lower);
  }
  return limits;
}

TEST_P(CurveReference, CurvesAgree) {
  const bool robust = Content().at("setup").value("robust", false);
  const ReferenceRun run = RunReferenceCase(GetParam(), {}, robust ? Variance::Robust : Variance::Model);
  CCoxFit& fit = *run.Analysis->m_pCoxFit;
  FillEventRiskMoments(fit);
  for (const json& curve : Content().at("curves")) {
    const std::vector<double> x = curve.at("design_row").get<std::vector<double>>();
    const double level = curve.at("level");
    for (std::size_t g = 0; g < curve.at("strata").size(); ++g) {
      const json& expected = curve.at("strata")[g];
      for (const bool table : {false, true}) {
        const auto sums = table ? SmallRiskSums::Multiplied : SmallRiskSums::Divided;
        const json& limits = expected.at(table ? "limits_table" : "limits");
        const std::pair<const char*, SurvivorCIType> types[] = {
            {"normal", SurvivorCIType::Normal}, {"log", SurvivorCIType::Log}, {"loglog", SurvivorCIType::LogLog}};
        for (const auto& [name, type] : types) {
          const auto points = SurvivorFunction(fit, g, x, SurvivorType::Breslow, type, level, sums);
          ASSERT_TRUE(points.has_value());
          std::vector<double> times, survival, errors;
          for (const CurvePoint& point : *points) {
            times.push_back(point.Time);
            survival.push_back(point.Value);
            errors.push_back(point.StandardError);
          }
          CompareVector("curve time", times, expected.at("time"));
          CompareVector("survival", survival, expected.at("survival"));
          CompareVector("survival se", errors, expected.at(table ? "se_table" : "se"));
          ASSERT_TRUE(limits.contains(std::string(name) + "_lower")) << limits.dump().substr(0, 100);
          CompareVector(std::string(name) + " lower", LimitsOf(*points, false),
                        limits.at(std::string(name) + "_lower"));
          CompareVector(std::string(name) + " upper", LimitsOf(*points, true), limits.at(std::string(name) + "_upper"));
        }
      }
      const auto hazard = CumulativeHazard(fit, g, x, level, true);
      ASSERT_TRUE(hazard.has_value());
      std::vector<double> values, errors;
      for (const CurvePoint& point : *hazard) {
        values.push_back(point.Value);
        errors.push_back(point.StandardError);
      }
      CompareVector("cumulative hazard", values, expected.at("cumulative_hazard"));
      CompareVector("hazard se", errors, expected.at("cumulative_hazard_se"));
      CompareVector("hazard lower", LimitsOf(*hazard, false), expected.at("cumulative_hazard_lower"));
      CompareVector("hazard upper", LimitsOf(*hazard, true), expected.at("cumulative_hazard_upper"));
    }
  }
}

// A pattern by names and codes has the design values that the reference gives it.
TEST_P(CurveReference, PatternsAgree) {
  const ReferenceRun run = RunReferenceCase(GetParam(), {});
  CCoxPHResults results(*run.Analysis);
  for (const json& curve : Content().at("curves")) {
    std::vector<double> covariates;
    std::vector<std::string> factors;
    const json& pattern = curve.at("pattern");
    const auto nameOf = [&](int variable) { return run.Table->Variable(variable).Name; };
    for (const int variable : results.PatternCovariates()) covariates.push_back(pattern.at(nameOf(variable)));
    for (const int variable : results.PatternFactors()) factors.push_back(pattern.at(nameOf(variable)).dump());
    ASSERT_EQ(results.SetPatterns({covariates}, {factors}), 0);
    EXPECT_EQ(results.Patterns.DesignRows.at(0), curve.at("design_row").get<std::vector<double>>());
  }
}

INSTANTIATE_TEST_SUITE_P(Cases, ResidualReference, ::testing::ValuesIn(CasesWith("residuals")), CaseName);
INSTANTIATE_TEST_SUITE_P(Cases, RobustReference, ::testing::ValuesIn(CasesWith("robust")), CaseName);
INSTANTIATE_TEST_SUITE_P(Cases, BaselineReference, ::testing::ValuesIn(CasesWith("baseline")), CaseName);
INSTANTIATE_TEST_SUITE_P(Cases,
                         ProductLimitReference,
                         ::testing::ValuesIn(CasesWith("product_limit_baseline")),
                         CaseName);
INSTANTIATE_TEST_SUITE_P(Cases, CurveReference, ::testing::ValuesIn(CasesWith("curves")), CaseName);

}  // namespace

}  // namespace orv::testing
