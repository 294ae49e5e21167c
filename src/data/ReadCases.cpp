// The walk over the input table: which cases stay, in which order, and what must hold before a fit.
#include <algorithm>
#include <limits>

#include "core/CCoxPH.h"
#include "data/AlmostEqual.h"
#include "data/CCoxData.h"
#include "data/FactorLevels.h"
#include "data/RoundHalfAway.h"
#include "host/FormatText.h"
#include "host/Progress.h"
#include "host/TextIds.h"

namespace orv {

namespace {

constexpr double kNoModalWeight = -9999.0;

// Closes the progress display on every way out of the reading.
class ReadingProgress {
 public:
  ReadingProgress(CCoxPH& owner, int total) : m_owner(owner) {
    if (!owner.m_pProgress) owner.m_pProgress = std::make_unique<ProgressHolder>();
    OpenProgress(owner.GetHost(), *owner.m_pProgress, total, owner.GetResourceString(TextIds::ReadingData));
  }
  ~ReadingProgress() { Close(); }
  ReadingProgress(const ReadingProgress&) = delete;
  ReadingProgress& operator=(const ReadingProgress&) = delete;

  void Close() { CloseProgress(m_owner.GetHost(), *m_owner.m_pProgress); }

 private:
  CCoxPH& m_owner;
};

}  // namespace

int CCoxData::ReadCases(void* parent) {
  ReadingProgress progress(*Owner, static_cast<int>(CaseCount));
  bool cancelled = false;
  if (!ReadAllCases(cancelled)) return 1;
  if (ValidCaseCount == 0) {
    progress.Close();
    Owner->DspMessageBox(0, parent, Owner->GetResourceString(TextIds::NoValidCases));
    return 1;
  }
  KeepValidCases();
  SortCases();
  CaseCount = ValidCaseCount;
  if (CompleteCaseCount < 1) {
    progress.Close();
    Owner->ShowText(TextIds::TooFewCompleteCases);
    return 1;
  }
  if (Owner->m_Settings.HasStrata()) {
    const std::string problem = StrataProblem();
    if (!problem.empty()) {
      progress.Close();
      Owner->dsplst(0, problem);
      return 1;
    }
  }
  FindModalCodes();
  for (std::uint32_t column = 0; column < DesignColumnCount; ++column) DesignColumns[column].FinishStatistics();
  return 0;
}

bool CCoxData::ReadAllCases(bool& cancelled) {
  std::vector<double> values(static_cast<std::size_t>(Owner->GetNbVars()) + 1, 0.0);
  double nextThreshold = 1.0;
  for (int caseNumber = 1; caseNumber <= static_cast<int>(CaseCount); ++caseNumber) {
    int hasWeight = 0;
    int weightVariable = 0;
    double weight = 1.0;
    const bool selected = Owner->cstrtw(caseNumber, values.data(), hasWeight, weight, weightVariable) == 0;
    const Exclusion reason = selected ? ReadCase(values.data(), caseNumber, weight) : Exclusion::Selection;
    double* row = CaseTable.GetRow(caseNumber, orv::CaseTable::Access::Write);
    if (reason == Exclusion::None) {
      ++ValidCaseCount;
      ++(row[StatusColumn] == 0.0 ? CensoredCaseCount : CompleteCaseCount);
    } else {
      row[ExcludedColumn] = 1.0;
      Excluded.Add(reason);
      if (reason == Exclusion::Missing) CountMissingVariables(values.data());
    }
    StepProgress(*Owner->m_pProgress, caseNumber, nextThreshold, cancelled);
    if (cancelled) return false;
  }
  return true;
}

void CCoxData::KeepValidCases() {
  std::string columns = FormatText("1-%d", {FormatInteger(ExcludedColumn)});
  if (TimeVariableCount == 1) {
    columns += FormatText(" %d", {FormatInteger(TimeVariableColumn + 1)});
  } else if (TimeVariableCount > 1) {
    columns += FormatText(" %d-%d", {FormatInteger(TimeVariableColumn + 1), FormatInteger(ColumnCount)});
  }
  if (TimeVariableCount > 0) --TimeVariableColumn;
  --ColumnCount;
  const std::string condition = FormatText("v%d=%d", {FormatInteger(ExcludedColumn + 1), FormatInteger(0)});
  CaseTable = std::move(CaseTable).Subset(columns, condition);
  ExcludedColumn = -1;
}

void CCoxData::SortCases() {
  std::vector<int> keys;
  std::vector<int> descending;
  const auto add = [&](std::int32_t column, int flag) {
    keys.push_back(column + 1);
    descending.push_back(flag);
  };
  if (StratumColumn >= 0) add(StratumColumn, 0);
  add(Owner->m_Settings.InputType == InputTypes::CountingProcess ? StopColumn : SurvivalColumn, 0);
  // Complete before censored at one time: a case censored at a time is at risk for the events of that time.
  add(StatusColumn, 1);
  CaseTable.Sort(keys, descending);
}

std::string CCoxData::StrataProblem() const {
  if (CompleteByStratum.size() < CasesByStratum.size()) {
    const auto without = std::find_if(CasesByStratum.begin(), CasesByStratum.end(), [this](const auto& stratum) {
      return std::none_of(CompleteByStratum.begin(), CompleteByStratum.end(), [&](const auto& complete) {
        return RoundToInteger(complete.first) == RoundToInteger(stratum.first);
      });
    });
    // Values that round to one code count as one stratum here, so there may be none without events.
    if (without != CasesByStratum.end()) {
      const int code = RoundToInteger(without->first);
      return Owner->GetResourceString(TextIds::NotEnoughCompleteInStrata) +
             CodeText(*Owner, Owner->m_Settings.StrataVariable, code);
    }
  }
  if (CasesByStratum.size() <= 1) return Owner->GetResourceString(TextIds::OneStratumOnly);
  return {};
}

void CCoxData::FindModalCodes() {
  for (std::size_t factor = 0; factor < FactorLevelWeights.size(); ++factor) {
    double best = kNoModalWeight;
    for (const auto& [code, weight] : FactorLevelWeights[factor]) {
      if (weight > best && !AlmostEqual(weight, best)) {
        best = weight;
        FactorModalCodes[factor] = code;
      }
    }
  }
}

}  // namespace orv
