#include "apps/orvcox/RunReporting.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

#include "core/StringTable.h"
#include "data/CCoxData.h"
#include "data/VariableNames.h"
#include "fit/CCoxFit.h"
#include "output/CoefficientLabels.h"

namespace orv {

namespace {

struct ReasonText {
  Exclusion Reason;
  ExclusionReason Reported;
  const char* Text;
};

// In the order of the report.
constexpr std::array kReasons = {
    ReasonText{Exclusion::Selection, ExclusionReason::Selection, "not selected"},
    ReasonText{Exclusion::Missing, ExclusionReason::Missing, "a missing value"},
    ReasonText{Exclusion::Weight, ExclusionReason::Weight, "a weight that is not above 0"},
    ReasonText{Exclusion::Time, ExclusionReason::Time, "a negative time or no valid date"},
    ReasonText{Exclusion::Entry, ExclusionReason::Entry, "a negative time with an entry time"},
    ReasonText{Exclusion::Stratum, ExclusionReason::Stratum, "a stratum that is not selected"},
    ReasonText{Exclusion::Status, ExclusionReason::Status, "a status that is neither code"},
    ReasonText{Exclusion::Factor, ExclusionReason::Factor, "a factor code that is missing or not selected"},
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
    if (column.Dropped && !column.Fixed) columns.push_back({labels[c], !(column.StdDev > 0.0)});
  }
  return columns;
}

std::string CountOfCases(int count) {
  return count == 1 ? "1 case" : fmt::format("{} cases", count);
}

std::string NoteOnExclusions(const CaseReport& cases) {
  std::vector<std::string> reasons;
  for (const ReasonText& reason : kReasons) {
    const int count = cases.Excluded[static_cast<std::size_t>(reason.Reported)];
    if (count == 0) continue;
    std::string text = fmt::format("{} for {}", count, reason.Text);
    if (reason.Reported == ExclusionReason::Missing) {
      std::vector<std::string> variables;
      for (const auto& [name, missing] : cases.MissingByVariable) variables.push_back(fmt::format("{} {}", name, missing));
      text += fmt::format(" ({})", fmt::join(variables, ", "));
    }
    reasons.push_back(text);
  }
  if (reasons.empty()) return {};
  const int leftOut = cases.Read - cases.Valid;
  return fmt::format("{} of {} left out: {}.", leftOut, CountOfCases(cases.Read), fmt::join(reasons, "; "));
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
    const std::string exclusions = NoteOnExclusions(*cases);
    if (!exclusions.empty()) notes.push_back(exclusions);
  }
  for (const LeftOutColumn& column : LeftOutColumns(analysis)) {
    notes.push_back(fmt::format("{} took no part in the fit: {}.",
                                column.Name,
                                column.IsConstant ? "it is constant" : "it is a combination of the columns before it"));
  }
  if (analysis.m_pCoxFit && analysis.m_pCoxFit->m_FitStatus == FitStatuses::IterationLimit) {
    notes.push_back(fmt::format("no convergence within {} iterations: raise --max-iterations, or choose another --converge "
                                "or a smaller --tolerance-exponent.",
                                analysis.m_Settings.MaxIterations));
  }
  return notes;
}

}  // namespace orv
