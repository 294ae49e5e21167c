#include "output/SelectionTables.h"

#include <algorithm>
#include <string>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "host/FormatText.h"
#include "output/CResultSpreadsheet.h"
#include "select/EffectColumns.h"

namespace orv {

namespace {

// Titles and texts without a number in the string table.
constexpr const char* kForward = "Summary of Forward Selection";
constexpr const char* kBackward = "Summary of Backward Selection";
constexpr const char* kStepwise = "Summary of Stepwise Selection";
constexpr const char* kBestSubsets = "Best subset results";
constexpr const char* kAllForced = "All effects were forced into the model.";
constexpr const char* kEntered = "Effect Entered";
constexpr const char* kRemoved = "Effect Removed";
constexpr const char* kScore = "Score Chi-Square";
constexpr const char* kWald = "Wald";
constexpr const char* kPValue = "P value";

Host& HostOf(const CCoxFit& fit) {
  return fit.Owner().GetHost();
}

void ShowWithoutRows(const CCoxFit& fit, const char* title) {
  CResultSpreadsheet sheet(HostOf(fit), 1, 1);
  sheet.SetTitle1(title);
  sheet.SetColumnName(0, "Summary");
  sheet.SetText(0, 0, kAllForced);
  sheet.Show();
}

// A table of steps, its rows numbered from 1.
CResultSpreadsheet StepSheet(const CCoxFit& fit,
                             const char* title,
                             std::size_t rows,
                             std::initializer_list<const char*> columns) {
  CResultSpreadsheet sheet(HostOf(fit), static_cast<int>(rows), static_cast<int>(columns.size()));
  sheet.SetTitle1(title);
  sheet.SetShortName("Step");
  int column = 0;
  for (const char* name : columns) sheet.SetColumnName(column++, name);
  for (int row = 0; row < static_cast<int>(rows); ++row) sheet.SetRowName(row, FormatInteger(row + 1));
  return sheet;
}

void ShowForward(const CCoxFit& fit) {
  enum Column { kEffectCell, kScoreCell, kPValueCell };
  const auto forced = static_cast<std::size_t>(fit.EffectsForcedInModel);
  const std::size_t rows = fit.m_ForwardNames.size() - forced;
  if (rows == 0) return ShowWithoutRows(fit, kForward);
  CResultSpreadsheet sheet = StepSheet(fit, kForward, rows, {kEntered, kScore, kPValue});
  for (std::size_t step = 0; step < rows; ++step) {
    const int row = static_cast<int>(step);
    sheet.SetText(row, kEffectCell, fit.m_ForwardNames[forced + step]);
    sheet.SetNumber(row, kScoreCell, fit.m_ForwardScores[forced + step]);
    sheet.SetNumber(row, kPValueCell, fit.m_ForwardPValues[forced + step]);
  }
  sheet.Show();
}

void ShowBackward(const CCoxFit& fit) {
  enum Column { kEffectCell, kWaldCell, kPValueCell };
  const std::size_t rows = fit.m_BackwardNames.size();
  if (rows == 0) return ShowWithoutRows(fit, kBackward);
  CResultSpreadsheet sheet = StepSheet(fit, kBackward, rows, {kRemoved, kWald, kPValue});
  for (std::size_t step = 0; step < rows; ++step) {
    const int row = static_cast<int>(step);
    sheet.SetText(row, kEffectCell, fit.m_BackwardNames[step]);
    sheet.SetNumber(row, kWaldCell, fit.m_BackwardWalds[step]);
    sheet.SetNumber(row, kPValueCell, fit.m_BackwardPValues[step]);
  }
  sheet.Show();
}

void ShowStepwise(const CCoxFit& fit) {
  enum Column { kEnteredCell, kRemovedCell, kScoreCell, kWaldCell, kPValueCell };
  const auto forced = static_cast<std::size_t>(fit.EffectsForcedInModel);
  const std::size_t rows = fit.m_StepActions.size() - forced;
  if (rows == 0) return ShowWithoutRows(fit, kStepwise);
  CResultSpreadsheet sheet = StepSheet(fit, kStepwise, rows, {kEntered, kRemoved, kScore, kWald, kPValue});
  std::size_t entry = forced;
  std::size_t removal = 0;
  for (std::size_t step = 0; step < rows; ++step) {
    const int row = static_cast<int>(step);
    if (fit.m_StepActions[forced + step] == StepActions::Entry) {
      sheet.SetText(row, kEnteredCell, fit.m_StepEnteredNames[entry]);
      sheet.SetNumber(row, kScoreCell, fit.m_StepScores[entry]);
      sheet.SetNumber(row, kPValueCell, fit.m_StepEntryPValues[entry]);
      ++entry;
    } else {
      sheet.SetText(row, kRemovedCell, fit.m_StepRemovedNames[removal]);
      sheet.SetNumber(row, kWaldCell, fit.m_StepWalds[removal]);
      sheet.SetNumber(row, kPValueCell, fit.m_StepRemovalPValues[removal]);
      ++removal;
    }
  }
  sheet.Show();
}

void SetSubsetTitles(const CCoxFit& fit, CResultSpreadsheet& sheet) {
  std::string fixed;
  if (fit.m_pData->FixedEffectCount != 0) fixed = " * denotes parameters held fixed at specified values.";
  std::string forced;
  const int forcedEffects = ForcedEffectCount(fit);
  if (forcedEffects != 0) {
    forced = FormatText("The first %d effect(s) were forced into the model.", {FormatInteger(forcedEffects)});
  }
  // A title of its own for each line: together they are longer than a title may be.
  if (fixed.empty()) std::swap(fixed, forced);
  sheet.SetTitle1(kBestSubsets);
  sheet.SetTitle2(fixed);
  sheet.SetTitle3(forced);
}

void ShowBestSubsets(const CCoxFit& fit) {
  enum Column { kSizeCell, kScoreCell, kFirstVariable };
  const CCoxData& data = *fit.m_pData;
  const int p = static_cast<int>(data.CoefficientCount);
  if (fit.m_SubsetCount == 0) return ShowWithoutRows(fit, kBestSubsets);
  CResultSpreadsheet sheet(HostOf(fit), fit.m_SubsetCount, p + kFirstVariable);
  SetSubsetTitles(fit, sheet);
  sheet.SetColumnName(kSizeCell, "No. of effects");
  sheet.SetColumnName(kScoreCell, "Score");
  for (int k = 0; k < p; ++k) {
    sheet.SetColumnName(kFirstVariable + k, FormatText("Variable %d", {FormatInteger(k + 1)}));
  }
  for (int row = 0; row < fit.m_SubsetCount; ++row) {
    const std::vector<bool>& members = fit.m_SubsetMembers[static_cast<std::size_t>(row)];
    sheet.SetNumber(row, kSizeCell, static_cast<double>(std::count(members.begin(), members.end(), true)));
    sheet.SetNumber(row, kScoreCell, fit.m_SubsetScores[static_cast<std::size_t>(row)]);
    int cell = kFirstVariable;
    for (std::size_t c = 0; c < members.size(); ++c) {
      if (!members[c]) continue;
      const CoxDesignColumn& column = data.DesignColumns[c];
      sheet.SetText(row, cell++, (column.Fixed ? "* " : "") + column.EffectName);
    }
  }
  sheet.Show();
}

}  // namespace

void ShowModelBuildingSummary(const CCoxFit& fit) {
  switch (fit.Owner().m_Settings.ModelBuilding) {
    case ModelBuildings::Forward:
      return ShowForward(fit);
    case ModelBuildings::Backward:
      return ShowBackward(fit);
    case ModelBuildings::Stepwise:
      return ShowStepwise(fit);
    case ModelBuildings::BestSubsets:
      return ShowBestSubsets(fit);
    default:
      return;
  }
}

}  // namespace orv
