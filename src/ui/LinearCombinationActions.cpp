// Linear combinations of the parameters: the sheet on which they are entered, and their test.
#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "data/CCoxData.h"
#include "data/FactorLevels.h"
#include "host/FormatText.h"
#include "inference/LinearCombinations.h"
#include "inference/LinearHypothesis.h"
#include "output/CResultSpreadsheet.h"
#include "ui/CCoxPHResults.h"

namespace orv {

namespace {

constexpr int kTested = 0;
constexpr int kNoneEntered = 1;
constexpr int kMessageShown = -1;

const char* TextOfStatus(int status) {
  switch (status) {
    case LinearCombinationStatuses::NotEstimable:
      return "An L is not estimable.";
    case LinearCombinationStatuses::NotIndependent:
      return "L's are not linearly independent.";
    default:
      return "No valid L's were specified.";
  }
}

std::size_t FunctionCount(const DenseMatrix& L) {
  return L.empty() ? 0 : L.front().size();
}

// ---- The entry sheet ------------------------------------------------------------------------------------------------

// Where the columns of the entry sheet stand.
struct EntryLayout {
  int Level = -1;  // -1 when the model has no factor
  int Number = 0;  // of the design column
  int FirstFunction = 1;
  int FunctionCount = 0;  // as many as there are columns that are not dropped
  int ColumnCount() const { return FirstFunction + FunctionCount; }
};

EntryLayout LayoutOf(const CCoxData& data) {
  EntryLayout layout;
  const auto end = data.DesignColumns.begin() + data.CoefficientCount;
  if (std::any_of(data.DesignColumns.begin(), end, [](const auto& column) { return column.HasFactor(); })) {
    layout.Level = 0;
    layout.Number = 1;
    layout.FirstFunction = 2;
  }
  layout.FunctionCount = static_cast<int>(
      std::count_if(data.DesignColumns.begin(), end, [](const auto& column) { return !column.Dropped; }));
  return layout;
}

// The level of a factor, or the place in the effect of a term of several variables. A lone covariate has none, other
// than in the table of estimates, where it repeats the level above.
void AddLevel(CResultSpreadsheet& sheet, int row, int place, const CCoxPH& owner, const CoxDesignColumn& column) {
  if (column.VariableCount > 1) {
    sheet.SetText(row, place, FormatInteger(column.ColumnInEffect));
  } else if (column.HasFactor()) {
    sheet.SetText(row, place, FactorLevelText(owner, column.Variables[0], column.LevelIndex[0]));
  }
}

CResultSpreadsheet EntrySheet(const CCoxData& data, const EntryLayout& layout, const DenseMatrix& L) {
  const int p = static_cast<int>(data.CoefficientCount);
  CResultSpreadsheet sheet(data.Owner->GetHost(), p, layout.ColumnCount());
  sheet.SetTitle1("Specify effect to estimate");
  sheet.SetColumnName(layout.Level, "Level of Effect");
  sheet.SetColumnName(layout.Number, "Column");
  for (int k = 0; k < layout.FunctionCount; ++k) {
    sheet.SetColumnName(layout.FirstFunction + k, FormatText("L%d", {FormatInteger(k + 1)}));
  }
  const int entered = std::min(static_cast<int>(FunctionCount(L)), layout.FunctionCount);
  for (int row = 0; row < p; ++row) {
    const auto i = static_cast<std::size_t>(row);
    const CoxDesignColumn& column = data.DesignColumns[i];
    sheet.SetRowName(row, column.EffectName);
    AddLevel(sheet, row, layout.Level, *data.Owner, column);
    sheet.SetIntegerText(row, layout.Number, row + 1);
    for (int k = 0; i < L.size() && k < entered; ++k) {
      sheet.SetNumber(row, layout.FirstFunction + k, L[i][static_cast<std::size_t>(k)]);
    }
  }
  return sheet;
}

// The functions of an edited sheet, p rows. Cells that are missing are 0, and functions that are 0 are left out.
DenseMatrix ReadFunctions(const HostDocument& document, const EntryLayout& layout, std::size_t p) {
  DenseMatrix L(p);
  for (int k = 0; k < layout.FunctionCount; ++k) {
    std::vector<double> function;
    for (std::size_t row = 0; row < p; ++row) {
      function.push_back(document.NumberAt(static_cast<int>(row), layout.FirstFunction + k).value_or(0.0));
    }
    if (std::all_of(function.begin(), function.end(), [](double value) { return value == 0.0; })) continue;
    for (std::size_t row = 0; row < p; ++row) L[row].push_back(function[row]);
  }
  return L;
}

// ---- The test -------------------------------------------------------------------------------------------------------

struct CombinationTest {
  double ChiSquare = 0.0;
  int Df = 0;  // of the p value
  double Estimate = 0.0;
  double StandardError = 0.0;
};

// Nothing when no function can be tested.
std::optional<CombinationTest> Test(const CCoxFit& fit, const DenseMatrix& L) {
  CombinationTest test;
  int failed = 0;
  test.ChiSquare = TestLinearHypothesis(fit, L, test.Estimate, test.StandardError, test.Df, failed);
  if (failed != 0 || !std::isfinite(test.ChiSquare)) return std::nullopt;
  return test;
}

void ShowTest(Host& host, const CombinationTest& test, std::size_t functions, double level) {
  enum Column { kWald, kDf, kPValue, kContrast, kLower, kUpper, kExp, kExpLower, kExpUpper, kColumnCount };
  constexpr const char* kExpTitle = "Exp(Contrast)";
  const bool isSingle = functions == 1;
  CResultSpreadsheet sheet(host, 1, isSingle ? kColumnCount : kContrast);
  sheet.SetTitle1("Estimate LB");
  sheet.SetRowName(0, "Contrast");
  sheet.SetColumnName(kWald, "Wald");
  sheet.SetColumnName(kDf, "df");
  sheet.SetColumnName(kPValue, "P value");
  sheet.SetNumber(0, kWald, test.ChiSquare);
  sheet.SetIntegerText(0, kDf, static_cast<long long>(functions));
  sheet.SetNumber(0, kPValue, 1.0 - host.ChiSquareCdf(test.ChiSquare, test.Df));
  if (isSingle) {
    const std::string percent = FormatGeneral(level * 100.0) + "%";
    const double z = host.NormalQuantile((level + 1.0) / 2.0, 0.0, 1.0);
    const double lower = test.Estimate - z * test.StandardError;
    const double upper = test.Estimate + z * test.StandardError;
    sheet.SetColumnName(kContrast, "Contrast");
    sheet.SetColumnName(kExp, kExpTitle);
    for (const int column : {kLower, kExpLower}) sheet.SetColumnName(column, percent + "Lower");
    for (const int column : {kUpper, kExpUpper}) sheet.SetColumnName(column, percent + "Upper");
    for (const int column : {kExpLower, kExpUpper}) sheet.SetColumnLongName(column, kExpTitle);
    // Without the guard of hazard ratios: an exponential beyond a double shows as infinite. Kept for the macros that
    // read this table.
    const std::pair<int, double> cells[] = {{kContrast, test.Estimate},
                                            {kLower, lower},
                                            {kUpper, upper},
                                            {kExp, std::exp(test.Estimate)},
                                            {kExpLower, std::exp(lower)},
                                            {kExpUpper, std::exp(upper)}};
    for (const auto& [column, value] : cells) sheet.SetNumber(0, column, value);
  }
  sheet.Show();
}

}  // namespace

int CCoxPHResults::EstimateLinearCombination() {
  const auto refuse = [this](const char* text) {
    m_analysis.dsplst(0, text);
    return kMessageShown;
  };
  const auto isRefused = [this] {
    return m_LinearCombinationStatus == LinearCombinationStatuses::NotEstimable ||
           m_LinearCombinationStatus == LinearCombinationStatuses::NotIndependent;
  };
  if (isRefused()) return refuse(TextOfStatus(m_LinearCombinationStatus));
  const DenseMatrix& L = m_LinearCombinations;
  if (FunctionCount(L) == 0) return kNoneEntered;
  m_LinearCombinationStatus = ValidateLinearCombinations(m_analysis, L);
  if (isRefused()) return refuse(TextOfStatus(m_LinearCombinationStatus));
  const std::optional<CombinationTest> test = Test(Fit(), L);
  if (!test) return refuse("Unable to complete the requested hypothesis test(s).");
  ShowTest(m_analysis.GetHost(), *test, FunctionCount(L), ConfidenceLevel);
  return kTested;
}

int CCoxPHResults::EnterLinearCombinations() {
  const EntryLayout layout = LayoutOf(Data());
  const HostDocument* document = EntrySheet(Data(), layout, m_LinearCombinations).ShowInDialog(Parent);
  if (document == nullptr) return LinearCombinationStatuses::NotIndependent;
  DenseMatrix L = ReadFunctions(*document, layout, Data().CoefficientCount);
  if (FunctionCount(L) == 0) {
    m_LinearCombinationStatus = LinearCombinationStatuses::NothingValid;
  } else {
    m_LinearCombinations = std::move(L);
    m_LinearCombinationStatus = ValidateLinearCombinations(m_analysis, m_LinearCombinations);
  }
  if (m_LinearCombinationStatus != LinearCombinationStatuses::Usable) {
    m_analysis.dsplst(0, TextOfStatus(m_LinearCombinationStatus));
  }
  return m_LinearCombinationStatus;
}

}  // namespace orv
