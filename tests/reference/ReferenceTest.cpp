// Every reference case against the program, quantity by quantity.
//
// Estimates and what follows from them are compared after a stop by the relative-parameter test at 1e-10. That makes
// them exact to about 12 digits, or to 9 where a last step that gains less than the rounding of the likelihood was
// rejected by chance; the reference itself is exact to about 1e-12. Hence the bounds below. Entries of a matrix are
// compared relative to the diagonal that they belong to, since an entry near 0 has no digits of its own.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <optional>

#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "inference/GoodnessOfFit.h"
#include "reference/ReferenceComparison.h"

namespace orv::testing {

namespace {

using nlohmann::json;

constexpr double kLikelihoodDigits = 12.0;
constexpr double kStatisticDigits = 12.0;  // means and deviations of columns: no iteration in them

class Reference : public ReferenceComparison {
 protected:
  // Compares relative to `scale`, by default the expected value.
  void Compare(const std::string& quantity,
               double value,
               double expected,
               double leastDigits,
               std::optional<double> scale = std::nullopt) {
    ReferenceComparison::Compare(quantity, value, expected, leastDigits, scale.value_or(std::abs(expected)));
  }

  void CompareMatrix(const std::string& quantity, const DenseMatrix& matrix, const json& expected) {
    ASSERT_EQ(matrix.size(), expected.size()) << quantity;
    const auto diagonal = [&](std::size_t i) { return expected[i][i].get<double>(); };
    for (std::size_t i = 0; i < matrix.size(); ++i) {
      for (std::size_t j = 0; j < matrix.size(); ++j) {
        const double scale = std::sqrt(diagonal(i) * diagonal(j));
        Compare(quantity, matrix[i][j], expected[i][j], kEstimateDigits, scale);
      }
    }
  }
};

// The cells of a result table by column title and row.
class TableCells {
 public:
  explicit TableCells(const ResultDocument& document) : m_sheet(std::get<SheetContent>(document.Content)) {}

  std::optional<double> At(const std::string& column, std::size_t row) const {
    for (const SheetColumn& candidate : m_sheet.Columns) {
      if (candidate.Title() != column) continue;
      if (candidate.KindOfCell(row) != SheetCellKind::Number) return std::nullopt;
      return candidate.Numbers[row];
    }
    ADD_FAILURE() << "no column " << column;
    return std::nullopt;
  }

