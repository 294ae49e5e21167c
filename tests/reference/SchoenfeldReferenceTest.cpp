// Schoenfeld residuals and the test of proportional hazards against the reference cases that have them.
//
// The estimates are exact to 9 digits at least (see ReferenceTest.cpp), and so is what follows from them: residuals in
// units of the largest of their column, chi-squares in units of themselves or, when they are small, of the change that
// a 1e-3 standard error of the trend makes.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "inference/ProportionalHazards.h"
#include "inference/SchoenfeldResiduals.h"
#include "inference/TimeTransforms.h"
#include "reference/ReferenceComparison.h"
#include "ui/CCoxPHResults.h"

namespace orv::testing {

namespace {

using nlohmann::json;

constexpr double kTransformDigits = 12.0;  // no iteration in them

struct TransformOfReference {
  const char* Key;
  TimeTransform Transform;
};
constexpr std::array kTransforms = {
    TransformOfReference{"identity", TimeTransform::Identity},
    TransformOfReference{"log", TimeTransform::Log},
    TransformOfReference{"km", TimeTransform::KaplanMeier},
    TransformOfReference{"rank", TimeTransform::Rank},
};

class SchoenfeldReference : public ReferenceComparison {
 protected:
  // Each column in units of its largest expected value.
  void CompareResiduals(const std::string& quantity,
                        const CCoxData& data,
                        const DenseMatrix& residuals,
                        const json& expected) {
    std::map<int, std::size_t> rowOfCase;
    std::vector<bool> isEvent(data.ValidCaseCount, false);
    for (std::size_t i = 0; i < isEvent.size(); ++i) {
      rowOfCase[static_cast<int>(data.CaseTable.GetRow(static_cast<int>(i) + 1)[data.CaseNumberColumn])] = i;
    }
    const json& events = Content().at("residuals").at("event_case_numbers");
    ASSERT_EQ(events.size(), expected.size());
    ASSERT_EQ(events.size(), data.CompleteCaseCount);
    ASSERT_EQ(residuals.size(), data.CoefficientCount);
    for (std::size_t k = 0; k < residuals.size(); ++k) {
      double largest = 0.0;
      for (const json& row : expected) largest = std::max(largest, std::abs(row[k].get<double>()));
      for (std::size_t e = 0; e < events.size(); ++e) {
        const std::size_t row = rowOfCase.at(events[e].get<int>());
        isEvent[row] = true;
        Compare(quantity, residuals[k][row], expected[e][k], kEstimateDigits, largest);
      }
      for (std::size_t i = 0; i < isEvent.size(); ++i) {
        if (isEvent[i]) continue;
        EXPECT_EQ(residuals[k][i], 0.0) << quantity << " of a censored case";
      }
    }
  }

  void CompareLine(double chiSquare, double df, double p, const json& expected) {
    const double expectedChiSquare = expected.at("chisq");
    const double scale = std::max(expectedChiSquare, 2e-3 * std::sqrt(expectedChiSquare));
    Compare("ph chi-square", chiSquare, expectedChiSquare, kEstimateDigits, scale);
    EXPECT_EQ(df, expected.at("df").get<double>());
    const double expectedP = expected.at("p");
    Compare("ph p value", p, expectedP, kPValueDigits, std::max(expectedP, kPValueResolution));
  }
};

TransformedTimes TimesOf(const CCoxData& data, TimeTransform transform) {
  if (transform == TimeTransform::Log) return LogTimes(data).value();
  if (transform == TimeTransform::KaplanMeier) return KaplanMeierTimes(data);
  return transform == TimeTransform::Rank ? RankTimes(data) : IdentityTimes(data);
}

TEST_P(SchoenfeldReference, ResidualsAgree) {
  const ReferenceRun run = RunReferenceCase(GetParam(), {});
  CCoxFit& fit = *run.Analysis->m_pCoxFit;
  ComputeScaledSchoenfeldResiduals(fit);
  const json& residuals = Content().at("residuals");
  CompareResiduals("schoenfeld", *fit.m_pData, fit.m_SchoenfeldResiduals, residuals.at("schoenfeld"));
  CompareResiduals("scaled schoenfeld", *fit.m_pData, fit.m_ScaledSchoenfeldResiduals,
                   residuals.at("scaled_schoenfeld"));
}

TEST_P(SchoenfeldReference, TestOfProportionalHazardsAgrees) {
  if (!Content().contains("ph_test")) return;  // residuals alone
  const bool isRobust = Content().at("setup").at("robust");
  const ReferenceRun run = RunReferenceCase(GetParam(), {}, isRobust ? Variance::Robust : Variance::Model);
  CCoxFit& fit = *run.Analysis->m_pCoxFit;
  run.Host->SetResultName("phtest");
  CCoxPHResults results(*run.Analysis);
  for (const TransformOfReference& transform : kTransforms) {
    SCOPED_TRACE(transform.Key);
    const json& expected = Content().at("ph_test").at(transform.Key);
    ASSERT_TRUE(expected.at("completed").get<bool>());

    ComputeScaledSchoenfeldResiduals(fit);
    const auto test = ComputeProportionalHazardsTest(fit, TimesOf(*fit.m_pData, transform.Transform).Values);
    ASSERT_TRUE(test.has_value());
    const double sumOfSquares = expected.at("sum_of_squares");
    Compare("ph mean of times", test->Mean, expected.at("mean"), kTransformDigits, std::abs(test->Mean));
    Compare("ph sum of squares", test->SumOfSquares, sumOfSquares, kTransformDigits, sumOfSquares);

    results.Transform = transform.Transform;
    ASSERT_EQ(results.TestProportionalHazards(), 0);
    const ResultDocuments& documents = run.Host->Documents();
    const auto& sheet = std::get<SheetContent>(documents[documents.Size() - 1].Content);
    const json& columns = expected.at("columns");
    ASSERT_EQ(sheet.RowNames.size(), columns.size() + 1);
    ASSERT_EQ(sheet.Columns.size(), 3U);
    for (std::size_t row = 0; row < sheet.RowNames.size(); ++row) {
      SCOPED_TRACE(sheet.RowNames[row]);
      const json& line = row < columns.size() ? columns[row] : expected.at("overall");
      CompareLine(sheet.Columns[0].Numbers[row], sheet.Columns[1].Numbers[row], sheet.Columns[2].Numbers[row], line);
    }
  }
}

std::vector<ReferenceCase> CasesWithResiduals() {
  std::vector<ReferenceCase> cases = LoadReferenceCases();
  std::erase_if(cases, [](const ReferenceCase& one) {
    return !one.Content.contains("residuals") || !one.Content.at("residuals").contains("schoenfeld");
  });
  return cases;
}

INSTANTIATE_TEST_SUITE_P(Cases, SchoenfeldReference, ::testing::ValuesIn(CasesWithResiduals()), [](const auto& test) {
  return test.param.Name;
});

}  // namespace

}  // namespace orv::testing
