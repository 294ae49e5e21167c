// The sandwich estimate of the covariance, changes of the parameters by case, and the robust global tests.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>

#include "fit/TwelveCases.h"
#include "inference/HandWrittenFit.h"
#include "inference/ScoreResiduals.h"

namespace orv {
namespace {

using testing::DefineForm;
using testing::ExpectNear;
using testing::ForRandomFits;
using testing::RandomForm;
using testing::RandomSurvivalColumns;
using testing::SortedCasesOf;
using testing::TestAnalysis;
using testing::TestColumn;
using testing::TwelveCaseAnalysis;
using testing::WriteFit;
using Vector = std::vector<double>;

// The sum of v v' over the columns of `residuals`.
DenseMatrix SumOfSquares(const DenseMatrix& residuals) {
  const std::size_t p = residuals.size();
  DenseMatrix sum(p, Vector(p, 0.0));
  for (std::size_t j = 0; j < p; ++j) {
    for (std::size_t l = 0; l < p; ++l) {
      for (std::size_t i = 0; i < residuals[j].size(); ++i) sum[j][l] += residuals[j][i] * residuals[l][i];
    }
  }
  return sum;
}

DenseMatrix Product(const DenseMatrix& a, const DenseMatrix& b) {
  DenseMatrix product(a.size(), Vector(b.front().size(), 0.0));
  for (std::size_t i = 0; i < a.size(); ++i) {
    for (std::size_t k = 0; k < b.size(); ++k) {
      for (std::size_t j = 0; j < b[k].size(); ++j) product[i][j] += a[i][k] * b[k][j];
    }
  }
  return product;
}

// v' M^-1 v for two parameters.
double InverseForm(const DenseMatrix& M, const Vector& v) {
  const double determinant = M[0][0] * M[1][1] - M[0][1] * M[1][0];
  return (v[0] * v[0] * M[1][1] - 2.0 * v[0] * v[1] * M[0][1] + v[1] * v[1] * M[0][0]) / determinant;
}

// Some forms of analyses with a column "id": a subject of its own for each case, or a few subjects for all.
std::vector<TestColumn> ColumnsWithSubjects(unsigned seed, int n, int subjects) {
  std::vector<TestColumn> columns = RandomSurvivalColumns(seed, n, false);
  columns.push_back({"id", {}});
  for (int i = 0; i < n; ++i) columns.back().Values.push_back(100.0 + (7 * i) % subjects);
  return columns;
}

void SetSubjects(TestAnalysis& analysis) {
  analysis.Settings().SubjectVariable = analysis.Number("id");
  analysis.Settings().SubjectVariableCount = 1;
}

TEST(DfBeta, IsCovarianceTimesScoreResiduals) {
  ForRandomFits([](CCoxFit& fit, const Vector&, const RandomForm&) {
    fit.ComputeDfBeta();
    ASSERT_EQ(fit.m_ScoreResiduals.size(), 2U) << "computed when absent";
    ExpectNear(fit.m_DfBeta, Product(fit.m_Covariance, fit.m_ScoreResiduals), 1e-13);
  });
}

TEST(DfBeta, IsComputedOnlyWhenAbsent) {
  TestAnalysis analysis(RandomSurvivalColumns(1, 20, false));
  DefineForm(analysis, {});
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.1, 0.2});
  const DenseMatrix mark(2, Vector(20, 0.25));
  fit.m_DfBeta = mark;
  fit.ComputeDfBeta();
  EXPECT_EQ(fit.m_DfBeta, mark);
}

// Without subjects every case is a subject of its own, with weights too: the score residuals carry what there is of
// weights, so nothing else is left to sum over.
TEST(RobustCovariance, IsTheSumOfSquaredDfbetasWithoutSubjects) {
  ForRandomFits([](CCoxFit& fit, const Vector&, const RandomForm&) {
    fit.ComputeRobustCovariance();
    fit.ComputeDfBeta();
    ExpectNear(fit.m_RobustCovariance, SumOfSquares(fit.m_DfBeta), 1e-11);
  });
}

