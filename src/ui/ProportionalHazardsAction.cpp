// The test of proportional hazards as an operation of the results.
#include <new>
#include <optional>
#include <string>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "fit/FloatingPointRegime.h"
#include "fit/NumericalFailure.h"
#include "inference/ProportionalHazards.h"
#include "inference/SchoenfeldResiduals.h"
#include "inference/TimeTransforms.h"
#include "output/ProportionalHazardsTable.h"
#include "ui/CCoxPHResults.h"

namespace orv {

namespace {

constexpr const char* kZeroTime =
    "The observed survival time of one or more complete cases is zero.  The test of proportional hazards with log "
    "transformation cannot be completed.";
constexpr const char* kCannotComplete = "Unable to complete the test of proportional hazards.";

const char* TitleOf(TimeTransform transform) {
  switch (transform) {
    case TimeTransform::Log:
      return "Log Time";
    case TimeTransform::KaplanMeier:
      return "Kaplan-Meier";
    case TimeTransform::Rank:
      return "Rank";
    default:
      return "Time";
  }
}

// Nothing when a logarithm cannot be taken.
std::optional<TransformedTimes> Transformed(const CCoxData& data, TimeTransform transform) {
  switch (transform) {
    case TimeTransform::Log:
      return LogTimes(data);
    case TimeTransform::KaplanMeier:
      return KaplanMeierTimes(data);
    case TimeTransform::Rank:
      return RankTimes(data);
    default:
      return IdentityTimes(data);
  }
}

// Drops the residuals of a request at its end: they are as large as the design and quickly made again.
class ResidualsOfRequest {
 public:
  explicit ResidualsOfRequest(CCoxFit& fit) : m_fit(fit) {}
  ~ResidualsOfRequest() {
    DenseMatrix().swap(m_fit.m_SchoenfeldResiduals);
    DenseMatrix().swap(m_fit.m_ScaledSchoenfeldResiduals);
  }
  ResidualsOfRequest(const ResidualsOfRequest&) = delete;
  ResidualsOfRequest& operator=(const ResidualsOfRequest&) = delete;

 private:
  CCoxFit& m_fit;
};

// Computes the test, or sets `message` to what keeps it from being made.
std::optional<ProportionalHazardsTest> Compute(CCoxFit& fit, TimeTransform transform, const char*& message) {
  message = kCannotComplete;
  try {
    const FloatingPointRegime regime;
    ComputeSchoenfeldResiduals(fit);
    ComputeScaledSchoenfeldResiduals(fit);
    FloatingPointRegime::ThrowIfFailed();
    const std::optional<TransformedTimes> times = Transformed(*fit.m_pData, transform);
    if (!times) {
      message = kZeroTime;
      return std::nullopt;
    }
    std::optional<ProportionalHazardsTest> test = ComputeProportionalHazardsTest(fit, times->Values);
    FloatingPointRegime::ThrowIfFailed();
    return test;
  } catch (const NumericalFailure&) {
    return std::nullopt;
  } catch (const std::bad_alloc&) {
    return std::nullopt;
  }
}

}  // namespace

int CCoxPHResults::TestProportionalHazards() {
  const ResidualsOfRequest residuals(Fit());
  const char* message = nullptr;
  const std::optional<ProportionalHazardsTest> test = Compute(Fit(), Transform, message);
  if (!test) {
    Analysis().dsplst(0, message);
    return 1;
  }
  ShowProportionalHazards(Data(), *test, TitleOf(Transform), ConfidenceLevel);
  return 0;
}

}  // namespace orv