 private:
  const SheetContent& m_sheet;
};

TEST_P(Reference, CasesAndColumnsAgree) {
  const ReferenceRun run = RunReferenceCase(GetParam(), {});
  const CCoxData& data = *run.Analysis->m_pCoxData;
  const json& counts = Content().at("counts");
  EXPECT_EQ(run.Table->CaseCount(), counts.at("input_cases").get<int>());
  EXPECT_EQ(data.ValidCaseCount, counts.at("valid_cases").get<unsigned>());
  EXPECT_EQ(data.CompleteCaseCount, counts.at("complete").get<unsigned>());
  EXPECT_EQ(data.CensoredCaseCount, counts.at("censored").get<unsigned>());

  std::vector<bool> kept(static_cast<std::size_t>(run.Table->CaseCount()) + 1, false);
  for (int row = 1; row <= static_cast<int>(data.ValidCaseCount); ++row) {
    kept[static_cast<std::size_t>(data.CaseTable.GetRow(row)[data.CaseNumberColumn])] = true;
  }
  std::vector<int> excluded;
  for (int number = 1; number <= run.Table->CaseCount(); ++number) {
    if (!kept[static_cast<std::size_t>(number)]) excluded.push_back(number);
  }
  EXPECT_EQ(excluded, Content().value("excluded_case_numbers", std::vector<int>{}));

  const json& columns = Content().at("columns");
  ASSERT_EQ(data.CoefficientCount, columns.size());
  for (std::size_t c = 0; c < columns.size(); ++c) {
    const CoxDesignColumn& column = data.DesignColumns[c];
    const json& statistics = columns[c].at("statistics");
    EXPECT_EQ(column.EffectName, columns[c].at("effect").get<std::string>());
    EXPECT_EQ(column.ColumnInEffect, columns[c].at("column_in_effect").get<int>());
    EXPECT_EQ(column.Count, statistics.at("count").get<int>());
    const double sd = statistics.at("sd");
    const double weightedSd = statistics.at("weighted_sd");
    Compare("column mean", column.Mean, statistics.at("mean"), kStatisticDigits, std::abs(column.Mean) + sd);
    Compare("column sd", column.StdDev, sd, kStatisticDigits);
    Compare("column weight sum", column.WeightSum, statistics.at("weight_sum"), kStatisticDigits);
    Compare("column weighted mean", column.WeightedMean, statistics.at("weighted_mean"), kStatisticDigits,
            std::abs(column.WeightedMean) + weightedSd);
    Compare("column weighted sd", column.WeightedStdDev, weightedSd, kStatisticDigits);
  }
}

TEST_P(Reference, FitAndGlobalTestsAgree) {
  const ReferenceRun run = RunReferenceCase(GetParam(), {});
  const CCoxFit& fit = *run.Analysis->m_pCoxFit;
  const GoodnessOfFit goodness = ComputeGoodnessOfFit(fit);
  const json& expected = Content().at("fit");
  Compare("log likelihood", fit.m_LogLikHistory.back(), expected.at("loglik"), kLikelihoodDigits);
  Compare("null log likelihood", fit.m_NullLogLik, expected.at("loglik_null"), kLikelihoodDigits);
  Compare("-2 log likelihood", goodness.Minus2LogL, expected.at("minus2_loglik"), kLikelihoodDigits);
  Compare("score statistic", goodness.Score, expected.at("score_statistic"), kLikelihoodDigits);
  // A difference of two likelihoods keeps fewer digits than they have.
  Compare("likelihood ratio", goodness.LikelihoodRatio, expected.at("likelihood_ratio"), kEstimateDigits);
  Compare("wald", goodness.Wald, expected.at("wald"), kEstimateDigits);
  Compare("r2", goodness.R2, expected.at("r2"), kEstimateDigits);
  Compare("aic", goodness.AIC, expected.at("aic"), kLikelihoodDigits);
  Compare("sbc", goodness.SBC, expected.at("sbc"), kLikelihoodDigits);
}

TEST_P(Reference, EstimatesAgree) {
  const ReferenceRun run = RunReferenceCase(GetParam(), {});
  const CCoxFit& fit = *run.Analysis->m_pCoxFit;
  run.Host->SetResultName("estimates");
  run.Analysis->CreateParameterEstimateSpreadsheet(0.95);
  const TableCells cells(run.Host->Documents()[0]);
  const json& estimates = Content().at("estimates");
  ASSERT_EQ(fit.m_BetaHistory.back().size(), estimates.size());

  std::map<std::string, json> ratios;
  for (const json& ratio : Content().at("hazard_ratios")) ratios[ratio.at("name")] = ratio;
  for (std::size_t j = 0; j < estimates.size(); ++j) {
    const json& expected = estimates[j];
    const std::string name = expected.at("name");
    SCOPED_TRACE(name);
    const bool dropped = expected.at("dropped");
    EXPECT_EQ(run.Analysis->m_pCoxData->DesignColumns[j].Dropped, dropped);
    const double coefficient = cells.At("Parameter Estimate", j).value();
    if (dropped) {
      EXPECT_EQ(coefficient, expected.at("coef").get<double>());
      EXPECT_FALSE(cells.At("Standard Error", j).has_value());
      EXPECT_FALSE(cells.At("Hazard Ratio", j).has_value());
      continue;
    }
    const double se = expected.at("se");
    const double exactness = Exactness();
    const double size = std::max(std::abs(expected.at("coef").get<double>()), exactness * se);
    Compare("coefficient", coefficient, expected.at("coef"), kEstimateDigits, size);
    Compare("standard error", cells.At("Standard Error", j).value(), se, kEstimateDigits);
    const double chisq = expected.at("chisq");
    const double slope = 2.0 * std::sqrt(chisq);  // of (b / se)^2 to b / se
    const double chisqSize = std::max({chisq, 1e-3, slope * exactness});
    Compare("chi-square", cells.At("Chi-square", j).value(), chisq, kEstimateDigits, chisqSize);
    const double p = expected.at("p");
    Compare("p value", cells.At("P value", j).value(), p, kPValueDigits, std::max(p, kPValueResolution));
    Compare("lower limit", cells.At("95% Lower CL", j).value(), expected.at("lower"), kEstimateDigits, se);
    Compare("upper limit", cells.At("95% Upper CL", j).value(), expected.at("upper"), kEstimateDigits, se);
    const auto ratio = ratios.find(name);
    if (ratio == ratios.end()) {
      EXPECT_FALSE(cells.At("Hazard Ratio", j).has_value());
      continue;
    }
    Compare("hazard ratio", cells.At("Hazard Ratio", j).value(), ratio->second.at("hazard_ratio"), kEstimateDigits);
    Compare("hazard ratio lower", cells.At("95% Hazard Ratio Lower CL", j).value(), ratio->second.at("lower"),
            kEstimateDigits);
    Compare("hazard ratio upper", cells.At("95% Hazard Ratio Upper CL", j).value(), ratio->second.at("upper"),
            kEstimateDigits);
  }
  CompareMatrix("covariance", fit.m_Covariance, Content().at("covariance"));
  CompareMatrix("information", fit.m_Information, Content().at("information"));
}

INSTANTIATE_TEST_SUITE_P(Cases, Reference, ::testing::ValuesIn(LoadReferenceCases()), [](const auto& test) {
  return test.param.Name;
});

}  // namespace

}  // namespace orv::testing