TEST(RobustCovariance, SubjectOfEveryRowGivesTheSumOfSquaredDfbetas) {
  for (const RandomForm& form : testing::RandomForms()) {
    if (form.MeetingStrata) continue;
    SCOPED_TRACE(form.What);
    constexpr int kCases = 60;
    TestAnalysis analysis(ColumnsWithSubjects(2, kCases, kCases));
    DefineForm(analysis, form);
    SetSubjects(analysis);
    CCoxFit& fit = WriteFit(analysis, Likelihoods::Efron, {0.7, -0.4});
    ASSERT_EQ(analysis.Data().NextSubjectId, kCases);
    fit.ComputeRobustCovariance();
    fit.ComputeDfBeta();
    ExpectNear(fit.m_RobustCovariance, SumOfSquares(fit.m_DfBeta), 1e-11);
  }
}

TEST(RobustCovariance, SumsTheScoreResidualsOverSubjects) {
  for (const RandomForm& form : testing::RandomForms()) {
    if (form.MeetingStrata) continue;
    SCOPED_TRACE(form.What);
    TestAnalysis analysis(ColumnsWithSubjects(3, 60, 13));
    DefineForm(analysis, form);
    SetSubjects(analysis);
    CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.7, -0.4});
    fit.ComputeRobustCovariance();
    const CCoxData& data = analysis.Data();
    std::map<double, Vector> bySubject;
    for (std::size_t i = 0; i < data.ValidCaseCount; ++i) {
      Vector& sum = bySubject[data.CaseTable.GetRow(static_cast<int>(i) + 1)[data.SubjectColumn]];
      sum.resize(2);
      for (std::size_t k = 0; k < 2; ++k) sum[k] += fit.m_ScoreResiduals[k][i];
    }
    EXPECT_EQ(bySubject.size(), 13U);
    DenseMatrix sums(2);
    for (const auto& [subject, sum] : bySubject) {
      for (std::size_t k = 0; k < 2; ++k) sums[k].push_back(sum[k]);
    }
    const DenseMatrix expected = Product(Product(fit.m_Covariance, SumOfSquares(sums)), fit.m_Covariance);
    ExpectNear(fit.m_RobustCovariance, expected, 1e-11);
    // The score test sums over the same subjects.
    fit.m_NullScoreResiduals.clear();
    const double statistic = fit.RobustScoreStatistic();
    DenseMatrix nullSums(2, Vector(13, 0.0));
    Vector u(2, 0.0);
    for (std::size_t i = 0; i < data.ValidCaseCount; ++i) {
      const auto subject = static_cast<std::size_t>(data.CaseTable.GetRow(static_cast<int>(i) + 1)[data.SubjectColumn]);
      for (std::size_t k = 0; k < 2; ++k) {
        nullSums[k][subject] += fit.m_NullScoreResiduals[k][i];
        u[k] += fit.m_NullScoreResiduals[k][i];
      }
    }
    EXPECT_NEAR(statistic, InverseForm(SumOfSquares(nullSums), u), 1e-9);
  }
}

// A whole run: one subject for every case of an unweighted analysis gives what no subjects give.
TEST(RobustCovariance, RunStoresItWhenTheOptionAsksForIt) {
  DenseMatrix found[2];
  for (const bool subjects : {false, true}) {
    TestAnalysis analysis(ColumnsWithSubjects(4, 50, 50));
    DefineForm(analysis, {});
    if (subjects) SetSubjects(analysis);
    analysis.Settings().UseRobustVariance = true;
    ASSERT_EQ(analysis.Run(), 0);
    found[subjects ? 1 : 0] = analysis.Fit().m_RobustCovariance;
  }
  ASSERT_EQ(found[0].size(), 2U);
  ExpectNear(found[1], found[0], 1e-13);
  TestAnalysis plain(ColumnsWithSubjects(4, 50, 50));
  DefineForm(plain, {});
  ASSERT_EQ(plain.Run(), 0);
  EXPECT_TRUE(plain.Fit().m_RobustCovariance.empty());
}

