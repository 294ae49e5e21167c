#include "standalone/analysis/CheckDefinition.h"

#include <utility>

#include "core/CoxSettings.h"
#include "standalone/analysis/Choices.h"
#include "standalone/analysis/DefinitionMessages.h"
#include "standalone/analysis/EffectSyntax.h"
#include "standalone/analysis/ListSyntax.h"
#include "standalone/analysis/TimeCovariateSyntax.h"

namespace orv {

namespace {

namespace Messages = DefinitionMessages;

constexpr std::size_t kDates = 2;
constexpr std::size_t kDateParts = 6;
constexpr std::size_t kIntervalEnds = 2;

[[noreturn]] void Fail(const std::string& message) {
  throw DefinitionError(message);
}

void CheckTimes(const AnalysisDefinition& d) {
  const std::pair<const char*, bool> forms[] = {{"--time", !d.Time.empty()},
                                                {"--dates", !d.Dates.empty()},
                                                {"--date-parts", !d.DateParts.empty()},
                                                {"--interval", !d.Interval.empty()}};
  const char* chosen = nullptr;
  for (const auto& [option, given] : forms) {
    if (given && chosen != nullptr) Fail(Messages::SeveralTimes(chosen, option));
    if (given) chosen = option;
  }
  if (chosen == nullptr) {
    Fail(Messages::MissingOption(
        "--time", "name the variable with the survival times, or use --dates, --date-parts or --interval"));
  }
  if (!d.Dates.empty() && d.Dates.size() != kDates) {
    Fail(Messages::WrongCount("--dates", kDates, d.Dates.size(), "start and end date"));
  }
  if (!d.DateParts.empty() && d.DateParts.size() != kDateParts) {
    Fail(Messages::WrongCount("--date-parts", kDateParts, d.DateParts.size(),
                              "month, day, year of the start, then of the end"));
  }
  if (d.Interval.empty()) return;
  if (d.Interval.size() != kIntervalEnds) {
    Fail(Messages::WrongCount("--interval", kIntervalEnds, d.Interval.size(), "start and stop"));
  }
  if (!d.Entry.empty()) Fail(Messages::EntryWithIntervals());
  if (!d.TimeCovariates.empty()) Fail(Messages::IntervalsWithTimeCovariates());
}

void CheckStatus(const AnalysisDefinition& d) {
  if (d.Status.empty()) Fail(Messages::MissingOption("--status", "name the censoring indicator"));
  if (d.EventCode.empty() == d.CensoredCode.empty()) return;
  Fail(d.EventCode.empty() ? Messages::MissingOption("--event", "name the code of an event")
                           : Messages::MissingOption("--censored", "name the code of a censored case"));
}

// An option that says something about another kind of model building is a slip.
void CheckSelection(const AnalysisDefinition& d) {
  const int building = ChoiceValue("--select", d.Select, SelectionChoices(), ModelBuildings::AllEffects);
  const bool enters = building == ModelBuildings::Forward || building == ModelBuildings::Stepwise;
  const bool removes = building == ModelBuildings::Backward || building == ModelBuildings::Stepwise;
  if (d.PEnter && !enters) Fail(Messages::OptionWithoutSelection("--p-enter", "forward or stepwise"));
  if (d.PRemove && !removes) Fail(Messages::OptionWithoutSelection("--p-remove", "backward or stepwise"));
  if (building == ModelBuildings::AllEffects) {
    if (d.Force) Fail(Messages::OptionWithoutSelection("--force", "forward, backward, stepwise or best"));
    return;
  }
  if (!d.TimeCovariates.empty()) Fail(Messages::SelectionWithTimeCovariates());
  if (building == ModelBuildings::BestSubsets && !d.Factors.empty()) Fail(Messages::BestSubsetsWithFactors());
}

}  // namespace

void CheckDefinition(const AnalysisDefinition& definition) {
  const AnalysisDefinition& d = definition;
  CheckTimes(d);
  CheckStatus(d);
  if (d.Strata.empty() && !d.StrataCodes.empty()) {
    Fail(Messages::MissingOption("--strata", "name the variable that --strata-codes belongs to"));
  }
  for (const std::string& text : d.FactorCodes) ParseCodes("--codes", text);
  for (const std::string& text : d.ReferenceCodes) ParseReference("--reference", text);
  if (!d.Effects.empty()) ParseEffects(d.Effects);
  ChoiceValue("--coding", d.Coding, CodingChoices(), 0);
  const int ties = ChoiceValue("--ties", d.Ties, TieChoices(), 0);
  if (!ParseTimeCovariates(d.TimeCovariates).empty() && ties == Likelihoods::Discrete) {
    Fail(Messages::DiscreteWithTimeCovariates());
  }
  CheckSelection(d);
  ChoiceValue("--converge", d.Converge, ConvergenceChoices(), 0);
  if (!d.TimeCovariates.empty() && (d.Robust || !d.Subject.empty())) Fail(Messages::RobustWithTimeCovariates());
  if (d.StartValues.empty() && d.StartValuesFile.empty() && !d.FixedCoefficients.empty())
    Fail(Messages::FixWithoutStartValues());
}

}  // namespace orv
