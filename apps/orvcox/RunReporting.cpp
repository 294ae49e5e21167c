#include "apps/orvcox/RunReporting.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

#include "core/StringTable.h"
#include "data/CCoxData.h"
#include "data/TimeExpressions.h"
#include "data/VariableNames.h"
#include "fit/CCoxFit.h"
#include "host/TextIds.h"
#include "output/CoefficientLabels.h"

namespace orv {

namespace {

struct ReasonText {
  Exclusion Reason;
  ExclusionReason Reported;
  const char* Text;
};

// In the order of the report. The texts follow "left out for".
constexpr std::array kReasons = {
    ReasonText{Exclusion::Selection, ExclusionReason::Selection, "not being selected"},
    ReasonText{Exclusion::Missing, ExclusionReason::Missing, "a missing value"},
    ReasonText{Exclusion::Weight, ExclusionReason::Weight, "a weight that is missing or not above 0"},
    ReasonText{Exclusion::Time, ExclusionReason::Time, "a negative time"},
    ReasonText{Exclusion::Entry, ExclusionReason::Entry, "a negative time with an entry time"},
    ReasonText{Exclusion::Stratum, ExclusionReason::Stratum, "a stratum that is not selected"},
    ReasonText{Exclusion::Status, ExclusionReason::Status, "a status that is missing or neither code"},
    ReasonText{Exclusion::Factor, ExclusionReason::Factor, "a factor code that is not selected"},
    ReasonText{Exclusion::Expression, ExclusionReason::Expression, "a missing value in a time-dependent covariate"},
};

std::optional<CaseReport> ReportCases(const CCoxPH& analysis, const StandaloneHost& host) {
  if (!analysis.m_pCoxData) return std::nullopt;
  const CCoxData& data = *analysis.m_pCoxData;
  const auto& counts = data.Excluded.ByReason;
  const bool wasRead = data.ValidCaseCount > 0 || std::accumulate(counts.begin(), counts.end(), 0) > 0;
  if (!wasRead) return std::nullopt;

  CaseReport report;
  report.Read = host.Table().CaseCount();
  report.Valid = static_cast<int>(data.ValidCaseCount);
  report.Complete = static_cast<int>(data.CompleteCaseCount);
  report.Censored = static_cast<int>(data.CensoredCaseCount);
  for (const ReasonText& reason : kReasons) report.ExcludedFor(reason.Reported) = data.Excluded.Of(reason.Reason);

  // The host rejects cases that lack a value which the module does not test; for a person they are missing values.
  std::map<int, int> missing = data.Excluded.MissingByVariable;
  for (std::size_t k = 0; k < host.RejectedAsMissing().size(); ++k) {
    const int rejected = host.RejectedAsMissing()[k];
    report.ExcludedFor(ExclusionReason::Selection) -= rejected;
    report.ExcludedFor(ExclusionReason::Missing) += rejected;
    if (rejected > 0) missing[host.Required()[k]] += rejected;
  }
  for (const auto& [variable, count] : missing) {
    report.MissingByVariable.emplace_back(host.Table().Variable(variable).Name, count);
  }
  return report;
}

struct LeftOutColumn {
  std::string Name;
  bool IsConstant = false;
};

std::vector<LeftOutColumn> LeftOutColumns(const CCoxPH& analysis) {
  std::vector<LeftOutColumn> columns;
  if (!analysis.m_pCoxFit || !analysis.m_pCoxData || analysis.m_pCoxFit->m_BetaHistory.empty()) return columns;
  const CCoxData& data = *analysis.m_pCoxData;
  const std::vector<std::string> labels = CoefficientLabels(data);
  for (std::size_t c = 0; c < labels.size(); ++c) {
    const CoxDesignColumn& column = data.DesignColumns[c];
    // What is stored of a column with time expressions may well be constant while its values are not.
    const bool isConstant = column.ExpressionCount == 0 && !(column.StdDev > 0.0);
    if (column.Dropped && !column.Fixed) columns.push_back({labels[c], isConstant});
  }
  return columns;
}

// Why a time does not count, by the form in which it is given.
std::string TimeText(const CoxSettings& settings) {
  if (settings.InputType == InputTypes::CountingProcess) return "an interval that is empty or begins before 0";
  if (settings.SurvivalVariableCount == 2) return "an end before its start";
  return settings.SurvivalVariableCount == 6 ? "an end before its start or a date that is none" : "a negative time";
}

std::string ExclusionText(const ReasonText& reason, const CaseReport& cases, const CoxSettings& settings) {
  if (reason.Reported == ExclusionReason::Time) return TimeText(settings);
  if (reason.Reported != ExclusionReason::Missing) return reason.Text;
  std::vector<std::string> variables;
  for (const auto& [name, missing] : cases.MissingByVariable)
    variables.push_back(fmt::format("{} in {}", missing, name));
  return fmt::format("{} ({})", reason.Text, fmt::join(variables, ", "));
}

std::string NoteOnExclusions(const CaseReport& cases, const CoxSettings& settings) {
  std::vector<std::string> texts;
  std::vector<std::string> counted;
  for (const ReasonText& reason : kReasons) {
    const int count = cases.Excluded[static_cast<std::size_t>(reason.Reported)];
    if (count == 0) continue;
    texts.push_back(ExclusionText(reason, cases, settings));
    counted.push_back(fmt::format("{} for {}", count, texts.back()));
  }
  if (texts.empty()) return {};
  const std::string head = fmt::format("{} of {} cases left out", cases.Read - cases.Valid, cases.Read);
  if (texts.size() == 1) return fmt::format("{} for {}.", head, texts[0]);
  return fmt::format("{}: {}.", head, fmt::join(counted, "; "));
}

// A column whose pivot vanishes says nothing beyond the columns before it, but only the risk sets count for that.
std::string NoteOnColumn(const LeftOutColumn& column, bool hasStartValues) {
  const std::string where = hasStartValues ? "within the risk sets, at these start values," : "within the risk sets";
  return fmt::format(
      "{} took no part in the fit: {}.", column.Name,
      column.IsConstant ? "it is constant" : where + " it is constant or a combination of the columns before it");
}

// Factors whose hazard ratios under sigma-restricted coding are not the ratios to the reference level: the contrast
// behind a ratio reaches one column ahead, which is enough for two columns.
std::vector<std::string> FactorsWithOtherRatios(const CCoxPH& analysis) {
  std::vector<std::string> names;
  const CoxSettings& settings = analysis.m_Settings;
  const bool hasResults = analysis.m_pCoxFit && analysis.m_pCoxData && !analysis.m_pCoxFit->m_BetaHistory.empty();
  if (!hasResults || settings.Coding != Codings::SigmaRestricted) return names;
  constexpr int kMostColumns = 2;
  for (std::uint32_t c = 0; c < analysis.m_pCoxData->CoefficientCount; ++c) {
    const CoxDesignColumn& column = analysis.m_pCoxData->DesignColumns[c];
    const bool isMainEffect = column.VariableCount == 1 && column.HasFactor();
    if (isMainEffect && column.ColumnInEffect == kMostColumns + 1) names.push_back(column.EffectName);
  }
  return names;
}

// Which formula failed, where: the messages of the module say only that numbers failed.
std::string NoteOnFormula(const CCoxPH& analysis) {
  if (analysis.m_Settings.InputType != InputTypes::TimeDependent || !analysis.m_pExpressions) return {};
  const std::optional<ExpressionFailure>& failure = analysis.m_pExpressions->Failure();
  if (!failure || failure->Expression < 1) return {};
  const auto place = static_cast<std::size_t>(failure->Expression) - 1;
  return fmt::format(
      "--time-covariate {}: the formula cannot be computed for case {} at time {}. if(condition, a, b) computes only "
      "the "
      "part that is needed.",
      analysis.m_Settings.TimeDependentCovariateNames[place], failure->CaseNumber, failure->Time);
}

// The sums over subsets of a large tied group leave the range of a double long before they lose their meaning.
std::string NoteOnDiscreteFailure(const CCoxPH& analysis, const StandaloneHost& host) {
  if (analysis.m_Settings.Likelihood != Likelihoods::Discrete) return {};
  const std::vector<std::string>& shown = host.Messages();
  const bool failed = std::any_of(shown.begin(), shown.end(), [](const std::string& text) {
    const int id = FindModuleTextId(text);
    return id == TextIds::NoResultsAvailable || id == TextIds::LastIterationUsed;
  });
  if (!failed) return {};
  return "with --ties discrete the sums over many tied events can leave the range of numbers: --ties efron serves "
         "large "
         "tied groups.";
}

// The tables look the same with both covariances.
std::string NoteOnVariance(const CCoxPH& analysis) {
  const bool isRobust = analysis.m_Settings.UseRobustVariance && analysis.m_pCoxFit && analysis.m_pCoxData &&
                        !analysis.m_pCoxFit->m_RobustCovariance.empty();
  if (!isRobust) return {};
  const int subjects = analysis.m_pCoxData->NextSubjectId;
  const std::string clusters =
      analysis.m_Settings.SubjectVariable > 0 ? fmt::format(", with {} subjects", subjects) : "";
  return fmt::format("standard errors, tests and limits are robust{}.", clusters);
}

// What a selection has kept, since the tables show the model selected alone.
std::string NoteOnSelection(const CCoxPH& analysis) {
  const CoxSettings& settings = analysis.m_Settings;
  const bool isReduced = analysis.m_pCoxFit && analysis.m_pCoxData && !analysis.m_pCoxFit->m_KeptColumns.empty();
  if (!isReduced) return {};
  const std::string_view kind = settings.ModelBuilding == ModelBuildings::Forward    ? "forward"
                                : settings.ModelBuilding == ModelBuildings::Backward ? "backward"
                                                                                     : "stepwise";
  // The table of steps says the same whether all effects were forced or none qualified.
  const CCoxFit& fit = *analysis.m_pCoxFit;
  const std::size_t tried = fit.m_ForwardNames.size() + fit.m_StepActions.size() + fit.m_BackwardNames.size();
  const bool hasSteps = tried > static_cast<std::size_t>(fit.EffectsForcedInModel);
  const std::string_view outcome = hasSteps ? "" : ", without a step";
  return fmt::format("{} selection kept {} of {} effects{}: {}.", kind, settings.DesignEffects.size(),
                     settings.BackupDesignEffects.size(), outcome, fmt::join(settings.DesignEffects, ", "));
}

}  // namespace

RunReport ReportRun(const CCoxPH& analysis, const StandaloneHost& host, const std::string& version) {
  RunReport report;
  report.Program = kProgramName;
  report.Version = version;
  report.Cases = ReportCases(analysis, host);
  for (const LeftOutColumn& column : LeftOutColumns(analysis)) report.LeftOutColumns.push_back(column.Name);
  if (analysis.m_pCoxFit) {
    const CCoxFit& fit = *analysis.m_pCoxFit;
    FitReport outcome;
    outcome.Converged = fit.m_Converged;
    outcome.Status = fit.m_FitStatus;
    outcome.Iterations = std::max(static_cast<int>(fit.m_LogLikHistory.size()) - 1, 0);
    report.Fit = outcome;
  }
  for (const std::string& text : host.Messages()) report.Messages.push_back({FindModuleTextId(text), text});
  return report;
}

std::vector<std::string> NotesOnRun(const CCoxPH& analysis, const StandaloneHost& host) {
  std::vector<std::string> notes;
  if (const std::optional<CaseReport> cases = ReportCases(analysis, host)) {
    const std::string exclusions = NoteOnExclusions(*cases, analysis.m_Settings);
    if (!exclusions.empty()) notes.push_back(exclusions);
  }
  const std::string selection = NoteOnSelection(analysis);
  if (!selection.empty()) notes.push_back(selection);
  for (const LeftOutColumn& column : LeftOutColumns(analysis)) {
    notes.push_back(NoteOnColumn(column, analysis.m_Settings.UseStartValues));
  }
  if (analysis.m_pCoxFit && analysis.m_pCoxFit->m_FitStatus == FitStatuses::IterationLimit) {
    const int limit = analysis.m_Settings.MaxIterations;
    notes.push_back(
        fmt::format("no convergence within {} {}: raise --max-iterations, or choose another --converge or a "
                    "smaller --tolerance-exponent.",
                    limit, limit == 1 ? "iteration" : "iterations"));
  }
  for (const std::string& note : {NoteOnFormula(analysis), NoteOnDiscreteFailure(analysis, host)}) {
    if (!note.empty()) notes.push_back(note);
  }
  const std::string robust = NoteOnVariance(analysis);
  if (!robust.empty()) notes.push_back(robust);
  for (const std::string& factor : FactorsWithOtherRatios(analysis)) {
    notes.push_back(fmt::format(
        "under sigma coding the hazard ratios of {} do not all compare with its reference level, since it has "
        "more than 3 levels: use --coding reference for such ratios.",
        factor));
  }
  return notes;
}

}  // namespace orv