TEST(RobustTests, AreQuadraticForms) {
  ForRandomFits([](CCoxFit& fit, const Vector& beta, const RandomForm& form) {
    fit.ComputeRobustCovariance();
    const double wald = InverseForm(fit.m_RobustCovariance, beta);
    EXPECT_NEAR(fit.RobustWaldStatistic(), wald, 1e-9 * wald);
    const double score = fit.RobustScoreStatistic();
    EXPECT_EQ(fit.m_NullScoreResiduals,
              form.Intervals ? CountingScoreResiduals(fit, nullptr) : SurvivalScoreResiduals(fit, nullptr));
    Vector u(2, 0.0);
    for (std::size_t k = 0; k < 2; ++k) {
      for (const double residual : fit.m_NullScoreResiduals[k]) u[k] += residual;
    }
    EXPECT_NEAR(score, InverseForm(SumOfSquares(fit.m_NullScoreResiduals), u), 1e-9 * std::max(1.0, score));
  });
}

TEST(RobustTests, AreZeroWithoutMemory) {
  TestAnalysis analysis(RandomSurvivalColumns(1, 30, false));
  DefineForm(analysis, {});
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.1, 0.2});
  fit.ComputeRobustCovariance();
  ASSERT_GT(fit.RobustScoreStatistic(), 0.0);
  const int before = analysis.Host.LiveBlocks();
  // The score statistic takes the square of the residuals first.
  for (int failing = 1; failing <= 4; ++failing) {
    analysis.Host.FailAllocation(failing);
    EXPECT_EQ(fit.RobustScoreStatistic(), 0.0) << failing;
    EXPECT_EQ(analysis.Host.LiveBlocks(), before) << failing;
  }
  for (int failing = 1; failing <= 2; ++failing) {
    analysis.Host.FailAllocation(failing);
    EXPECT_EQ(fit.RobustWaldStatistic(), 0.0) << failing;
    EXPECT_EQ(analysis.Host.LiveBlocks(), before) << failing;
  }
}

// A covariance that is not there must not let that of the model stand in its place.
TEST(RobustCovariance, WithoutMemoryThrows) {
  TestAnalysis analysis(RandomSurvivalColumns(1, 30, false));
  DefineForm(analysis, {});
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.1, 0.2});
  for (int failing = 1; failing <= 2; ++failing) {
    analysis.Host.FailAllocation(failing);
    EXPECT_THROW(fit.ComputeRobustCovariance(), std::bad_alloc) << failing;
  }
  fit.ComputeRobustCovariance();
  EXPECT_EQ(fit.m_RobustCovariance.size(), 2U);
}

// A matrix of zeros has the zero matrix as its inverse of this kind.
TEST(RobustTests, AreZeroOnAMatrixOfZeros) {
  TestAnalysis analysis(RandomSurvivalColumns(1, 30, false));
  DefineForm(analysis, {});
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.1, 0.2});
  fit.m_RobustCovariance = DenseMatrix(2, Vector(2, 0.0));
  EXPECT_EQ(fit.RobustWaldStatistic(), 0.0);
  fit.m_NullScoreResiduals = DenseMatrix(2, Vector(30, 0.0));
  EXPECT_EQ(fit.RobustScoreStatistic(), 0.0);
}

