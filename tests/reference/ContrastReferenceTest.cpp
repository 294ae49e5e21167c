// Type 3 tests and linear combinations against the reference cases that have them.
//
// The estimates are exact to 9 digits at least (see ReferenceTest.cpp), and so are the tests; a small chi-square is
// judged by the change that 1e-3 standard errors make. Robust cases take the robust covariance.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "inference/LinearCombinations.h"
#include "reference/ReferenceComparison.h"
#include "support/SheetReading.h"
#include "ui/CCoxPHResults.h"

namespace orv::testing {

namespace {

using nlohmann::json;

class ContrastReference : public ReferenceComparison {
 protected:
  void SetUp() override {
    const bool isRobust = Content().at("setup").at("robust");
    run = RunReferenceCase(GetParam(), {}, isRobust ? Variance::Robust : Variance::Model);
  }

  void CompareTest(const std::string& quantity, double chiSquare, double p, const json& expected, const char* key) {
    const double size = expected.at(key);
    const double slope = 2.0 * std::sqrt(size);
    Compare(quantity + " chi-square", chiSquare, size, kEstimateDigits, std::max({size, 1e-3, slope * Exactness()}));
    const double expectedP = expected.at("p");
    Compare(quantity + " p value", p, expectedP, kPValueDigits, std::max(expectedP, kPValueResolution));
  }
  SheetView Last() const {
    const ResultDocuments& documents = run.Host->Documents();
    return SheetView(documents[documents.Size() - 1]);
  }

  ReferenceRun run;
};

class Type3Reference : public ContrastReference {};

TEST_P(Type3Reference, TestsAgree) {
  run.Analysis->CreateType3Spreadsheet(0.95);
  const SheetView sheet = Last();
  const json& tests = Content().at("type3");
  ASSERT_EQ(sheet.Rows(), static_cast<int>(tests.size()));
  for (int row = 0; row < sheet.Rows(); ++row) {
    const json& expected = tests[static_cast<std::size_t>(row)];
    SCOPED_TRACE(expected.at("effect").get<std::string>());
    EXPECT_EQ(sheet.RowNames()[static_cast<std::size_t>(row)], expected.at("effect").get<std::string>());
    const int df = expected.at("df");
    EXPECT_EQ(sheet.Value(row, "df"), expected.value("df_shown", df));
    CompareTest("type 3", sheet.Value(row, "Wald"), sheet.Value(row, "P value"), expected, "wald");
  }
}

TEST_P(ContrastReference, LinearCombinationsAgree) {
  for (const json& expected : Content().at("contrasts")) {
    const auto functions = expected.at("L").get<DenseMatrix>();
    SCOPED_TRACE(expected.at("L").dump());
    CCoxPHResults results(*run.Analysis);
    results.m_LinearCombinations.assign(functions.front().size(), {});
    for (const std::vector<double>& function : functions) {
      for (std::size_t j = 0; j < function.size(); ++j) results.m_LinearCombinations[j].push_back(function[j]);
    }
    ASSERT_EQ(results.EstimateLinearCombination(), 0);
    const SheetView sheet = Last();
    EXPECT_EQ(sheet.Text(0, 1), std::to_string(expected.at("df").get<int>()));
    CompareTest("contrast", *sheet.Number(0, 0), *sheet.Number(0, 2), expected, "chisq");
    ASSERT_EQ(sheet.Columns(), functions.size() == 1 ? 9 : 3);
    if (functions.size() != 1) continue;
    const double se = expected.at("se");
    const double estimate = expected.at("estimate");
    Compare("contrast", *sheet.Number(0, 3), estimate, kEstimateDigits, std::max(std::abs(estimate), Exactness() * se));
    Compare("contrast lower", *sheet.Number(0, 4), expected.at("lower"), kEstimateDigits, se);
    Compare("contrast upper", *sheet.Number(0, 5), expected.at("upper"), kEstimateDigits, se);
    const char* const keys[] = {"exp_estimate", "exp_lower", "exp_upper"};
    for (int k = 0; k < 3; ++k) {
      const double value = expected.at(keys[k]);
      Compare("exp(contrast)", *sheet.Number(0, 6 + k), value, kEstimateDigits, value);
    }
  }
}

class OverparameterizedReference : public ::testing::TestWithParam<ReferenceCase> {};

// With a column for each level, differences between levels can be estimated and single levels cannot.
TEST_P(OverparameterizedReference, DifferencesOfLevelsAreEstimable) {
  const ReferenceRun run = RunReferenceCase(GetParam(), {});
  const CCoxData& data = *run.Analysis->m_pCoxData;
  const auto status = [&](int plus, int minus) {
    DenseMatrix L(data.CoefficientCount, {0.0});
    L[static_cast<std::size_t>(plus)][0] = 1.0;
    if (minus >= 0) L[static_cast<std::size_t>(minus)][0] = -1.0;
    return ValidateLinearCombinations(*run.Analysis, L);
  };
  for (std::size_t effect = 0; effect < data.EffectFirstColumn.size(); ++effect) {
    const int first = data.EffectFirstColumn[effect] - 1;
    const int last = data.EffectLastColumn[effect] - 1;
    for (int column = first; column <= last; ++column) {
      const int ofLevel = first == last ? LinearCombinationStatuses::Usable : LinearCombinationStatuses::NotEstimable;
      EXPECT_EQ(status(column, -1), ofLevel) << column;
      for (int other = first; other < column; ++other) {
        EXPECT_EQ(status(column, other), LinearCombinationStatuses::Usable) << column << " - " << other;
      }
    }
  }
}

std::vector<ReferenceCase> OverparameterizedCases() {
  std::vector<ReferenceCase> cases = LoadReferenceCases();
  std::erase_if(cases, [](const ReferenceCase& reference) {
    return reference.Content.at("setup").at("coding") != "overparameterized";
  });
  return cases;
}

INSTANTIATE_TEST_SUITE_P(Cases, Type3Reference, ::testing::ValuesIn(CasesWith("type3")), CaseName);
INSTANTIATE_TEST_SUITE_P(Cases, OverparameterizedReference, ::testing::ValuesIn(OverparameterizedCases()), CaseName);
INSTANTIATE_TEST_SUITE_P(Cases, ContrastReference, ::testing::ValuesIn(CasesWith("contrasts")), CaseName);

}  // namespace

}  // namespace orv::testing
