// The design: effects become numbered columns, and the columns of CaseTable are laid out.
#include <algorithm>
#include <utility>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "data/EffectTerm.h"
#include "data/FactorLevels.h"

namespace orv {

namespace {

// Names and terms are kept in step by everything that edits a design. A name without a term takes the first term of
// the map, as it always has.
std::string TermOfEffect(const CoxSettings& settings, const std::string& effect) {
  const auto& terms = settings.EffectSymbols;
  auto found = terms.find(effect);
  if (found == terms.end()) found = terms.begin();
  return found == terms.end() ? std::string() : found->second;
}

// The flags are numbered by effect, though they are edited by coefficient. The two agree as long as every effect
// before has one column, and recorded macros rely on the numbering by effect.
bool IsFixedEffect(const CoxSettings& settings, std::size_t effect) {
  return settings.HasFixedParameters && effect < settings.FixedParameterFlags.size() &&
         settings.FixedParameterFlags[effect];
}

// Columns that one variable of a factor effect contributes.
int ColumnsOfVariable(const CoxSettings& settings, const CoxDesignColumn& record, std::size_t k) {
  if (record.VariableRoles[k] != VariableRole::Factor) return 1;
  const int place = FactorPlace(settings, record.Variables[k]);
  // A factor without codes is refused before a run; the design alone may be built with it and then has no columns.
  if (place >= settings.FactorCount || static_cast<std::size_t>(place) >= settings.FactorCodeCounts.size()) return 0;
  const int codes = settings.FactorCodeCounts[static_cast<std::size_t>(place)];
  return settings.Coding == Codings::Overparameterized ? codes : std::max(codes - 1, 0);
}

// Steps the rightmost level that is below its count and puts those to its right back to 1, so the last variable runs
// fastest. Returns false after the last combination.
bool StepOdometer(std::vector<std::int32_t>& levels, const std::vector<int>& counts) {
  for (std::size_t k = levels.size(); k-- > 0;) {
    if (levels[k] < counts[k]) {
      ++levels[k];
      return true;
    }
    levels[k] = 1;
  }
  return false;
}

}  // namespace

void CCoxData::BuildDesign(int inputType) {
  CoxSettings& settings = Owner->m_Settings;
  const bool timeDependent = inputType == InputTypes::TimeDependent;
  settings.DesignFactorSet.clear();
  FixedEffectCount = 0;
  for (std::size_t effect = 0; effect < settings.DesignEffects.size(); ++effect) {
    AddEffect(effect, timeDependent);
    if (FixedFlagConflict) return;
  }
  ColumnCount = DesignColumnCount;
  CaseCount = static_cast<std::uint32_t>(Owner->GetInputTable().CaseCount());
  AddTimeColumns(inputType);
  if (settings.HasStrata()) StratumColumn = AddColumn();
  if (settings.SubjectVariable > 0 && !timeDependent) {
    SubjectColumn = AddRecordedColumn("SUBJECT", settings.SubjectVariable);
  }
  CoefficientCount = DesignColumnCount;
  WeightColumn = AddColumn();
  StatusColumn = AddColumn();
  CaseNumberColumn = AddColumn();
  ExcludedColumn = AddColumn();
  if (timeDependent) {
    TimeVariableCount = static_cast<std::uint32_t>(settings.TimeExpressionVariables.size());
    if (TimeVariableCount > 0) {
      TimeVariableColumn = static_cast<std::int32_t>(ColumnCount);
      ColumnCount += TimeVariableCount;
    }
  }
  CaseTable = orv::CaseTable(static_cast<int>(CaseCount), static_cast<int>(ColumnCount));
  PrepareReading();
}

void CCoxData::AddEffect(std::size_t effect, bool timeDependent) {
  CoxSettings& settings = Owner->m_Settings;
  EffectInModel.push_back(true);
  CoxDesignColumn record;
  record.EffectName = settings.DesignEffects[effect];
  record.EffectTerm = TermOfEffect(settings, record.EffectName);
  if (timeDependent) {
    ParseTimeEffect(settings, record.EffectTerm, record);
  } else {
    ParseEffect(settings, record.EffectTerm, record);
  }
  for (std::size_t k = 0; k < record.Variables.size(); ++k) {
    settings.DesignFactorSet.emplace(record.Variables[k], record.VariableRoles[k]);
  }
  if (record.HasFactor()) {
    AddFactorEffect(record, effect, timeDependent);
  } else {
    AddOneColumnEffect(std::move(record), effect);
  }
}

void CCoxData::AddOneColumnEffect(CoxDesignColumn record, std::size_t effect) {
  ++DesignColumnCount;
  EffectFirstColumn.push_back(static_cast<std::int32_t>(DesignColumnCount));
  EffectLastColumn.push_back(static_cast<std::int32_t>(DesignColumnCount));
  record.LevelIndex.assign(record.Variables.size(), 1);
  record.ColumnInEffect = 1;
  record.Fixed = IsFixedEffect(Owner->m_Settings, effect);
  EffectFixed.push_back(record.Fixed);
  if (record.Fixed) ++FixedEffectCount;
  DesignColumns.push_back(std::move(record));
}

void CCoxData::AddFactorEffect(const CoxDesignColumn& record, std::size_t effect, bool timeDependent) {
  const CoxSettings& settings = Owner->m_Settings;
  std::vector<int> counts;
  long long columns = 1;
  for (std::size_t k = 0; k < record.Variables.size(); ++k) {
    counts.push_back(ColumnsOfVariable(settings, record, k));
    columns *= counts.back();
  }
  // With time-dependent covariates a multi-column effect is never held: kept, the flags never reached it.
  const bool fixed = !timeDependent && IsFixedEffect(settings, effect);
  EffectFirstColumn.push_back(static_cast<std::int32_t>(DesignColumnCount + 1));
  if (columns > 0) {
    std::vector<std::int32_t> levels(record.Variables.size(), 1);
    std::int32_t place = 0;
    do {
      CoxDesignColumn column = record;
      column.LevelIndex = levels;
      column.ColumnInEffect = ++place;
      column.Fixed = fixed;
      DesignColumns.push_back(std::move(column));
      ++DesignColumnCount;
    } while (StepOdometer(levels, counts));
  }
  EffectLastColumn.push_back(static_cast<std::int32_t>(DesignColumnCount));
  const auto first = DesignColumns.begin() + (EffectFirstColumn.back() - 1);
  if (!ColumnsAgreeOnFixed(first, DesignColumns.end())) {
    FixedFlagConflict = true;
    return;
  }
  EffectFixed.push_back(columns > 0 && DesignColumns.back().Fixed);
  if (EffectFixed.back()) ++FixedEffectCount;
}

std::int32_t CCoxData::AddRecordedColumn(std::string_view name, std::int32_t variable) {
  CoxDesignColumn record;
  record.EffectName = name;
  record.VariableCount = 1;
  record.Variables = {variable};
  record.VariableRoles = {VariableRole::Covariate};
  record.LevelIndex = {1};
  DesignColumns.push_back(std::move(record));
  return AddColumn();
}

void CCoxData::AddTimeColumns(int inputType) {
  const CoxSettings& settings = Owner->m_Settings;
  if (inputType == InputTypes::CountingProcess) {
    StartColumn = AddRecordedColumn("START", settings.StartVariable);
    StopColumn = AddRecordedColumn("STOP", settings.StopVariable);
    DesignColumns.back().Fixed = IsFixedEffect(settings, EffectCount);
    return;
  }
  SurvivalColumn = AddRecordedColumn("SURVIVAL", settings.SurvivalVariables[0]);
  if (settings.EntryTimeVariable > 0) {
    EntryTimeColumn = AddRecordedColumn("LEFTTRUNCATION", settings.EntryTimeVariable);
  }
}

}  // namespace orv