// A covariate that repeats another is dropped: the sandwich has nothing in its row and column, and both tests are those
// of the model without it.
TEST(RobustCovariance, DroppedParameterHasAZeroRow) {
  double wald[2] = {};
  double score[2] = {};
  for (const bool aliased : {false, true}) {
    TwelveCaseAnalysis analysis(aliased ? std::vector<std::string>{"a", "b", "twice"}
                                        : std::vector<std::string>{"a", "b"});
    analysis.Settings().UseRobustVariance = true;
    ASSERT_EQ(analysis.Run(), 0);
    CCoxFit& fit = analysis.Fit();
    wald[aliased ? 1 : 0] = fit.RobustWaldStatistic();
    score[aliased ? 1 : 0] = fit.RobustScoreStatistic();
    if (!aliased) continue;
    ASSERT_EQ(fit.m_RobustCovariance.size(), 3U);
    std::size_t dropped = 0;
    while (dropped < 3 && !analysis.Data().DesignColumns[dropped].Dropped) ++dropped;
    ASSERT_LT(dropped, 3U);
    for (std::size_t k = 0; k < 3; ++k) {
      EXPECT_EQ(fit.m_RobustCovariance[dropped][k], 0.0) << k;
      EXPECT_EQ(fit.m_RobustCovariance[k][dropped], 0.0) << k;
      if (k != dropped) {
        EXPECT_GT(fit.m_RobustCovariance[k][k], 0.0) << k;
      }
    }
    for (const double change : fit.m_DfBeta[dropped]) EXPECT_EQ(change, 0.0);
  }
  EXPECT_NEAR(wald[1], wald[0], 1e-6 * wald[0]);
  EXPECT_NEAR(score[1], score[0], 1e-6 * score[0]);
}

// Covariates far from 0, such as years: exp(x'b) overflows, but the sandwich needs ratios of risks alone.
TEST(RobustCovariance, IsFiniteWhenRisksOverflow) {
  for (const bool intervals : {false, true}) {
    DenseMatrix found[2];
    double score[2] = {};
    for (const bool far : {false, true}) {
      std::vector<TestColumn> columns = RandomSurvivalColumns(7, 40, false);
      for (double& value : columns[3].Values) value += far ? 2000.0 : 0.0;
      TestAnalysis analysis(columns);
      DefineForm(analysis, {"", intervals, false, false, false});
      CCoxFit& fit = WriteFit(analysis, Likelihoods::Efron, {1.5, -0.4});
      fit.ComputeRobustCovariance();
      found[far ? 1 : 0] = fit.m_RobustCovariance;
      score[far ? 1 : 0] = fit.RobustScoreStatistic();
    }
    ExpectNear(found[1], found[0], 1e-8);
    EXPECT_NEAR(score[1], score[0], 1e-7);
  }
}

// What a cancelled fit or one without memory leaves: vectors, perhaps none, and no covariance.
TEST(RobustCovariance, FitWithoutACovarianceHasNone) {
  for (const bool history : {true, false}) {
    TestAnalysis analysis(RandomSurvivalColumns(1, 20, false));
    DefineForm(analysis, {});
    CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.1, 0.2});
    fit.m_Covariance.clear();
    if (!history) fit.m_BetaHistory.clear();
    fit.m_RobustCovariance = DenseMatrix(2, Vector(2, 3.0));
    fit.ComputeRobustCovariance();
    fit.ComputeDfBeta();
    EXPECT_TRUE(fit.m_RobustCovariance.empty()) << "that of an earlier fit goes";
    EXPECT_TRUE(fit.m_DfBeta.empty());
    EXPECT_EQ(fit.RobustWaldStatistic(), 0.0);
    EXPECT_GT(fit.RobustScoreStatistic(), 0.0) << "at the vector of zeros nothing of the fit is needed";
  }
}

TEST(RobustCovariance, ModelWithoutColumnsHasAnEmptyOne) {
  TwelveCaseAnalysis analysis;
  analysis.Settings().UseRobustVariance = true;
  CCoxFit& fit = analysis.PrepareFit();
  fit.FitCurrentModel();
  fit.ComputeRobustCovariance();
  EXPECT_TRUE(fit.m_RobustCovariance.empty());
  EXPECT_EQ(fit.RobustWaldStatistic(), 0.0);
  EXPECT_EQ(fit.RobustScoreStatistic(), 0.0);
}

}  // namespace
}  // namespace orv
