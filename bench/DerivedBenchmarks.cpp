#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Cases.h"
#include "LatestCase.h"
#include "SurvivalAnalysis.h"
#include "inference/InfluenceMeasures.h"
#include "inference/PostFit.h"
#include "inference/SchoenfeldResiduals.h"
#include "inference/ScoreResiduals.h"

namespace orv::bench {

namespace {

constexpr SurvivalKind kKinds[] = {
    {"survival", true, true, 0},
    {"intervals", true, false, 0, Starts::Spread},
};
constexpr int kSizes[] = {10'000, 100'000, 1'000'000};
constexpr int kCovariates = 10;
constexpr double kLeastDigits = 9.0;

// Agreement of a total with what it must be, relative to the sizes that it sums.
class Agreement {
 public:
  void Add(double total, double expected, double size) {
    const double error = std::abs(total - expected) / size;
    m_digits = std::min(m_digits, error > 0.0 ? -std::log10(error) : 16.0);
  }
  double Digits() const { return m_digits; }

 private:
  double m_digits = 16.0;
};

double Total(const std::vector<double>& values) {
  double sum = 0.0;
  for (const double value : values) sum += value;
  return sum;
}

double TotalSize(const std::vector<double>& values) {
  double sum = 0.0;
  for (const double value : values) sum += std::abs(value);
  return sum;
}

double Product(const std::vector<double>& a, const std::vector<double>& b) {
  double sum = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += a[i] * b[i];
  return sum;
}

// What a family computes from nothing, and an identity that its totals obey.
struct Family {
  const char* Name;
  bool ForIntervals;
  void (*Compute)(CCoxFit& fit);
  double (*Check)(CCoxFit& fit);
};

// Residuals of each parameter add up to the score at the estimate.
double ScoreAgreement(CCoxFit& fit, const DenseMatrix& residuals) {
  std::vector<double> beta = fit.m_BetaHistory.back();
  fit.EvaluateScoreAt(beta.data());
  Agreement agreement;
  for (std::size_t k = 0; k < residuals.size(); ++k) {
    agreement.Add(Total(residuals[k]), fit.m_ScoreVector[k], TotalSize(residuals[k]));
  }
  return agreement.Digits();
}

void PostFit(CCoxFit& fit) {
  fit.m_InputType == InputTypes::CountingProcess ? PostFitCountingProcess(fit) : PostFitSurvivalTime(fit);
}

double CheckPostFit(CCoxFit& fit) {
  Agreement agreement;
  agreement.Add(Total(fit.m_MartingaleResiduals), 0.0, TotalSize(fit.m_MartingaleResiduals));
  return agreement.Digits();
}

double CheckScore(CCoxFit& fit) {
  return ScoreAgreement(fit, fit.m_ScoreResiduals);
}

double CheckSchoenfeld(CCoxFit& fit) {
  return ScoreAgreement(fit, fit.m_SchoenfeldResiduals);
}

// The squares of the changes add up to the robust covariance.
double CheckDfBeta(CCoxFit& fit) {
  fit.ComputeRobustCovariance();
  Agreement agreement;
  for (std::size_t k = 0; k < fit.m_DfBeta.size(); ++k) {
    const double square = Product(fit.m_DfBeta[k], fit.m_DfBeta[k]);
    agreement.Add(square, fit.m_RobustCovariance[k][k], square);
  }
  return agreement.Digits();
}

double CheckDisplacement(CCoxFit& fit) {
  double expected = 0.0;
  for (std::size_t k = 0; k < fit.m_Covariance.size(); ++k) {
    for (std::size_t l = 0; l < fit.m_Covariance.size(); ++l) {
      expected += fit.m_Covariance[k][l] * Product(fit.m_ScoreResiduals[k], fit.m_ScoreResiduals[l]);
    }
  }
  Agreement agreement;
  agreement.Add(Total(fit.m_LikelihoodDisplacement), expected, expected);
  return agreement.Digits();
}

// The vector has length 1, the weights being 1.
double CheckLmax(CCoxFit& fit) {
  Agreement agreement;
  agreement.Add(Product(fit.m_Lmax, fit.m_Lmax), 1.0, 1.0);
  return agreement.Digits();
}

constexpr Family kFamilies[] = {
    {"post-fit", true, PostFit, CheckPostFit},
    {"score", true, ComputeScoreResiduals, CheckScore},
    {"schoenfeld", true, ComputeSchoenfeldResiduals, CheckSchoenfeld},
    {"dfbeta", true, [](CCoxFit& fit) { fit.ComputeDfBeta(); }, CheckDfBeta},
    {"displacement", false, ComputeLikelihoodDisplacement, CheckDisplacement},
    {"lmax", false, [](CCoxFit& fit) { ComputeLmax(fit); }, CheckLmax},
};

void RunFamily(benchmark::State& state, const Family& family, const SurvivalKind& kind, int cases) {
  static LatestCase<SurvivalAnalysis> latest;
  try {
    SurvivalAnalysis& analysis = latest.Get(CaseName("derived", kind.Name, cases, kCovariates), [&] {
      auto prepared = std::make_unique<SurvivalAnalysis>(kind, cases, kCovariates);
      prepared->Fit();
      return prepared;
    });
    CCoxFit& fit = analysis.LatestFit();
    fit.DropResiduals();
    family.Compute(fit);
    const double digits = family.Check(fit);
    if (!(digits >= kLeastDigits)) throw std::runtime_error(fmt::format("the totals agree to {:.1f} digits", digits));
    while (state.KeepRunning()) {
      fit.DropResiduals();
      family.Compute(fit);
    }
    state.SetLabel(fmt::format("{:.1f} digits", digits));
  } catch (const std::exception& error) {
    state.SkipWithError(error.what());
    return;
  }
  state.counters[Figures::Cases] = cases;
  state.counters[Figures::Columns] = kCovariates;
}

}  // namespace

void RegisterDerivedBenchmarks() {
  for (const SurvivalKind& kind : kKinds) {
    for (const int cases : kSizes) {
      for (const Family& family : kFamilies) {
        if (kind.Start != Starts::None && !family.ForIntervals) continue;
        const std::string name = CaseName(std::string("derived/") + family.Name, kind.Name, cases, kCovariates);
        benchmark::RegisterBenchmark(
            name.c_str(), [&family, &kind, cases](benchmark::State& state) { RunFamily(state, family, kind, cases); });
      }
    }
  }
}

}  // namespace orv::bench
