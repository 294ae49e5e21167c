#include "core/StartValuesFile.h"

#include <locale>
#include <memory>
#include <sstream>

#include "core/CCoxPH.h"
#include "host/TextIds.h"

namespace orv {

namespace {

constexpr const char* kEnding = ".orv";

// The number at the head of a text. False when there is none.
bool TakeNumber(const std::string& text, double& number) {
  std::istringstream stream(text);
  stream.imbue(std::locale::classic());
  return static_cast<bool>(stream >> number);
}

}  // namespace

int LoadStartValues(CCoxPH& analysis, const std::string& file) {
  if (!file.ends_with(kEnding)) {
    analysis.ShowText(TextIds::NotAnOrvantaSpreadsheet);
    return 1;
  }
  CoxSettings& settings = analysis.m_Settings;
  settings.StartValuesFileName = file;
  const std::unique_ptr<HostSpreadsheet> sheet = analysis.GetHost().OpenSpreadsheet(file);
  settings.StartValues.clear();
  if (sheet->ColumnCount() > 1) {
    analysis.ShowText(TextIds::TooManyStartValueColumns);
    return 1;
  }
  for (int caseNumber = 1; caseNumber <= sheet->CaseCount(); ++caseNumber) {
    double value = 0.0;
    if (!TakeNumber(sheet->CellText(caseNumber, 1), value)) {
      settings.StartValues.clear();
      analysis.ShowText(TextIds::InvalidStartValues);
      return 1;
    }
    settings.StartValues.push_back(value);
  }
  return 0;
}

}  // namespace orv
