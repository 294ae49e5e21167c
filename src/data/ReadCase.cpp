// One case of the input table: the reasons to leave it out, in their order, and its row of CaseTable.
#include <algorithm>

#include "core/CCoxPH.h"
#include "data/AlmostEqual.h"
#include "data/CCoxData.h"
#include "data/DesignCell.h"
#include "data/FactorLevels.h"
#include "data/JulianDay.h"
#include "data/RoundHalfAway.h"

namespace orv {

namespace {

constexpr double kCensored = 0.0;
constexpr double kComplete = 1.0;

bool IsUsableWeight(const CoxSettings& settings, double weight) {
  if (!(weight > 0.0)) return false;
  return settings.Likelihood != Likelihoods::Discrete || AlmostEqualStrict(weight, RoundHalfAway(weight));
}

double Value(const double* values, int variable) {
  return values[variable];
}

}  // namespace

void CCoxData::PrepareReading() {
  const CoxSettings& settings = Owner->m_Settings;
  m_MissingTests.clear();
  const auto add = [this](int variable, bool strict) {
    double code = 0.0;
    Owner->getmd5(variable, code);
    const bool known = std::any_of(m_MissingTests.begin(), m_MissingTests.end(), [&](const MissingTest& test) {
      return test.Variable == variable && test.Strict == strict;
    });
    if (!known) m_MissingTests.push_back({variable, code, strict});
  };
  for (std::uint32_t column = 0; column < DesignColumnCount; ++column) {
    for (const int variable : DesignColumns[column].Variables) add(variable, true);
  }
  // Of several survival variables only the first is tested, and with time-dependent covariates none is: kept, since
  // the times decide about such cases, and analyses on record count them as they do.
  if (settings.InputType == InputTypes::SurvivalTime) {
    add(settings.SurvivalVariables[0], false);
    if (settings.EntryTimeVariable > 0) add(settings.EntryTimeVariable, false);
  } else if (settings.InputType == InputTypes::CountingProcess) {
    add(settings.StartVariable, false);
    add(settings.StopVariable, false);
  }
  if (settings.HasStrata()) add(settings.StrataVariable, false);
  if (settings.SubjectVariable > 0) add(settings.SubjectVariable, false);

  m_ExpressionCodes.clear();
  for (const int variable : settings.TimeExpressionVariables) {
    double code = 0.0;
    Owner->getmd5(variable, code);
    m_ExpressionCodes.push_back(code);
  }
  m_ExpressionValues.assign(settings.TimeExpressionVariables.size(), 0.0);

  m_FactorLevels.assign(static_cast<std::size_t>(settings.FactorCount), 0);
  m_FactorPlaceOfVariable.assign(static_cast<std::size_t>(Owner->GetNbVars()) + 1, -1);
  for (int place = settings.FactorCount - 1; place >= 0; --place) {
    const auto variable = static_cast<std::size_t>(settings.FactorVariables[static_cast<std::size_t>(place)]);
    m_FactorPlaceOfVariable[variable] = place;
  }
}

int CCoxData::CheckMissing(const double* values) const {
  for (const MissingTest& test : m_MissingTests) {
    const double value = Value(values, test.Variable);
    if (test.Strict ? AlmostEqualStrict(value, test.Code) : AlmostEqual(value, test.Code)) return 1;
  }
  return 0;
}

void CCoxData::CountMissingVariables(const double* values) {
  std::vector<int> counted;
  for (const MissingTest& test : m_MissingTests) {
    if (!AlmostEqual(Value(values, test.Variable), test.Code)) continue;
    if (std::find(counted.begin(), counted.end(), test.Variable) != counted.end()) continue;
    counted.push_back(test.Variable);
    ++Excluded.MissingByVariable[test.Variable];
  }
}

bool CCoxData::CaseTime(const double* values, double& time, double& stop) const {
  const CoxSettings& settings = Owner->m_Settings;
  if (settings.InputType == InputTypes::CountingProcess) {
    time = Value(values, settings.StartVariable);
    stop = Value(values, settings.StopVariable);
    return time >= 0.0 && stop >= 0.0 && stop - time > 0.0;
  }
  const auto part = [&](std::size_t k) { return Value(values, settings.SurvivalVariables[k]); };
  if (settings.SurvivalVariableCount == 6) {
    const double start = JulianDay(part(0), part(1), part(2));
    const double end = JulianDay(part(3), part(4), part(5));
    if (start == kInvalidDate || end == kInvalidDate) return false;
    time = end - start;
  } else if (settings.SurvivalVariableCount == 2) {
    time = part(1) - part(0);
  } else {
    time = part(0);
  }
  stop = time;
  // A time that is no number has no place among the others.
  return time >= 0.0;
}

bool CCoxData::IsSelectedStratum(double value) const {
  const CoxSettings& settings = Owner->m_Settings;
  if (settings.StrataCodeCount.empty()) return false;
  const auto first = settings.StrataCodes.begin();
  const auto last = first + std::min<std::ptrdiff_t>(settings.StrataCodeCount[0], settings.StrataCodes.end() - first);
  return std::find(first, last, RoundToInteger(value)) != last;
}

bool CCoxData::FindFactorLevels(const double* values) {
  const CoxSettings& settings = Owner->m_Settings;
  for (int place = 0; place < settings.FactorCount; ++place) {
    const auto factor = static_cast<std::size_t>(place);
    const int position = PositionOfValue(settings, place, Value(values, settings.FactorVariables[factor]));
    if (position == 0) return false;
    m_FactorLevels[factor] = LevelOfPosition(settings, place, position);
  }
  return true;
}

void CCoxData::CountStratum(double stratum, double status) {
  CasesByStratum[stratum] += 1.0;
  auto& byStatus = AlmostEqual(status, kComplete) ? CompleteByStratum : CensoredByStratum;
  byStatus[stratum] += 1.0;
}

void CCoxData::WriteTimes(double* row, double time, double stop, double entry, double weight) {
  const auto write = [&](std::int32_t column, double value) {
    row[column] = value;
    DesignColumns[static_cast<std::size_t>(column)].AddValue(value, weight);
  };
  if (Owner->m_Settings.InputType == InputTypes::CountingProcess) {
    write(StartColumn, time);
    write(StopColumn, stop);
  } else {
    write(SurvivalColumn, time);
  }
  if (EntryTimeColumn >= 0) write(EntryTimeColumn, entry);
}

Exclusion CCoxData::ReadCase(const double* values, int outputRow, double weight) {
  const CoxSettings& settings = Owner->m_Settings;
  if (CheckMissing(values) != 0) return Exclusion::Missing;
  const bool weighted = Owner->m_Commons.Weights != nullptr && Owner->m_Commons.Weights->On;
  const double w = weighted ? weight : 1.0;
  if (weighted && !IsUsableWeight(settings, w)) return Exclusion::Weight;

  double time = 0.0;
  double stop = 0.0;
  if (!CaseTime(values, time, stop)) return Exclusion::Time;
  double entry = 0.0;
  if (settings.EntryTimeVariable > 0) {
    // A negative time is gone already; the reason of its own stays in the numbering. The entry time itself is not
    // checked: it may exceed the survival time.
    if (time < 0.0) return Exclusion::Entry;
    entry = Value(values, settings.EntryTimeVariable);
  }
  double stratum = 0.0;
  if (settings.HasStrata()) {
    stratum = Value(values, settings.StrataVariable);
    if (!IsSelectedStratum(stratum)) return Exclusion::Stratum;
  }

  // Codes are compared exactly here, unlike everywhere else.
  const double censor = Value(values, settings.CensorVariable);
  const bool censored = censor == settings.CodeForCensoredResponses;
  if (!censored && censor != settings.CodeForCompleteResponses) return Exclusion::Status;
  const double status = censored ? kCensored : kComplete;

  bool lacksExpressionValue = false;
  for (std::size_t k = 0; k < settings.TimeExpressionVariables.size(); ++k) {
    m_ExpressionValues[k] = Value(values, settings.TimeExpressionVariables[k]);
    if (!AlmostEqual(m_ExpressionValues[k], m_ExpressionCodes[k])) continue;
    ++Excluded.MissingByVariable[settings.TimeExpressionVariables[k]];
    lacksExpressionValue = true;
  }
  if (lacksExpressionValue) return Exclusion::Expression;
  // A subject gets its id before the factors are looked at, so a case left out for its factor code still takes one.
  double subject = 0.0;
  if (settings.SubjectVariable > 0) {
    const auto [known, isNew] = SubjectIds.emplace(Value(values, settings.SubjectVariable), NextSubjectId);
    if (isNew) ++NextSubjectId;
    subject = known->second;
  }
  if (!FindFactorLevels(values)) return Exclusion::Factor;

  for (std::size_t k = 0; k < CovariateMeans.size(); ++k) {
    const double distance = (Value(values, settings.CovariateVariables[k]) - CovariateMeans[k]) * w;
    CovariateWeights[k] += w;
    CovariateMeans[k] += distance / CovariateWeights[k];
  }
  for (std::size_t k = 0; k < FactorLevelWeights.size(); ++k) {
    FactorLevelWeights[k][Value(values, settings.FactorVariables[k])] += w;
  }

  double* row = CaseTable.GetRow(outputRow, orv::CaseTable::Access::Write);
  WriteTimes(row, time, stop, entry, w);
  if (StratumColumn >= 0) {
    row[StratumColumn] = stratum;
    CountStratum(stratum, status);
  }
  row[CaseNumberColumn] = values[0];
  row[WeightColumn] = w;
  row[StatusColumn] = status;
  if (SubjectColumn >= 0) row[SubjectColumn] = subject;
  EvaluateDesign(values, row, w);
  if (TimeVariableCount > 0) std::copy(m_ExpressionValues.begin(), m_ExpressionValues.end(), row + TimeVariableColumn);
  row[ExcludedColumn] = 0.0;
  return Exclusion::None;
}

void CCoxData::EvaluateDesign(const double* values, double* row, double weight) {
  const bool sigma = Owner->m_Settings.Coding == Codings::SigmaRestricted;
  const auto& codeCounts = Owner->m_Settings.FactorCodeCounts;
  for (std::uint32_t c = 0; c < DesignColumnCount; ++c) {
    CoxDesignColumn& column = DesignColumns[c];
    double product = 1.0;
    if (column.Variables.empty()) {
      row[c] = product;
      column.AddValue(product, weight);
      continue;
    }
    for (std::size_t k = 0; k < column.Variables.size(); ++k) {
      const int variable = column.Variables[k];
      if (column.VariableRoles[k] != VariableRole::Factor) {
        product *= Value(values, variable);
      } else {
        const auto place = static_cast<std::size_t>(m_FactorPlaceOfVariable[static_cast<std::size_t>(variable)]);
        const int level = m_FactorLevels[place];
        product = TimesFactor(product, level, column.LevelIndex[k], codeCounts[place], sigma);
      }
      // The statistics take every partial product, so a cross counts a case once per variable. The fit centres and
      // scales by these numbers; kept, since histories and start values on the standardised scale depend on it.
      column.AddValue(product, weight);
      row[c] = product;
    }
  }
}

}  // namespace orv
