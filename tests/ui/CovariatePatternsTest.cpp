// The form of covariate patterns, and what is read from it.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "ui/SurvivorRun.h"

namespace orv {
namespace {

using namespace testing;
using Texts = std::vector<std::string>;
using Vector = std::vector<double>;

constexpr const char* kTooFew = "Number of covariates patterns must be greater than or equal to 1.";
constexpr const char* kNotUnderstood = "Please review input for correctness.";

class CovariatePatternsTest : public SurvivorRun {};

TEST_F(CovariatePatternsTest, FormHasARowForEachPatternAndAColumnForEachPredictor) {
  Run();
  results->NumberOfCovariatePatterns = 3;
  int window = 0;
  results->Parent = &window;
  EXPECT_EQ(Confirm(), 0);
  ASSERT_EQ(analysis->Host.DialogSheets.size(), 1U);
  EXPECT_STREQ(analysis->Host.DialogSheets[0].Title1.c_str(), "Specify covariate values");
  EXPECT_EQ(analysis->Host.DialogParent, &window);
  EXPECT_EQ(shown.RowNames, (Texts{"Case 1", "Case 2", "Case 3"}));
  ASSERT_EQ(shown.Columns.size(), 3U);
  EXPECT_EQ(shown.Columns[0].Name, "x");
  EXPECT_EQ(shown.Columns[1].Name, "z");
  EXPECT_EQ(shown.Columns[2].Name, "arm");
}

TEST_F(CovariatePatternsTest, FormStartsFromMeansAndModalCodes) {
  Run();
  results->NumberOfCovariatePatterns = 2;
  EXPECT_EQ(Confirm(), 0);
  ExpectNear({shown.Columns[0].Numbers, shown.Columns[1].Numbers}, {{3.0, 3.0}, {0.5, 0.5}});
  EXPECT_EQ(shown.Columns[2].Texts, (Texts{"new drug", "new drug"}));
  ExpectNear(results->Patterns.DesignRows, {{3.0, 0.5, 0.0, 1.0}, {3.0, 0.5, 0.0, 1.0}});
}

TEST_F(CovariatePatternsTest, MeansAndModalCodesCountTheWeights) {
  Run([](TestAnalysis& a) { a.Weights("w"); });
  const Vector means = results->DefaultCovariates();
  ASSERT_EQ(means.size(), 2U);
  EXPECT_NEAR(means[0], 44.0 / 12.0, 1e-14);
  EXPECT_NEAR(means[1], 10.0 / 12.0, 1e-14);
  EXPECT_EQ(results->DefaultFactors(), (Texts{"new drug"}));
}

TEST_F(CovariatePatternsTest, ModalCodeWithoutALabelIsItsNumber) {
  Run();
  analysis->Data().FactorModalCodes[0] = 3.0;
  EXPECT_EQ(results->DefaultFactors(), (Texts{"3"}));
}

TEST_F(CovariatePatternsTest, PredictorsOutsideTheDesignAreNotAskedFor) {
  Run([](TestAnalysis& a) { a.Design({{"z", "v4"}}); });
  EXPECT_EQ(Confirm(), 0);
  ASSERT_EQ(shown.Columns.size(), 1U);
  EXPECT_EQ(shown.Columns[0].Name, "z");
  EXPECT_EQ(shown.Columns[0].Numbers, (Vector{0.5}));
  EXPECT_EQ(results->Patterns.Labels, (Texts{"z:0.5 "}));
}

TEST_F(CovariatePatternsTest, FormIsReadBack) {
  Run();
  results->NumberOfCovariatePatterns = 3;
  const int returned = Specify([](SheetContent& form) {
    form.Columns[0].Numbers = {-1.5, 2.0, 1e6};
    form.Columns[2].Texts = {"1", "new drug", "3"};
    return true;
  });
  EXPECT_EQ(returned, 0);
  EXPECT_EQ(results->Patterns.DesignRows,
            (DenseMatrix{{-1.5, 0.5, 1.0, 0.0}, {2.0, 0.5, 0.0, 1.0}, {1e6, 0.5, 0.0, 0.0}}));
  EXPECT_EQ(results->Patterns.Labels,
            (Texts{"x:-1.5 z:0.5 arm:1 ", "x:2 z:0.5 arm:new drug ", "x:1e+06 z:0.5 arm:3 "}));
  EXPECT_EQ(results->Patterns.Covariates, (std::vector<Vector>{{-1.5, 0.5}, {2.0, 0.5}, {1e6, 0.5}}));
  EXPECT_EQ(results->Patterns.Factors, (std::vector<Texts>{{"1"}, {"new drug"}, {"3"}}));
  EXPECT_TRUE(analysis->Host.Messages().empty());
}

TEST_F(CovariatePatternsTest, CodeOfALabelledLevelIsUnderstoodToo) {
  Run();
  EXPECT_EQ(Specify([](SheetContent& form) {
              form.Columns[2].Texts = {"2"};
              return true;
            }),
            0);
  ExpectNear(results->Patterns.DesignRows, {{3.0, 0.5, 0.0, 1.0}});
}

TEST_F(CovariatePatternsTest, SecondFormStartsFromTheFirst) {
  Run();
  results->NumberOfCovariatePatterns = 2;
  ASSERT_EQ(Specify([](SheetContent& form) {
              form.Columns[1].Numbers = {9.0, 8.0};
              form.Columns[2].Texts = {"3", "1"};
              return true;
            }),
            0);
  const DenseMatrix rows = results->Patterns.DesignRows;
  ASSERT_EQ(Confirm(), 0);
  EXPECT_EQ(shown.Columns[1].Numbers, (Vector{9.0, 8.0}));
  EXPECT_EQ(shown.Columns[2].Texts, (Texts{"3", "1"}));
  EXPECT_EQ(results->Patterns.DesignRows, rows);
}

TEST_F(CovariatePatternsTest, AnotherNumberOfPatternsStartsAnew) {
  Run();
  ASSERT_EQ(Specify([](SheetContent& form) {
              form.Columns[0].Numbers = {9.0};
              return true;
            }),
            0);
  results->NumberOfCovariatePatterns = 2;
  ASSERT_EQ(results->Patterns.DesignRows.size(), 1U) << "the number alone changes nothing";
  ASSERT_EQ(Confirm(), 0);
  ExpectNear({shown.Columns[0].Numbers}, {{3.0, 3.0}});
  EXPECT_EQ(results->Patterns.DesignRows.size(), 2U);
}

TEST_F(CovariatePatternsTest, CancelledFormKeepsThePatterns) {
  Run();
  ASSERT_EQ(Specify([](SheetContent& form) {
              form.Columns[0].Numbers = {9.0};
              return true;
            }),
            0);
  const CovariatePatterns before = results->Patterns;
  EXPECT_EQ(Specify([](SheetContent& form) {
              form.Columns[0].Numbers = {-9.0};
              return false;
            }),
            1);
  EXPECT_EQ(results->Patterns.Covariates, before.Covariates);
  EXPECT_EQ(results->Patterns.DesignRows, before.DesignRows);
  EXPECT_EQ(results->Patterns.Labels, before.Labels);
  EXPECT_TRUE(analysis->Host.Messages().empty());
}

// The number was changed for a form that was then cancelled or refused.
TEST_F(CovariatePatternsTest, FormOfAnotherNumberThatFailsKeepsThePatterns) {
  for (const bool confirmed : {false, true}) {
    Run();
    ASSERT_EQ(Confirm(), 0);
    results->NumberOfCovariatePatterns = 3;
    EXPECT_EQ(Specify([&](SheetContent& form) {
                form.Columns[2].Texts = {"1", "unknown", "1"};
                return confirmed;
              }),
              1);
    EXPECT_EQ(results->Patterns.Covariates.size(), 1U) << confirmed;
    EXPECT_EQ(results->Patterns.Factors.size(), 1U) << confirmed;
    EXPECT_EQ(results->Patterns.DesignRows.size(), 1U) << confirmed;
    EXPECT_EQ(results->Patterns.Labels.size(), 1U) << confirmed;
  }
}

TEST_F(CovariatePatternsTest, PredictorsStandInTheOrderOfTheirNumbers) {
  Run([](TestAnalysis& a) { a.Covariates({"w"}).Design({{"w", "v6"}, {"arm", "v5"}, {"z", "v4"}}); });
  ASSERT_EQ(Specify([](SheetContent& form) {
              form.Columns[0].Numbers = {2.0};
              form.Columns[1].Texts = {"3"};
              form.Columns[2].Numbers = {7.0};
              return true;
            }),
            0);
  EXPECT_EQ(shown.Columns[0].Name, "z");
  EXPECT_EQ(shown.Columns[1].Name, "arm");
  EXPECT_EQ(shown.Columns[2].Name, "w");
  EXPECT_EQ(results->Patterns.Labels, (Texts{"z:2 arm:3 w:7 "}));
  EXPECT_EQ(results->Patterns.DesignRows, (DenseMatrix{{7.0, 0.0, 0.0, 2.0}})) << "as in the design";
  EXPECT_EQ(results->PatternCovariates(), (std::vector<int>{4, 6}));
  EXPECT_EQ(results->PatternFactors(), (std::vector<int>{5}));
}

TEST_F(CovariatePatternsTest, CellThatIsNeitherLabelNorCodeIsRefused) {
  for (const char* text : {"old drug", "", "4", "2.5", "New drug", "1 2"}) {
    SCOPED_TRACE(text);
    Run();
    const int returned = Specify([&](SheetContent& form) {
      form.Columns[2].Texts = {text};
      return true;
    });
    ExpectRefusal(returned, kNotUnderstood);
    EXPECT_TRUE(results->Patterns.DesignRows.empty());
  }
}

TEST_F(CovariatePatternsTest, EmptyCellOfACovariateIsRefused) {
  Run();
  const int returned = Specify([](SheetContent& form) {
    form.Columns[1].Numbers = {std::nan("")};
    return true;
  });
  ExpectRefusal(returned, kNotUnderstood);
}

TEST_F(CovariatePatternsTest, RefusedFormLeavesThePatternsThatStand) {
  Run();
  ASSERT_EQ(Confirm(), 0);
  const int returned = Specify([&](SheetContent& form) {
    form.Columns[0].Numbers = {17.0};
    form.Columns[2].Texts = {"unknown"};
    return true;
  });
  EXPECT_EQ(returned, 1);
  ExpectNear(results->Patterns.DesignRows, {{3.0, 0.5, 0.0, 1.0}});
}

TEST_F(CovariatePatternsTest, FewerThanOnePatternIsRefused) {
  for (const int count : {0, -3}) {
    Run();
    results->NumberOfCovariatePatterns = count;
    ExpectRefusal(Confirm(), kTooFew);
    EXPECT_TRUE(analysis->Host.DialogSheets.empty());
  }
}

TEST_F(CovariatePatternsTest, FormHasAtMost25Patterns) {
  for (const int count : {25, 26, 1000}) {
    Run();
    results->NumberOfCovariatePatterns = count;
    EXPECT_EQ(Confirm(), 0);
    EXPECT_EQ(shown.RowNames.size(), 25U) << count;
    EXPECT_EQ(shown.RowNames.back(), "Case 25");
    EXPECT_EQ(results->Patterns.DesignRows.size(), 25U);
  }
}

TEST_F(CovariatePatternsTest, PatternsCanBeSetWithoutTheForm) {
  Run();
  EXPECT_EQ(results->SetPatterns({{1.0, 2.0}, {3.0, 4.0}}, {{"new drug"}, {"1"}}), 0);
  EXPECT_EQ(results->NumberOfCovariatePatterns, 2);
  EXPECT_EQ(results->Patterns.DesignRows, (DenseMatrix{{1.0, 2.0, 0.0, 1.0}, {3.0, 4.0, 1.0, 0.0}}));
  ExpectRefusal(results->SetPatterns({{1.0, 2.0}}, {{"8"}}), kNotUnderstood);
  EXPECT_EQ(results->Patterns.DesignRows.size(), 2U);
  EXPECT_TRUE(analysis->Host.DialogSheets.empty());
}

}  // namespace
}  // namespace orv
