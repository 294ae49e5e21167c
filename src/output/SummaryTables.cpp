#include "output/SummaryTables.h"

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "data/FactorLevels.h"
#include "data/RoundHalfAway.h"
#include "fit/CCoxFit.h"
#include "host/FormatText.h"
#include "inference/GoodnessOfFit.h"
#include "output/CResultSpreadsheet.h"

namespace orv {

namespace {

constexpr int kSummaryRows = 8;
constexpr int kRobustRows = 2;
constexpr std::size_t kShortNameLength = 12;

void SetSummaryTitles(const CCoxData& data, CResultSpreadsheet& sheet) {
  const std::string counts = FormatText(
      "Total number of cases: %d Complete: %d Censored: %d",
      {FormatInteger(data.CaseCount), FormatInteger(data.CompleteCaseCount), FormatInteger(data.CensoredCaseCount)});
  sheet.SetTitle1("Goodness of fit");
  sheet.SetTitle2(counts);
  sheet.SetShortName(counts.substr(0, kShortNameLength));
}

void ShowWithCounts(const CCoxData& data, CResultSpreadsheet& sheet) {
  HostDocument* document = sheet.ShowAndKeep();
  if (document == nullptr) return;
  document->SetCustomProperty("Complete", FormatInteger(data.CompleteCaseCount));
  document->SetCustomProperty("Censored", FormatInteger(data.CensoredCaseCount));
}

double CountOf(const std::map<double, double>& counts, double stratum) {
  const auto found = counts.find(stratum);
  return found != counts.end() ? found->second : 0.0;
}

void ShowStrata(const CCoxData& data) {
  const CoxSettings& settings = data.Owner->m_Settings;
  if (!settings.HasStrata() || settings.StrataCodeCount.empty()) return;
  CResultSpreadsheet sheet(data.Owner->GetHost(), settings.StrataCodeCount[0], 5);
  sheet.SetTitle1("Summary of complete/censored cases for each stratum");
  sheet.SetColumnName(0, "Stratum");
  sheet.SetColumnName(1, "Total");
  sheet.SetColumnName(2, "Complete");
  sheet.SetColumnName(3, "Censored");
  sheet.SetColumnName(4, "Percent Censored");
  int row = 0;
  for (const auto& [stratum, total] : data.CasesByStratum) {
    const double censored = CountOf(data.CensoredByStratum, stratum);
    sheet.SetText(row, 0, CodeText(*data.Owner, settings.StrataVariable, RoundToInteger(stratum)));
    sheet.SetIntegerText(row, 1, RoundToInteger(total));
    sheet.SetIntegerText(row, 2, RoundToInteger(CountOf(data.CompleteByStratum, stratum)));
    sheet.SetIntegerText(row, 3, RoundToInteger(censored));
    sheet.SetNumber(row, 4, censored * 100.0 / total);
    ++row;
  }
  sheet.Show();
}

}  // namespace

void ShowSummary(CCoxFit& fit) {
  const CCoxData& data = *fit.m_pData;
  if (data.CoefficientCount == 0) {
    ShowNoCovariateSummary(fit);
    return;
  }
  if (fit.m_LogLikHistory.empty()) return;
  const GoodnessOfFit goodness = ComputeGoodnessOfFit(fit);
  const bool isRobust = data.Owner->m_Settings.UseRobustVariance;
  CResultSpreadsheet sheet(data.Owner->GetHost(), kSummaryRows + (isRobust ? kRobustRows : 0), 1);
  SetSummaryTitles(data, sheet);
  sheet.SetTitle3(fit.m_Converged ? "Estimation procedure converged." : "Estimation procedure failed to converge.");
  int row = 0;
  const auto add = [&](const char* name, double value) {
    sheet.SetRowName(row, name);
    sheet.SetNumber(row++, 0, value);
  };
  add("-2 Log L", goodness.Minus2LogL);
  add("AIC", goodness.AIC);
  add("SBC", goodness.SBC);
  add("R2 ", goodness.R2);
  sheet.SetRowName(row++, "Global test: All betas = 0");
  add("Score", goodness.Score);
  add("Likelihood Ratio", goodness.LikelihoodRatio);
  add("Wald", goodness.Wald);
  if (isRobust) {
    add("Robust wald", fit.RobustWaldStatistic());
    add("Robust score", fit.RobustScoreStatistic());
  }
  ShowWithCounts(data, sheet);
  ShowStrata(data);
}

void ShowNoCovariateSummary(const CCoxFit& fit) {
  const CCoxData& data = *fit.m_pData;
  if (fit.m_LogLikHistory.empty()) return;
  CResultSpreadsheet sheet(data.Owner->GetHost(), 1, 1);
  SetSummaryTitles(data, sheet);
  sheet.SetRowName(0, "-2 Log L");
  sheet.SetNumber(0, 0, -2.0 * fit.m_LogLikHistory.back());
  sheet.Show();
  ShowStrata(data);
}

}  // namespace orv
