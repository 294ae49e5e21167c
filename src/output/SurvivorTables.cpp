#include "output/SurvivorTables.h"

#include <iterator>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "data/FactorLevels.h"
#include "data/RoundHalfAway.h"
#include "fit/CCoxFit.h"
#include "host/FormatText.h"
#include "output/CResultSpreadsheet.h"

namespace orv {

namespace {

std::string StratumText(const CCoxData& data, std::size_t stratum) {
  const CoxSettings& settings = data.Owner->m_Settings;
  if (!settings.HasStrata() || stratum >= data.CasesByStratum.size()) return {};
  const double code = std::next(data.CasesByStratum.begin(), static_cast<std::ptrdiff_t>(stratum))->first;
  const std::string label = CodeText(*data.Owner, settings.StrataVariable, RoundToInteger(code));
  return "Strata: " + data.Owner->GetHost().StripFormatting(label);
}

}  // namespace

void ShowCurve(const CCoxFit& fit,
               std::size_t stratum,
               const std::optional<std::vector<CurvePoint>>& points,
               std::size_t pointCount,
               const std::string& patternLabel,
               const CurveTableForm& form) {
  constexpr int kTime = 0;
  constexpr int kValue = 1;
  constexpr int kLower = 2;
  constexpr int kUpper = 3;
  const int rows = static_cast<int>(pointCount) + 1;
  CResultSpreadsheet sheet(fit.Owner().GetHost(), rows, form.HasLimits ? 4 : 2);
  sheet.SetTitle1(form.Title);
  sheet.SetTitle2(StratumText(*fit.m_pData, stratum));
  sheet.SetTitle3(patternLabel);
  sheet.SetColumnName(kTime, "Time");
  sheet.SetColumnName(kValue, form.ValueTitle);
  if (form.HasLimits) {
    const std::string percent = FormatGeneral(form.ConfidenceLevel * 100.0) + "% ";
    sheet.SetColumnName(kLower, percent + "Lower Confidence");
    sheet.SetColumnName(kUpper, percent + "Upper Confidence");
  }
  if (points) {
    sheet.SetNumber(0, kTime, 0.0);
    sheet.SetNumber(0, kValue, form.FirstValue);
    int row = 1;
    for (const CurvePoint& point : *points) {
      sheet.SetNumber(row, kTime, point.Time);
      sheet.SetNumber(row, kValue, point.Value);
      if (form.HasLimits && point.Limits) {
        sheet.SetNumber(row, kLower, point.Limits->Lower);
        sheet.SetNumber(row, kUpper, point.Limits->Upper);
      }
      ++row;
    }
  }
  sheet.Show();
}

}  // namespace orv
