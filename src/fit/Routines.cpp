// The named maximisation routines: each is the common frame on its pass, with what sets it apart.
#include "fit/CCoxFit.h"

namespace orv {

namespace {

constexpr RoutineTraits kPlain{};
constexpr RoutineTraits kCancellable{.HasCancelQuery = true};

}  // namespace

int CCoxFit::FitSurvival(int efronStep) {
  return Maximize(*SurvivalPass(false, efronStep, m_ActiveColumns),
                  {.HasCancelQuery = true, .SkipsLoopWithoutColumns = true});
}

// No cancel query in this one and in those for intervals: kept, such a run is stopped at the next query after it.
int CCoxFit::FitSurvivalStrata(int efronStep) {
  return Maximize(*SurvivalPass(true, efronStep, m_ActiveColumns), kPlain);
}

int CCoxFit::FitCounting(int efronStep) {
  return Maximize(*CountingPassOf(false, efronStep, m_ActiveColumns), kPlain);
}

int CCoxFit::FitCountingStrata(int efronStep) {
  return Maximize(*CountingPassOf(true, efronStep, m_ActiveColumns), kPlain);
}

int CCoxFit::FitSurvivalDiscrete() {
  return Maximize(*SurvivalDiscretePass(false, m_ActiveColumns), kCancellable);
}

int CCoxFit::FitSurvivalDiscreteStrata() {
  return Maximize(*SurvivalDiscretePass(true, m_ActiveColumns), kCancellable);
}

int CCoxFit::FitCountingDiscrete() {
  return Maximize(*CountingDiscretePass(false, m_ActiveColumns), kCancellable);
}

int CCoxFit::FitCountingDiscreteStrata() {
  return Maximize(*CountingDiscretePass(true, m_ActiveColumns), kCancellable);
}

// One routine for both cases of strata. It has one pass before the loop, so with start values the null likelihood and
// the score statistic belong to the start vector.
int CCoxFit::FitTimeDependent(int efronStep) {
  return Maximize(*TimeDependentPassOf(efronStep, m_ActiveColumns), {.HasProgressBar = false, .HasNullPass = false});
}

}  // namespace orv
